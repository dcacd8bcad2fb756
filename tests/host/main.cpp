// The tests that need OpenGL run under a display, with the application object that contexts and surfaces require.
#include <gmock/gmock.h>

#include <QGuiApplication>

#include "media/qrtAv.h"

int main(int argc, char** argv) {
    av_log_set_level(AV_LOG_QUIET);
    QGuiApplication application(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
