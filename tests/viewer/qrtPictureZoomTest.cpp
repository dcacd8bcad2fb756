#include "viewer/picture/qrtPictureZoom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace qrtplay {
namespace {

PictureZoom zoomOf(QSizeF picture, QSizeF view) {
    PictureZoom zoom;
    zoom.setPicture(picture);
    zoom.setView(view);
    return zoom;
}

/// What of the picture, in its own pixels, lies under a point of the view.
QPointF under(PictureZoom const& zoom, QPointF point) {
    return (point - zoom.pictureRect().topLeft()) / zoom.factor();
}

struct FitCase {
    const char* name;
    QSizeF picture;
    QSizeF view;
    double factor;
    QRectF rect;
};
class PictureZoomFit : public ::testing::TestWithParam<FitCase> {};

TEST_P(PictureZoomFit, liesInTheMiddle) {
    const PictureZoom zoom = zoomOf(GetParam().picture, GetParam().view);
    EXPECT_TRUE(zoom.isFit());
    EXPECT_DOUBLE_EQ(zoom.factor(), GetParam().factor);
    EXPECT_EQ(zoom.pictureRect(), GetParam().rect);
}
INSTANTIATE_TEST_SUITE_P(Shapes, PictureZoomFit,
                         ::testing::Values(FitCase{"same", {640, 360}, {640, 360}, 1, {0, 0, 640, 360}},
                                           FitCase{"shrunk", {1920, 1080}, {960, 540}, 0.5, {0, 0, 960, 540}},
                                           FitCase{"enlarged", {320, 180}, {640, 360}, 2, {0, 0, 640, 360}},
                                           FitCase{"barsAboveAndBelow", {800, 400}, {400, 300}, 0.5, {0, 50, 400, 200}},
                                           FitCase{"barsLeftAndRight", {400, 800}, {300, 400}, 0.5, {50, 0, 200, 400}},
                                           FitCase{"onWholePixels", {100, 100}, {100, 103}, 1, {0, 2, 100, 100}},
                                           FitCase{"smallerThanTheLimit", {6400, 6400}, {64, 64}, 0.01, {0, 0, 64, 64}},
                                           FitCase{"largerThanTheLimit", {2, 2}, {128, 128}, 64, {0, 0, 128, 128}},
                                           FitCase{"noPicture", {}, {640, 360}, 1, {}},
                                           FitCase{"noView", {64, 36}, {}, 1, {-32, -18, 64, 36}},
                                           FitCase{"emptyPicture", {0, 100}, {640, 360}, 1, {}}),
                         [](const auto& given) { return given.param.name; });

TEST(PictureZoom, followsTheViewUntilItIsZoomed) {
    PictureZoom zoom = zoomOf({400, 300}, {400, 300});
    zoom.setView({800, 600});
    EXPECT_EQ(zoom.factor(), 2);
    zoom.zoomTo(2, zoom.viewCentre());
    EXPECT_FALSE(zoom.isFit());
    zoom.setView({1000, 700});
    EXPECT_EQ(zoom.factor(), 2);
    EXPECT_EQ(zoom.pictureRect(), QRectF(100, 50, 800, 600));
    zoom.fit();
    EXPECT_TRUE(zoom.isFit());
    EXPECT_DOUBLE_EQ(zoom.factor(), 700.0 / 300);
}

TEST(PictureZoom, whatIsUnderTheAnchorStays) {
    PictureZoom zoom = zoomOf({1920, 1080}, {960, 540});
    for (const QPointF anchor : {QPointF(480, 270), QPointF(100, 400), QPointF(959, 1)}) {
        zoom.fit();
        const QPointF before = under(zoom, anchor);
        for (const double factor : {0.8, 1.0, 2.0, 5.0, 32.0}) {
            zoom.zoomTo(factor, anchor);
            EXPECT_EQ(zoom.factor(), factor);
            const QPointF after = under(zoom, anchor);
            const double tolerance = 0.51 / factor;  // the picture is put on whole pixels
            EXPECT_NEAR(after.x(), before.x(), tolerance);
            EXPECT_NEAR(after.y(), before.y(), tolerance);
        }
    }
}

TEST(PictureZoom, backAndForthIsWhereItWas) {
    PictureZoom zoom = zoomOf({1920, 1080}, {961, 541});
    zoom.zoomTo(1, zoom.viewCentre());
    const QRectF before = zoom.pictureRect();
    for (int i = 0; i < 100; ++i) {
        zoom.zoomTo(5, {333, 111});
        zoom.zoomTo(1, {333, 111});
    }
    EXPECT_EQ(zoom.pictureRect(), before);
}

TEST(PictureZoom, cornerIsOnWholePixelsWhenNotShrunk) {
    PictureZoom zoom = zoomOf({33, 17}, {101, 54});
    for (const double factor : {1.0, 1.25, 2.5, 3.0}) {
        zoom.zoomTo(factor, {13.25, 7.75});
        zoom.pan({0.3, 0.4});
        const QPointF corner = zoom.pictureRect().topLeft();
        EXPECT_EQ(corner, QPointF(std::round(corner.x()), std::round(corner.y())));
        EXPECT_EQ(zoom.pictureRect().size(), QSizeF(33, 17) * factor);
    }
}

TEST(PictureZoom, factorsHaveLimits) {
    PictureZoom zoom = zoomOf({100, 100}, {100, 100});
    zoom.zoomTo(1000, {});
    EXPECT_EQ(zoom.factor(), PictureZoom::largest);
    zoom.zoomTo(0, {});
    EXPECT_EQ(zoom.factor(), PictureZoom::smallest);
    zoom.zoomTo(std::nan(""), {});
    EXPECT_EQ(zoom.factor(), PictureZoom::smallest);
}

TEST(PictureZoom, panningShowsEveryPartButLosesNone) {
    PictureZoom zoom = zoomOf({100, 100}, {200, 200});
    zoom.pan({10, 10});
    EXPECT_EQ(zoom.pictureRect(), QRectF(0, 0, 200, 200)) << "fitted, there is nothing to move";
    zoom.zoomTo(10, zoom.viewCentre());
    zoom.pan({10, -20});
    EXPECT_EQ(zoom.pictureRect(), QRectF(-390, -420, 1000, 1000));
    zoom.pan({1e9, 1e9});
    EXPECT_EQ(zoom.pictureRect(), QRectF(100, 100, 1000, 1000));
    zoom.pan({-1e9, -1e9});
    EXPECT_EQ(zoom.pictureRect(), QRectF(-900, -900, 1000, 1000));
}

TEST(PictureZoom, aPictureZoomedBesideItselfStaysInSight) {
    PictureZoom zoom = zoomOf({100, 100}, {1000, 200});
    for (int i = 0; i < 10; ++i)
        zoom.zoomTo(zoom.factor() * 2, {0, 0});
    EXPECT_TRUE(zoom.pictureRect().adjusted(-1, -1, 1, 1).contains(zoom.viewCentre()));
}

TEST(PictureZoom, anotherPictureStaysInSight) {
    PictureZoom zoom = zoomOf({1000, 1000}, {200, 200});
    zoom.zoomTo(1, zoom.viewCentre());
    zoom.pan({500, 0});
    zoom.setPicture({100, 100});
    EXPECT_EQ(zoom.factor(), 1);
    EXPECT_TRUE(zoom.pictureRect().contains(zoom.viewCentre()));
}

TEST(PictureZoom, neatFactorsAreAboutAQuarterApart) {
    std::vector<double> up{PictureZoom::smallest};
    while (PictureZoom::nextLarger(up.back()) != up.back())
        up.push_back(PictureZoom::nextLarger(up.back()));
    EXPECT_EQ(up.back(), PictureZoom::largest);
    for (const double neat : {0.125, 0.25, 0.5, 1.0, 2.0, 4.0, 8.0, 16.0})
        EXPECT_NE(std::find(up.begin(), up.end(), neat), up.end()) << neat;
    for (size_t i = 1; i < up.size(); ++i) {
        EXPECT_GE(up[i] / up[i - 1], 1.19);
        EXPECT_LE(up[i] / up[i - 1], 1.34);
        EXPECT_EQ(PictureZoom::nextSmaller(up[i]), up[i - 1]);
    }
}

struct StepCase {
    const char* name;
    double factor;
    double larger;
    double smaller;
};
class PictureZoomStep : public ::testing::TestWithParam<StepCase> {};

TEST_P(PictureZoomStep, goesToTheNextNeatFactor) {
    EXPECT_EQ(PictureZoom::nextLarger(GetParam().factor), GetParam().larger);
    EXPECT_EQ(PictureZoom::nextSmaller(GetParam().factor), GetParam().smaller);
}
INSTANTIATE_TEST_SUITE_P(Factors, PictureZoomStep,
                         ::testing::Values(StepCase{"one", 1, 1.25, 0.8}, StepCase{"two", 2, 2.5, 1.5},
                                           StepCase{"half", 0.5, 0.64, 0.4}, StepCase{"between", 0.7, 0.8, 0.64},
                                           StepCase{"allButOne", 0.9999, 1.25, 0.8},
                                           StepCase{"belowAll", 0.01, 0.0625, 0.01}, StepCase{"aboveAll", 64, 64, 32}),
                         [](const auto& given) { return given.param.name; });

}  // namespace
}  // namespace qrtplay
