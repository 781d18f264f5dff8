# The headers that nearly every file includes, parsed once for all of them.
#
# Tests always use theirs. The project's own modules do so only with VANTOR_PRECOMPILED, which the
# presets set: without it a forgotten include is an error, which `./lint` sees.

option(VANTOR_PRECOMPILED "Parse the standard headers of the project's modules once" OFF)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Lets the compiler cache look through a precompiled header.
    set(VANTOR_PRECOMPILED_OPTIONS -pthread -fpch-preprocess)
else()
    set(VANTOR_PRECOMPILED_OPTIONS -pthread "SHELL:-Xclang -fno-pch-timestamp")
endif()

# vantor_precompiled_headers(NAME OPTIONS options... LIBS libs... HEADERS headers...)
# A target whose headers others reuse; their options must be the same.
function(vantor_precompiled_headers NAME)
    cmake_parse_arguments(ARG "" "" "OPTIONS;LIBS;HEADERS" ${ARGN})
    set(source ${CMAKE_BINARY_DIR}/${NAME}.cpp)
    file(GENERATE OUTPUT ${source} CONTENT "")
    add_library(${NAME} STATIC ${source})
    target_link_libraries(${NAME} PRIVATE ${ARG_LIBS})
    target_compile_options(${NAME} PRIVATE ${ARG_OPTIONS} ${VANTOR_PRECOMPILED_OPTIONS})
    target_precompile_headers(${NAME} PRIVATE ${ARG_HEADERS})
endfunction()

# vantor_reuse_headers(TARGET FROM)
function(vantor_reuse_headers TARGET FROM)
    target_compile_options(${TARGET} PRIVATE ${VANTOR_PRECOMPILED_OPTIONS})
    target_precompile_headers(${TARGET} REUSE_FROM ${FROM})
endfunction()

set(standard <algorithm> <array> <cstdint> <cstring> <filesystem> <functional> <map> <memory> <optional>
    <span> <string> <string_view> <unordered_map> <utility> <variant> <vector>)
if(VANTOR_PRECOMPILED)
    vantor_precompiled_headers(vantor_module_headers HEADERS ${standard})
endif()
if(VANTOR_TESTS AND NOT APPLE)
    find_package(GTest REQUIRED)
    vantor_precompiled_headers(vantor_test_headers
        OPTIONS -O0 -fPIE
        LIBS GTest::gmock
        HEADERS ${standard} <gmock/gmock.h> <gtest/gtest.h>)
    # Its users are programs.
    set_target_properties(vantor_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
endif()
