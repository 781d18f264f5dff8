# The preset darwin-check: the whole core and the macOS side of the seam, compiled and linked to a
# Mach-O bundle executable for each architecture with a cross compiler. VANTOR_CROSS_COMPILER is the
# folder that scripts/cross-compiler prints.
include(ExternalProject)
find_package(Python3 REQUIRED COMPONENTS Interpreter)
enable_testing()

if(NOT VANTOR_CROSS_COMPILER)
    execute_process(COMMAND ${PROJECT_SOURCE_DIR}/scripts/cross-compiler
        OUTPUT_VARIABLE VANTOR_CROSS_COMPILER OUTPUT_STRIP_TRAILING_WHITESPACE
        COMMAND_ERROR_IS_FATAL ANY)
    set(VANTOR_CROSS_COMPILER ${VANTOR_CROSS_COMPILER} CACHE PATH "The cross compiler's folder")
endif()
# The compiler's commands under the names that CMake and ccache know. Programs are linked with the
# system's C++ library: the compiler would build one of its own for each.
set(tools ${CMAKE_BINARY_DIR}/tools)
function(write_tool NAME VERB)
    file(CONFIGURE OUTPUT ${tools}/${NAME} CONTENT "#!/bin/sh
export ZIG_GLOBAL_CACHE_DIR='${CMAKE_BINARY_DIR}/cache' ZIG_LOCAL_CACHE_DIR='${CMAKE_BINARY_DIR}/cache'
${ARGN}
exec '${VANTOR_CROSS_COMPILER}/zig' ${VERB} \"$@\"
" @ONLY)
    file(CHMOD ${tools}/${NAME} PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
endfunction()
write_tool(clang cc)
write_tool(clang++ c++ [[case " $* " in *" -c "* | *" -E "*) ;; *) set -- "$@" -nostdlib++ ;; esac]])
write_tool(ar ar)
write_tool(ranlib ranlib)

# What is built is looked at, never run; left to itself the compiler adds debugging information and
# a sanitizer.
set(quick "-O0 -g0 -fno-sanitize=all")
foreach(architecture arm64 x86_64)
    ExternalProject_Add(${architecture}
        SOURCE_DIR ${PROJECT_SOURCE_DIR}
        BINARY_DIR ${CMAKE_BINARY_DIR}/${architecture}
        PREFIX ${CMAKE_BINARY_DIR}/external/${architecture}
        CMAKE_ARGS
            -DCMAKE_TOOLCHAIN_FILE=${PROJECT_SOURCE_DIR}/cmake/DarwinCheckToolchain.cmake
            -DVANTOR_DARWIN_CHECK_TOOLS=${tools}
            -DVANTOR_DARWIN_CHECK_ARCHITECTURE=${architecture}
            -DCMAKE_BUILD_TYPE=Debug
            -DVANTOR_UNITY=ON
            "-DCMAKE_C_FLAGS_DEBUG=${quick}"
            "-DCMAKE_CXX_FLAGS_DEBUG=${quick}"
            "-DCMAKE_OBJCXX_FLAGS_DEBUG=${quick}"
            -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
        BUILD_COMMAND ${CMAKE_COMMAND} --build <BINARY_DIR>
        BUILD_ALWAYS ON
        INSTALL_COMMAND ""
        USES_TERMINAL_CONFIGURE ON
        USES_TERMINAL_BUILD ON)
endforeach()

# CTest of the outer build runs what can be told of programs that do not run here.
foreach(architecture arm64 x86_64)
    add_test(NAME DarwinCheck.${architecture}
        COMMAND ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/tests/platform/darwin/darwin_check_test.py
            ${PROJECT_SOURCE_DIR} ${CMAKE_BINARY_DIR}/${architecture} ${architecture})
endforeach()
