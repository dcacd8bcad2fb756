# The Debian packages that `cpack` makes of the components of QrtInstall.cmake, with Qt 5. scripts/package.sh makes and
# tries them.
find_program(QRT_GZIP gzip)
if(NOT QRT_GZIP)
    message(STATUS "Packages cannot be made: gzip is not installed")
    return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qrt)
set(QRT_PACKAGE_CONTACT "The qrt authors <qrt@localhost>" CACHE STRING "Who answers for the packages")
set(CPACK_PACKAGE_CONTACT ${QRT_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each has its own
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime dev)
if(QRT_BUILD_HOST)
    list(APPEND CPACK_COMPONENTS_ALL tools)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/triggers)

# qrt_describe_package(<component> <package> <section> <summary> <text>)
#
# Its licence and its list of changes go where Debian looks for those of a package.
macro(qrt_describe_package component package section summary text)
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
    set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}")
    install(FILES packaging/copyright DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endmacro()

# Debian's own form of a list of changes, compressed without the time of day, so that packages are repeatable.
execute_process(COMMAND git log -1 --format=%cD WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
    OUTPUT_VARIABLE QRT_COMMIT_DATE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT QRT_COMMIT_DATE)
    set(QRT_COMMIT_DATE "Thu, 01 Jan 1970 00:00:00 +0000")
endif()
configure_file(packaging/changelog.in ${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog @ONLY)
execute_process(COMMAND ${QRT_GZIP} -9nf ${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog COMMAND_ERROR_IS_FATAL ANY)

qrt_describe_package(runtime libqrt${QRT_INTERFACE_VERSION} libs
    "playback engine of a media-composition kit - libraries"
    "Turns a timeline into frames and sound, ahead of the host that shows them. A\nplayer thread with an OpenGL context that shares objects with the host's\nrenders frames by number, as textures or as blocks of memory.")
qrt_describe_package(dev libqrt-dev libdevel
    "playback engine of a media-composition kit - development files"
    "Headers, CMake and pkg-config files for hosts that embed the engine, and\nexamples of such hosts.")
qrt_describe_package(tools qrtplay video
    "player of media, image sequences and OpenTimelineIO timelines"
    "Shows them frame by frame in a window, writes frames into image files and\nmovies, makes contact sheets and tells what a file holds.")
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS qtbase5-dev)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS libqt5multimedia5-plugins)

include(CPack)
