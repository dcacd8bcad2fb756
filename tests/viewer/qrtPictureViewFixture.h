#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>
#include <memory>

#include "viewer/picture/qrtPictureView.h"
#include "viewer/qrtViewFrames.h"

namespace qrtplay {

/// A view in a window of its own. Sizes and positions are in pixels of the device, so that the same tests hold where
/// windows are scaled.
class PictureViewFixture : public ::testing::Test {
protected:
    void open(int width, int height) {
        view = std::make_unique<PictureView>();
        view->setBackground(background);
        view->winId();  // which screen it is on, and how that is scaled, is known to native windows only
        ratio = view->devicePixelRatioF();
        view->resize(QSize(width, height) / ratio);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        ASSERT_EQ(grab().size(), QSize(width, height));
    }
    void open(int width, int height, SharedPtr<VideoBuffer> const& frame) {
        ASSERT_NO_FATAL_FAILURE(open(width, height));
        view->showFrame(frame);
    }
    /// What is on show.
    [[nodiscard]] QImage grab() {
        QImage image = view->grabFramebuffer().convertToFormat(QImage::Format_RGBA8888);
        image.setDevicePixelRatio(1);
        return image;
    }
    [[nodiscard]] QColor pixel(int x, int y) { return grab().pixelColor(x, y); }
    /// The part of the view that the picture lies in.
    [[nodiscard]] QImage grabPicture() { return grab().copy(view->zoom().pictureRect().toRect()); }
    [[nodiscard]] QPoint logical(QPoint const& pixels) const { return pixels / ratio; }

    const QColor background{10, 60, 20};
    std::unique_ptr<PictureView> view;
    double ratio = 1;
};

}  // namespace qrtplay
