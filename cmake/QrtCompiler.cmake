# What every target of this project is compiled with.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(QRT_CCACHE ccache)
if(QRT_CCACHE)
    # Without these it keeps nothing that was compiled with precompiled headers.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${QRT_CCACHE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        add_compile_options(-fpch-preprocess)
    endif()
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wconversion -Wsign-conversion)
if(QRT_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()

if(QRT_SANITIZE)
    add_compile_options(-fsanitize=${QRT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${QRT_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        # Instrumented code confuses it: it finds fault with the standard library's own regular expressions.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
    if(QRT_SANITIZE MATCHES undefined)
        # The virtual-table check needs the type information of hidden classes across libraries, which is not exported.
        add_compile_options(-fno-sanitize=vptr)
        if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
            add_compile_options(-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/tests/sanitizers/ignored.txt)
        endif()
    endif()
endif()

if(QRT_BUILD_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES Clang)
        message(FATAL_ERROR "QRT_BUILD_FUZZERS needs Clang: configure with -DCMAKE_CXX_COMPILER=clang++")
    endif()
    # Everything tells the fuzzer where it has been; the targets alone bring its main function.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# qrt_prepare_program(<target>): what every program of this project needs beyond its own sources.
function(qrt_prepare_program target)
    if(QRT_SANITIZE)
        target_link_libraries(${target} PRIVATE qrtSanitizedProgram)
    endif()
endfunction()
if(QRT_SANITIZE)
    add_library(qrtSanitizedProgram OBJECT ${PROJECT_SOURCE_DIR}/tests/sanitizers/qrtSanitizedProgram.cpp)
endif()
