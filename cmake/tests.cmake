# How tests join the build. One program per test file or small group of files: a program is what ctest runs (and
# what runs beside another one), the cases inside are counted by ./test from GoogleTest's own report.

# Only what hangs lasts as long: a program that takes a minute may take half an hour on a busy machine.
set(KFX_TEST_TIMEOUT 1800)

# kfx_add_test(NAME SOURCES a.cpp ... LIBRARIES kfx_... [ARGUMENTS ...] [TIMEOUT seconds]
#              [NATIVE_ONLY | WINDOWS_ONLY] [CODE_PAGES])
# Without a word on the side, the program is built by both toolchains and runs natively and under Wine. There it has a
# display and a user folder to itself (see cmake/wine): it may show windows, ask for the focus and change settings.
# CODE_PAGES: what it tests depends on the code page of Windows, and ./test codepages runs it with several.
# The working directory is the root of the sources: test data is read from tests/data/.
function(kfx_add_test name)
    cmake_parse_arguments(arg "NATIVE_ONLY;WINDOWS_ONLY;CODE_PAGES" "TIMEOUT" "SOURCES;LIBRARIES;ARGUMENTS" ${ARGN})
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "kfx_add_test(${name}): unknown words: ${arg_UNPARSED_ARGUMENTS}")
    endif()
    if((WIN32 AND arg_NATIVE_ONLY) OR (NOT WIN32 AND arg_WINDOWS_ONLY) OR KFX_FUZZ)
        return()
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT ${KFX_TEST_TIMEOUT})
    endif()

    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE kfx_flags ${arg_LIBRARIES} GTest::gmock GTest::gtest GTest::gtest_main)
    if(NOT MSVC)
        # The code under test keeps its own level; optimising test bodies would only cost build time.
        target_compile_options(${name} PRIVATE -O1)
    endif()
    add_test(NAME ${name} COMMAND ${name} ${arg_ARGUMENTS} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR})
    kfx_set_test_properties(${name} ${arg_TIMEOUT})
    if(WIN32 AND arg_CODE_PAGES)
        target_sources(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support/code_page_check.cpp)
        set_tests_properties(${name} PROPERTIES LABELS codepages)
    endif()
endfunction()

# What every ctest entry carries; also for tests that are not GoogleTest programs.
function(kfx_set_test_properties name timeout)
    set(reports ${KFX_TEST_REPORTS})
    if(CMAKE_HOST_UNIX AND WIN32)
        set(reports Z:${KFX_TEST_REPORTS})  # the host's root as Wine shows it
    endif()
    set(environment
        "GTEST_OUTPUT=xml:${reports}/${name}.xml"
        "GTEST_COLOR=no"
        "KFX_WINE_WHOLE_OUTPUT=1"
        "ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1:allocator_may_return_null=1"
        "UBSAN_OPTIONS=print_stacktrace=1")
    if(CMAKE_CROSSCOMPILING_EMULATOR MATCHES "valgrind")
        math(EXPR timeout "${timeout} * 10")
    endif()
    set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout} ENVIRONMENT "${environment}")
endfunction()

# kfx_add_fuzzer(NAME SOURCES a.cpp ... LIBRARIES kfx_... [CORPUS folder])
# SOURCES define LLVMFuzzerTestOneInput. The `fuzz` preset links libFuzzer; every other native build makes the same
# target a test that replays the corpus and fixed damage to each of its files.
function(kfx_add_fuzzer name)
    cmake_parse_arguments(arg "" "CORPUS" "SOURCES;LIBRARIES" ${ARGN})
    if(WIN32)
        return()
    endif()
    if(arg_CORPUS)
        cmake_path(ABSOLUTE_PATH arg_CORPUS BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE)
    endif()
    if(KFX_FUZZ)
        add_executable(${name} ${arg_SOURCES})
        target_link_libraries(${name} PRIVATE kfx_flags ${arg_LIBRARIES})
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        set_property(GLOBAL APPEND PROPERTY KFX_FUZZERS "${name} ${arg_CORPUS}")
        if(NOT TARGET fuzzers)
            add_custom_target(fuzzers)  # all that ./test fuzz runs
        endif()
        add_dependencies(fuzzers ${name})
    else()
        add_executable(${name} ${arg_SOURCES} ${CMAKE_SOURCE_DIR}/tests/fuzz/replay_main.cpp)
        target_link_libraries(${name} PRIVATE kfx_flags ${arg_LIBRARIES})
        add_test(NAME ${name} COMMAND ${name} ${arg_CORPUS} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR})
        kfx_set_test_properties(${name} ${KFX_TEST_TIMEOUT})
    endif()
endfunction()
