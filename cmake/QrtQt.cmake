# The one place that decides which Qt everything is built with. Elsewhere its modules go by the names that both versions
# give them, such as Qt::Gui.
set(QRT_QT_MAJOR 5 CACHE STRING "Major version of Qt to build with: 5 or 6")
set_property(CACHE QRT_QT_MAJOR PROPERTY STRINGS 5 6)

# QRT_QT_OPENGL is the module with framebuffers, buffers and shaders, QRT_QT_OPENGL_WIDGETS that with the widget which is
# drawn with them.
if(QRT_QT_MAJOR STREQUAL "5")
    set(QRT_QT_OLDEST 5.15)
    set(QRT_QT_OPENGL Gui)
    set(QRT_QT_OPENGL_WIDGETS Widgets)
elseif(QRT_QT_MAJOR STREQUAL "6")
    set(QRT_QT_OLDEST 6.4)
    set(QRT_QT_OPENGL OpenGL)
    set(QRT_QT_OPENGL_WIDGETS OpenGLWidgets)
else()
    message(FATAL_ERROR "QRT_QT_MAJOR is '${QRT_QT_MAJOR}', but has to be 5 or 6")
endif()

# qrt_find_qt(<module>...): for the folder that calls it and those below.
macro(qrt_find_qt)
    find_package(Qt${QRT_QT_MAJOR} ${QRT_QT_OLDEST} REQUIRED COMPONENTS ${ARGN})
endmacro()
