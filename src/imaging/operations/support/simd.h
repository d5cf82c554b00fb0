// Plain loops as vector code, chosen when the program starts.
#pragma once

// KVN_CLONES before a function: compiled once for every machine and again for processors with
// 256-bit and 512-bit vectors. What it calls must be inline. Sanitizers are not up yet when the
// choice is made.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) &&                             \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define KVN_CLONES __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define KVN_CLONES
#endif
