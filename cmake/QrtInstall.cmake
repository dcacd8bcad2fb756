# What is installed, in three components: `runtime` (the libraries), `dev` (what hosts are built with) and `tools` (qrtplay).
# The same names are the Debian packages' of QrtPackages.cmake.
include(CMakePackageConfigHelpers)

# What is built for another prefix than the system's finds its libraries wherever the tree is moved. Packages for the
# system leave this out with CMAKE_SKIP_INSTALL_RPATH.
file(RELATIVE_PATH QRT_LIBRARIES_FROM_PROGRAMS /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
file(RELATIVE_PATH QRT_PREFIX_FROM_PKGCONFIG /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" QRT_PREFIX_FROM_PKGCONFIG ${QRT_PREFIX_FROM_PKGCONFIG})

set(QRT_INTERFACE_VERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(QRT_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/qrt-${QRT_INTERFACE_VERSION})
set(QRT_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/qrt)

# ---- The libraries

# qrt_install_library(<Module> <description> REQUIRES <module of pkg-config>...)
function(qrt_install_library module QRT_PC_DESCRIPTION)
    cmake_parse_arguments(LIBRARY "" "" "REQUIRES" ${ARGN})
    set_target_properties(qrt${module} PROPERTIES EXPORT_NAME ${module} INSTALL_RPATH $ORIGIN)
    install(TARGETS qrt${module} EXPORT qrt
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
        INCLUDES DESTINATION ${QRT_INSTALL_INCLUDEDIR})
    list(JOIN LIBRARY_REQUIRES ", " QRT_PC_REQUIRES)
    set(pkgconfig ${CMAKE_CURRENT_BINARY_DIR}/packaging/qrt${module}.pc)
    configure_file(${PROJECT_SOURCE_DIR}/packaging/library.pc.in ${pkgconfig} @ONLY)
    install(FILES ${pkgconfig} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endfunction()
qrt_install_library(Core "results, numbers, times, containers, reference counting, observers, preferences, formats")
qrt_install_library(Cache "a keyed cache with pluggable eviction" REQUIRES qrtCore)
qrt_install_library(Composition "the interfaces of timelines and graph engines" REQUIRES qrtCore)
qrt_install_library(Logger "messages, channels, sinks" REQUIRES qrtCore)
qrt_install_library(Player "the playback engine"
    REQUIRES qrtComposition qrtCore "Qt${QRT_QT_MAJOR}Gui >= ${QRT_QT_OLDEST}")

install(DIRECTORY src/foundation DESTINATION ${QRT_INSTALL_INCLUDEDIR} COMPONENT dev
    FILES_MATCHING PATTERN *.h PATTERN qrtRegistration.h EXCLUDE)
install(DIRECTORY src/player DESTINATION ${QRT_INSTALL_INCLUDEDIR} COMPONENT dev
    FILES_MATCHING PATTERN *.h PATTERN private EXCLUDE)

set(QRT_COMPONENTS_TEXT "Core, Cache, Composition, Logger and Player")
configure_package_config_file(packaging/qrtConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/packaging/qrtConfig.cmake
    INSTALL_DESTINATION ${QRT_INSTALL_CMAKEDIR} NO_SET_AND_CHECK_MACRO)
# The namespace, the libraries' names and the binary interface go with the second number.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/packaging/qrtConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/packaging/qrtConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/packaging/qrtConfigVersion.cmake
    DESTINATION ${QRT_INSTALL_CMAKEDIR} COMPONENT dev)
install(EXPORT qrt NAMESPACE qrt:: FILE qrtTargets.cmake DESTINATION ${QRT_INSTALL_CMAKEDIR} COMPONENT dev)

install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libqrt-dev COMPONENT dev)
# Beside the examples as in the sources, so that its links lead there.
install(FILES docs/embedding.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libqrt-dev/docs COMPONENT dev)

# ---- The program

if(QRT_BUILD_HOST)
    set_target_properties(qrtplay PROPERTIES INSTALL_RPATH $ORIGIN/${QRT_LIBRARIES_FROM_PROGRAMS})
    install(TARGETS qrtplay RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)

    find_package(Python3 REQUIRED COMPONENTS Interpreter)
    set(page ${CMAKE_CURRENT_BINARY_DIR}/packaging/qrtplay.1.gz)
    add_custom_command(OUTPUT ${page}
        COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/packaging/man-page.py $<TARGET_FILE:qrtplay> ${PROJECT_VERSION} ${page}
        DEPENDS qrtplay packaging/man-page.py
        COMMENT "Writing the manual page of qrtplay from its help")
    add_custom_target(qrtplayManPage ALL DEPENDS ${page})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)

    install(FILES packaging/qrtplay.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT tools)
    install(FILES packaging/qrtplay.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT tools)
    install(FILES packaging/qrtplay.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages COMPONENT tools)
endif()
