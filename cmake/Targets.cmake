# Like precompiled headers, for a build as a whole to be quick: headers are parsed, and what they
# define is compiled, once for several files of a module. `./lint` looks at each by itself.
option(VANTOR_UNITY "Compile several files of a module at once" OFF)

# vantor_compile_together(TARGET)
function(vantor_compile_together TARGET)
    if(VANTOR_UNITY)
        set_target_properties(${TARGET} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
        if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
            # Names of one file's own are taken for those of a header.
            target_compile_options(${TARGET} PRIVATE -Wno-subobject-linkage)
        endif()
    endif()
endfunction()

# vantor_module(NAME [sources...] [LIBS libs...])
# One folder of the project as a static library. Includes are written from the project's root
# ("render/shader_surface.h").
function(vantor_module NAME)
    cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
    add_library(${NAME} STATIC ${ARG_UNPARSED_ARGUMENTS})
    target_include_directories(${NAME} PUBLIC ${PROJECT_SOURCE_DIR})
    target_link_libraries(${NAME} PUBLIC ${ARG_LIBS})
    vantor_compile_together(${NAME})
    if(VANTOR_PRECOMPILED)
        vantor_reuse_headers(${NAME} vantor_module_headers)
    endif()
endfunction()

# vantor_test(NAME SOURCES files... LIBS libs... LABELS labels...)
# A GoogleTest program; each of its tests is one CTest test. LABELS are `unit`, `e2e` or
# `conformance`, and the name of the folder under test. In sanitizer builds, where a process takes
# longer to start than most tests to run, the whole program is one CTest test, unless its tests
# start processes themselves.
function(vantor_test NAME)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;LABELS" ${ARGN})
    add_executable(${NAME} ${ARG_SOURCES})
    target_include_directories(${NAME} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${NAME} PRIVATE ${ARG_LIBS} GTest::gmock GTest::gtest_main)
    # A test's own code runs for moments; what it tests is optimised as users get it.
    target_compile_options(${NAME} PRIVATE -O0)
    vantor_compile_together(${NAME})
    vantor_reuse_headers(${NAME} vantor_test_headers)
    set_target_properties(${NAME} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    if(VANTOR_SANITIZE AND NOT "e2e" IN_LIST ARG_LABELS)
        add_test(NAME ${NAME} COMMAND ${NAME})
        set_tests_properties(${NAME} PROPERTIES LABELS "${ARG_LABELS}" TIMEOUT 600)
        return()
    endif()
    gtest_discover_tests(${NAME}
        DISCOVERY_MODE PRE_TEST
        DISCOVERY_TIMEOUT 60
        TEST_LIST ${NAME}_tests
        PROPERTIES TIMEOUT 120)
    # gtest_discover_tests takes no property whose value is a list; this file runs after it.
    set(labels_file ${CMAKE_CURRENT_BINARY_DIR}/${NAME}_labels.cmake)
    file(WRITE ${labels_file}
        "foreach(test IN LISTS ${NAME}_tests)\n"
        "    set_tests_properties(\"\${test}\" PROPERTIES LABELS \"${ARG_LABELS}\")\n"
        "endforeach()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${labels_file})
endfunction()

# vantor_fuzzer(NAME SOURCES files... LIBS libs...)
# A fuzz target with its seeds and findings in fuzz/corpus/NAME. With VANTOR_FUZZ it is a libFuzzer
# program; else a test that replays the corpus.
function(vantor_fuzzer NAME)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${NAME} ${ARG_SOURCES})
    target_include_directories(${NAME} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${NAME} PRIVATE ${ARG_LIBS})
    set_target_properties(${NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/fuzz)
    if(VANTOR_FUZZ)
        target_link_libraries(${NAME} PRIVATE -fsanitize=fuzzer)
    else()
        target_sources(${NAME} PRIVATE replay.cpp)
        add_test(NAME Corpus.${NAME}
            COMMAND ${NAME} ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${NAME})
        set_tests_properties(Corpus.${NAME} PROPERTIES LABELS "unit;fuzz" TIMEOUT 120)
    endif()
endfunction()

# vantor_bench(NAME SOURCES files... LIBS libs...)
# A Google Benchmark program that ./bench runs and tabulates.
function(vantor_bench NAME)
    cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
    add_executable(${NAME} ${ARG_SOURCES})
    target_include_directories(${NAME} PRIVATE ${PROJECT_SOURCE_DIR})
    target_link_libraries(${NAME} PRIVATE ${ARG_LIBS} benchmark::benchmark)
    set_target_properties(${NAME} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bench)
    add_dependencies(vantor_benchmarks ${NAME})
endfunction()
