# What makes a fault harder to exploit, for every program and library of this project. Sanitizers replace it: they stop
# at the fault itself, and want their own ways into memory and the dynamic linker.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

set(QRT_HARDENED OFF)
if(CMAKE_SYSTEM_NAME STREQUAL Linux AND NOT QRT_SANITIZE AND NOT QRT_BUILD_FUZZERS)
    set(QRT_HARDENED ON)
    add_compile_options(-fstack-protector-strong)
    add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
    # The C library's checks know sizes only where the compiler optimises, and warn where it does not.
    if(NOT CMAKE_BUILD_TYPE STREQUAL Debug OR CMAKE_CXX_FLAGS MATCHES "-O[1-3s]")
        set(QRT_FORTIFIED ON)
        add_compile_options("SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
    endif()
endif()
