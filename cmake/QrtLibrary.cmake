# qrt_add_library(<Module> SOURCES ... [PUBLIC ...] [PRIVATE ...] [MAP file])
#
# A kit library: target qrt<Module>, alias qrt::<Module>, file libqrt<Module>_0_81.so. Its objects are also available as
# qrt<Module>Objects, for tests of classes that the library hides.
# PUBLIC and PRIVATE name what it links; MAP names a version script that limits what it exports.
set(QRT_ABI ${PROJECT_VERSION_MAJOR}_${PROJECT_VERSION_MINOR})

function(qrt_add_library module)
    cmake_parse_arguments(LIB "" "MAP" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
    string(TOUPPER ${module} upper)

    add_library(qrt${module}Objects OBJECT ${LIB_SOURCES})
    target_include_directories(qrt${module}Objects PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_compile_definitions(qrt${module}Objects PRIVATE QRT_BUILDS_${upper})
    target_link_libraries(qrt${module}Objects PUBLIC ${LIB_PUBLIC} PRIVATE ${LIB_PRIVATE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # A library with symbols that are unique in the process is never unloaded.
        target_compile_options(qrt${module}Objects PRIVATE -fno-gnu-unique)
    endif()
    # Reading the headers takes longer than these short files themselves.
    set_target_properties(qrt${module}Objects PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE ${QRT_BUNDLE_SIZE})

    add_library(qrt${module} SHARED)
    add_library(qrt::${module} ALIAS qrt${module})
    target_include_directories(qrt${module} INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>)
    target_link_libraries(qrt${module} PRIVATE qrt${module}Objects ${LIB_PRIVATE} PUBLIC ${LIB_PUBLIC})
    set_target_properties(qrt${module} PROPERTIES
        OUTPUT_NAME qrt${module}_${QRT_ABI}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    target_link_options(qrt${module} PRIVATE -Wl,--no-undefined)
    if(QRT_SANITIZE OR QRT_BUILD_FUZZERS)
        # The sanitizers' run-time library is the program's, not ours.
        target_link_options(qrt${module} PRIVATE -Wl,-z,undefs)
    endif()
    if(LIB_MAP)
        target_link_options(qrt${module} PRIVATE -Wl,--version-script=${LIB_MAP})
        set_target_properties(qrt${module} PROPERTIES LINK_DEPENDS ${LIB_MAP})
    endif()
endfunction()
