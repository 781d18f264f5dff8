# Warnings, sanitizers and the compiler cache, for every target of the project.

set(warnings
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
    -Woverloaded-virtual -Wimplicit-fallthrough -Werror -fno-math-errno)
# Swift's compiler has other words for them.
add_compile_options("$<$<NOT:$<COMPILE_LANGUAGE:Swift>>:${warnings}>")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 reports these two falsely inside its own standard library when it inlines deeply.
    add_compile_options(-Wno-restrict -Wno-maybe-uninitialized)
endif()
# Only what a shared object means to export is visible; the extension and the agent's framework
# both contain the seam's code and must not bind to each other's copy.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)

if(VANTOR_SANITIZE)
    add_compile_options(-fsanitize=${VANTOR_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${VANTOR_SANITIZE})
    if(VANTOR_SANITIZE MATCHES "undefined")
        add_compile_options(-fno-sanitize-recover=undefined)
    endif()
    if(VANTOR_FUZZ)
        add_compile_options(-fsanitize=fuzzer-no-link)
    endif()
endif()

find_program(VANTOR_CCACHE ccache)
if(VANTOR_CCACHE)
    # What precompiled headers ask for (the cache's manual, "Precompiled headers").
    set(cached ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${VANTOR_CCACHE})
    set(CMAKE_C_COMPILER_LAUNCHER ${cached})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${cached})
    set(CMAKE_OBJCXX_COMPILER_LAUNCHER ${cached})
endif()

find_package(Threads REQUIRED)
if(APPLE)
    return()
endif()

find_program(VANTOR_LLD ld.lld)
if(VANTOR_LLD)
    add_link_options(-fuse-ld=lld)
endif()

find_package(PkgConfig REQUIRED)
