# qrt_add_test(<name> SOURCES ... [LINK ...] [DEFINES ...] [NEEDS ...] [OPENGL] [ONE_THREAD])
#
# A test program, which is one test of CTest: a process per case would cost more than most cases do. With OPENGL it runs
# under a display of its own and brings its own main function. NEEDS names the fixtures that have to be set up before. With
# ONE_THREAD there is nothing in it for ThreadSanitizer to see, and it is left out of builds with it.
function(qrt_add_test name)
    cmake_parse_arguments(TEST "OPENGL;ONE_THREAD" "" "SOURCES;LINK;DEFINES;NEEDS" ${ARGN})
    if(TEST_ONE_THREAD AND QRT_SANITIZE STREQUAL "thread")
        return()
    endif()
    add_executable(${name} ${TEST_SOURCES})
    qrt_prepare_program(${name})
    target_link_libraries(${name} PRIVATE ${TEST_LINK} GTest::gmock)
    qrt_compile_as_test(${name})
    target_compile_definitions(${name} PRIVATE ${TEST_DEFINES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    set(launcher)
    if(QRT_SANITIZE MATCHES address)
        list(APPEND launcher ${PROJECT_SOURCE_DIR}/tests/sanitizers/leak-checked.sh)
    endif()
    if(TEST_OPENGL)
        list(APPEND launcher ${PROJECT_SOURCE_DIR}/scripts/with-display.sh)
    else()
        target_link_libraries(${name} PRIVATE GTest::gmock_main)
    endif()
    add_test(NAME ${name} COMMAND ${launcher} $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES FIXTURES_REQUIRED "${TEST_NEEDS}")
    qrt_set_test_environment(${name})
endfunction()

# Compiled with -fPIC like every test: Qt adds it to the programs that use Qt, and precompiled headers fit only what is
# compiled alike. Optimising what runs for a moment takes longer than it saves; the code under test is not concerned.
set(QRT_TEST_OPTIONS -fPIC $<$<CONFIG:Debug>:-O0>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # In a bundle a source may hide what another one declares, and looks as if it were a header.
    list(APPEND QRT_TEST_OPTIONS -Wno-shadow -Wshadow=local -Wno-subobject-linkage)
endif()
if(QRT_FORTIFIED)
    list(APPEND QRT_TEST_OPTIONS $<$<CONFIG:Debug>:-U_FORTIFY_SOURCE>)
endif()
if(QRT_SANITIZE MATCHES undefined)
    # A third of the time that a test takes to compile under this sanitizer. Null pointers end a test anyway.
    list(APPEND QRT_TEST_OPTIONS -fno-sanitize=null,alignment)
endif()

# GoogleTest's headers take longer to read than most tests that include them.
file(CONFIGURE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/qrtTestHeaders.cpp CONTENT "int main() { return 0; }\n")
add_executable(qrtTestHeaders ${CMAKE_CURRENT_BINARY_DIR}/qrtTestHeaders.cpp)
target_link_libraries(qrtTestHeaders PRIVATE GTest::gmock)
target_compile_options(qrtTestHeaders PRIVATE ${QRT_TEST_OPTIONS})
target_precompile_headers(qrtTestHeaders PRIVATE <gmock/gmock.h> <gtest/gtest.h> <memory> <string> <thread> <vector>)

# qrt_compile_as_test(<target>): for tests and what only they link. Their sources are compiled in bundles; what must not
# share one with others (X11's headers define everyday words as macros) has the property SKIP_UNITY_BUILD_INCLUSION.
function(qrt_compile_as_test target)
    target_precompile_headers(${target} REUSE_FROM qrtTestHeaders)
    target_compile_options(${target} PRIVATE ${QRT_TEST_OPTIONS})
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
endfunction()

# What the sanitizers are told; without meaning for builds without them. The paths are quoted because a colon or a space
# would end them. ThreadSanitizer's ignore_noninstrumented_modules is no help: on Linux it takes every module for one
# that is not instrumented and then no longer sees races through memcpy and its like, our own included. Libraries that
# need it are named in threads.txt instead.
function(qrt_set_test_environment name)
    set(suppressions ${PROJECT_SOURCE_DIR}/tests/sanitizers)
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 900
        ENVIRONMENT "ASAN_OPTIONS=detect_stack_use_after_return=1;LSAN_OPTIONS=suppressions=\"${suppressions}/leaks.txt\":print_suppressions=0;TSAN_OPTIONS=suppressions=\"${suppressions}/threads.txt\":halt_on_error=1:second_deadlock_stack=1;UBSAN_OPTIONS=print_stacktrace=1")
endfunction()
