#include "graph/qrtLetterbox.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

const Rational square(1, 1);

TEST(Letterbox, fillsAnOutputOfTheSameShape) {
    EXPECT_EQ(letterbox(1920, 1080, square, 1920, 1080), (PixelRect{0, 0, 1920, 1080}));
    EXPECT_EQ(letterbox(1920, 1080, square, 640, 360), (PixelRect{0, 0, 640, 360}));
}

TEST(Letterbox, leavesBarsAboveAndBelowAWiderPicture) {
    EXPECT_EQ(letterbox(1920, 1080, square, 640, 480), (PixelRect{0, 60, 640, 360}));
}

TEST(Letterbox, leavesBarsBesideANarrowerPicture) {
    EXPECT_EQ(letterbox(640, 480, square, 1920, 1080), (PixelRect{240, 0, 1440, 1080}));
}

TEST(Letterbox, widensPixelsThatAreNotSquare) {
    EXPECT_EQ(letterbox(720, 576, Rational(64, 45), 1024, 576), (PixelRect{0, 0, 1024, 576}));
    EXPECT_EQ(letterbox(720, 576, Rational(0, 1), 720, 576), (PixelRect{0, 0, 720, 576}));
}

TEST(Letterbox, keepsAtLeastAPixel) {
    EXPECT_EQ(letterbox(10000, 1, square, 100, 100).height, 1);
    EXPECT_EQ(letterbox(1, 10000, square, 100, 100).width, 1);
    EXPECT_EQ(letterbox(1, 1, square, 1, 1), (PixelRect{0, 0, 1, 1}));
}

}  // namespace
}  // namespace qrtplay
