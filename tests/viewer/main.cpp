#include <gtest/gtest.h>

#include <QApplication>

#include "viewer/qrtViewerApplication.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    const auto application = qrtplay::makeViewerApplication(argc, argv);
    return RUN_ALL_TESTS();
}
