# qrt_add_test(<name> SOURCES ... [LINK ...] [DEFINES ...] [OPENGL])
#
# A test program whose cases CTest runs one by one... or, with OPENGL, all in one process under a display of its own:
# starting Xvfb and an OpenGL driver costs more than most cases do.
function(qrt_add_test name)
    cmake_parse_arguments(TEST "OPENGL" "" "SOURCES;LINK;DEFINES" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE ${TEST_LINK} GTest::gmock)
    target_compile_definitions(${name} PRIVATE ${TEST_DEFINES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    if(TEST_OPENGL)
        add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/scripts/with-display.sh $<TARGET_FILE:${name}>)
    else()
        target_link_libraries(${name} PRIVATE GTest::gmock_main)
        add_test(NAME ${name} COMMAND ${name})
    endif()
    set(suppressions ${PROJECT_SOURCE_DIR}/tests/sanitizers)
    set_tests_properties(${name} PROPERTIES
        TIMEOUT 900
        ENVIRONMENT "LSAN_OPTIONS=suppressions=${suppressions}/leaks.txt:print_suppressions=0;TSAN_OPTIONS=suppressions=${suppressions}/threads.txt:ignore_noninstrumented_modules=1:halt_on_error=1:second_deadlock_stack=1;UBSAN_OPTIONS=print_stacktrace=1")
endfunction()
