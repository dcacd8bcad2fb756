#include "graph/qrtPlacement.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

const Rational square(1, 1);

PixelRect fitted(int width, int height, Rational const& aspect, int outputWidth, int outputHeight) {
    return placement(Scaling::fit, width, height, aspect, outputWidth, outputHeight);
}

TEST(Placement, fillsAnOutputOfTheSameShape) {
    for (const Scaling scaling : {Scaling::fit, Scaling::fill}) {
        EXPECT_EQ(placement(scaling, 1920, 1080, square, 1920, 1080), (PixelRect{0, 0, 1920, 1080}));
        EXPECT_EQ(placement(scaling, 1920, 1080, square, 640, 360), (PixelRect{0, 0, 640, 360}));
    }
}

TEST(Placement, leavesBarsAboveAndBelowAWiderPicture) {
    EXPECT_EQ(fitted(1920, 1080, square, 640, 480), (PixelRect{0, 60, 640, 360}));
}

TEST(Placement, leavesBarsBesideANarrowerPicture) {
    EXPECT_EQ(fitted(640, 480, square, 1920, 1080), (PixelRect{240, 0, 1440, 1080}));
}

TEST(Placement, widensPixelsThatAreNotSquare) {
    EXPECT_EQ(fitted(720, 576, Rational(64, 45), 1024, 576), (PixelRect{0, 0, 1024, 576}));
    EXPECT_EQ(fitted(720, 576, Rational(0, 1), 720, 576), (PixelRect{0, 0, 720, 576}));
}

TEST(Placement, keepsAtLeastAPixel) {
    EXPECT_EQ(fitted(10000, 1, square, 100, 100).height, 1);
    EXPECT_EQ(fitted(1, 10000, square, 100, 100).width, 1);
    EXPECT_EQ(fitted(1, 1, square, 1, 1), (PixelRect{0, 0, 1, 1}));
}

TEST(Placement, exceedsAnOutputThatItFills) {
    EXPECT_EQ(placement(Scaling::fill, 1920, 1080, square, 640, 480), (PixelRect{-106, 0, 853, 480}));
    EXPECT_EQ(placement(Scaling::fill, 640, 480, square, 1920, 1080), (PixelRect{0, -180, 1920, 1440}));
    const PixelRect extreme = placement(Scaling::fill, 16384, 1, Rational(1000000, 1), 100, 100);
    EXPECT_EQ(extreme.width, maxPlacedSide);
    EXPECT_EQ(extreme.height, 100);
}

TEST(Placement, centresAPictureThatIsNotScaled) {
    EXPECT_EQ(placement(Scaling::one_to_one, 720, 576, Rational(64, 45), 1920, 1080), (PixelRect{600, 252, 720, 576}));
    EXPECT_EQ(placement(Scaling::one_to_one, 1920, 1080, square, 720, 576), (PixelRect{-600, -252, 1920, 1080}));
}

TEST(Placement, knowsWhatOfItIsSeen) {
    EXPECT_EQ(visiblePart({-600, -252, 1920, 1080}, 720, 576), (PixelRect{0, 0, 720, 576}));
    EXPECT_EQ(visiblePart({10, 20, 30, 40}, 720, 576), (PixelRect{10, 20, 30, 40}));
    EXPECT_EQ(visiblePart({10, 20, 30, 40}, 15, 25), (PixelRect{10, 20, 5, 5}));
}

}  // namespace
}  // namespace qrtplay
