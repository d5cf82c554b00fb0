#include "fuzz/one_input.h"

#include <sanitizer/allocator_interface.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

std::uint8_t fill = 0;

void onMalloc(const volatile void* memory, std::size_t size) {
    // Larger blocks come from the system as zeros, and the sanitizer's calloc relies on that.
    constexpr std::size_t largest = 64 << 10;
    if (size <= largest) std::memset(const_cast<void*>(memory), fill, size);
}

} // namespace

namespace kvn::fuzz {

double InputClock::seconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

InputClock::~InputClock() {
    constexpr double longest = 2;
    const double taken = seconds() - start_;
    if (taken <= longest) return;
    std::fprintf(stderr, "This input took %.1f s of processor time.\n", taken);
    std::abort();
}

void fillNewMemoryWith(std::uint8_t byte) {
    static const int installed =
        __sanitizer_install_malloc_and_free_hooks(onMalloc, [](const volatile void*) {});
    if (!installed) std::abort();
    fill = byte;
}

} // namespace kvn::fuzz
