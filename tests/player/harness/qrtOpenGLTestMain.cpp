// Runs the tests of a program that needs OpenGL: on the GUI thread, with a Qt application and the display of the session.
#include <gtest/gtest.h>

#include <QGuiApplication>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// Drivers stay loaded to the end: of one that is gone the sanitizers can neither name the frames nor see the pointers that
// it still holds.
extern "C" [[gnu::visibility("default")]] int dlclose(void*) {
    return 0;
}
#endif

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
