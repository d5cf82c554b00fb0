# Compiler, linker and cache settings that hold for every target of the project.

if(NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

# One binary serves every machine of its kind, so no -march here: hand-written kernels choose
# their instruction set at run time.
add_compile_options(-Wall -Wextra)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Guesses that the optimiser makes after inlining; with -O3 they are false alarms, another set
    # in each release of the compiler. The sanitizer builds find the real cases.
    add_compile_options(-Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
endif()
if(KVN_WERROR)
    add_compile_options(-Werror)
endif()
if(KVN_SANITIZE)
    add_compile_options(-fsanitize=${KVN_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${KVN_SANITIZE})
endif()
if(KVN_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

find_program(KVN_CCACHE ccache)
if(KVN_CCACHE)
    # The base directory turns absolute paths into relative ones, so that a checkout elsewhere
    # finds the objects of this one.
    set(launcher ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${CMAKE_SOURCE_DIR} CCACHE_NOHASHDIR=1
        ${KVN_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${launcher})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${launcher})
endif()
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.)

find_program(KVN_MOLD mold)
if(KVN_MOLD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_link_options(-fuse-ld=mold)
endif()
