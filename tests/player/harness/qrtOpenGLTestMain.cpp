// Runs the tests of a program that needs OpenGL: on the GUI thread, with a Qt application and the display of the
// session.
#include <gtest/gtest.h>

#include <QGuiApplication>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
