#include "playback/qrtPreparedInput.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

QSize shownSize(int width, int height, Rational const& aspect) {
    VideoFacts facts;
    facts.width = width;
    facts.height = height;
    facts.sampleAspect = aspect;
    return squarePixelSize(facts);
}

TEST(SquarePixelSize, losesNoPixel) {
    EXPECT_EQ(shownSize(720, 576, Rational(64, 45)), QSize(1024, 576));
    EXPECT_EQ(shownSize(720, 480, Rational(8, 9)), QSize(720, 540));
}

TEST(SquarePixelSize, isNoLargerThanAPictureMayBeWhateverAHeaderClaims) {
    const QSize stored(1920, 1080);
    EXPECT_EQ(shownSize(1920, 1080, Rational(INT32_MAX, 1)), stored);
    EXPECT_EQ(shownSize(1920, 1080, Rational(1, UINT32_MAX)), stored);
    EXPECT_EQ(shownSize(16384, 8192, Rational(1, 2)), QSize(16384, 8192)) << "too many pixels";
    EXPECT_EQ(shownSize(16384, 4096, Rational(1, 2)), QSize(16384, 8192));
}

}  // namespace
}  // namespace qrtplay
