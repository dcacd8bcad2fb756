#include "media/qrtSlateSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "media/qrtSlatePainter.h"

namespace qrtplay {
namespace {

struct Pixel {
    int red, green, blue, alpha;
};

Pixel pixelAt(AVFrame const& picture, int x, int y) {
    const uint8_t* const bytes = picture.data[0] + std::ptrdiff_t{y} * picture.linesize[0] + 4 * x;
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

/// How many pixels of a part of the picture are as light as only text is.
int lightPixels(AVFrame const& picture, int left, int right) {
    constexpr int light = 140;
    int count = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = left; x < right; ++x) {
            const Pixel pixel = pixelAt(picture, x, y);
            if (std::min({pixel.red, pixel.green, pixel.blue}) > light) ++count;
        }
    }
    return count;
}

FramePtr pictureOf(PictureSource& source, int64 frame) {
    FramePtr picture;
    FramePtr kept;
    std::string why;
    const auto keep = [&](int64 number, FramePtr const& each) {
        EXPECT_EQ(number, frame);
        kept = each;
    };
    EXPECT_EQ(source.frame(
                  frame, keep, [](int64) { return true; }, picture, why),
              PictureSource::Result::picture)
        << why;
    EXPECT_EQ(kept, picture);
    return picture;
}

TEST(SlateSource, isOnePictureForEveryFrame) {
    const auto slate = makeMissingSlate("clip.mov", "no such file", QSize(640, 360), Rational(25, 1));
    ASSERT_NE(slate, nullptr);
    EXPECT_EQ(slate->path(), "clip.mov");
    EXPECT_EQ(slate->facts().frameCount, endlessFrameCount);
    EXPECT_EQ(slate->facts().frameRate, Rational(25, 1));
    EXPECT_EQ(slate->facts().colour,
              (ColourFacts{AVCOL_SPC_RGB, AVCOL_RANGE_JPEG, AVCOL_PRI_BT709, AVCOL_TRC_IEC61966_2_1}));
    EXPECT_EQ(pictureOf(*slate, 0), pictureOf(*slate, 123456));
}

TEST(SlateSource, isReadableInAnySize) {
    for (const QSize size : {QSize(640, 360), QSize(3840, 2160), QSize(360, 640), QSize(64, 48)}) {
        const auto slate = makeMissingSlate("clip.mov", "no such file", size, Rational(25, 1));
        ASSERT_NE(slate, nullptr);
        const FramePtr picture = pictureOf(*slate, 0);
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(QSize(picture->width, picture->height), size);
        EXPECT_GT(lightPixels(*picture, 0, size.width()), size.width() * size.height() / 200) << size.width();
        const Pixel corner = pixelAt(*picture, 0, 0);
        EXPECT_LT(std::max({corner.red, corner.green, corner.blue}), 50);
        EXPECT_EQ(corner.alpha, 255);
    }
}

TEST(SlateSource, shortensWhatIsTooLongForIt) {
    const QSize size(640, 360);
    const auto slate = makeMissingSlate(std::string(500, 'm'), std::string(500, 'w'), size, Rational(25, 1));
    const FramePtr picture = pictureOf(*slate, 0);
    constexpr int margin = 640 / 32;
    EXPECT_EQ(lightPixels(*picture, 0, margin), 0);
    EXPECT_EQ(lightPixels(*picture, size.width() - margin, size.width()), 0);
    EXPECT_GT(lightPixels(*picture, size.width() - 5 * margin, size.width() - margin), 0) << "uses the width";
}

TEST(SlateSource, saysWhatIsMissingAndWhy) {
    const auto bytes = [](std::string const& name, std::string const& reason) {
        const auto slate = makeMissingSlate(name, reason, QSize(640, 360), Rational(25, 1));
        const FramePtr picture = pictureOf(*slate, 0);
        return std::vector<uint8_t>(picture->data[0], picture->data[0] + std::ptrdiff_t{360} * picture->linesize[0]);
    };
    EXPECT_EQ(bytes("one.mov", "gone"), bytes("one.mov", "gone"));
    EXPECT_NE(bytes("one.mov", "gone"), bytes("two.mov", "gone"));
    EXPECT_NE(bytes("one.mov", "gone"), bytes("one.mov", "lost"));
}

TEST(SlateSource, mendsSizesAndRatesThatCannotBe) {
    const auto usual = makeMissingSlate("a", "b", QSize(), Rational(0, 1));
    ASSERT_NE(usual, nullptr);
    EXPECT_EQ(usual->facts().width, 1920);
    EXPECT_EQ(usual->facts().height, 1080);
    EXPECT_EQ(usual->facts().frameRate, Rational(24, 1));
    const auto large = makeMissingSlate("a", "b", QSize(1'000'000, 1), Rational(24, 1));
    ASSERT_NE(large, nullptr);
    EXPECT_EQ(large->facts().width, maxPictureSide);
}

TEST(SlateSource, canBePaintedOnSeveralThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            const auto slate = makeMissingSlate("clip.mov", "no such file", QSize(640, 360), Rational(25, 1));
            EXPECT_GT(lightPixels(*pictureOf(*slate, 0), 0, 640), 0);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

TEST(Hole, isFramedInRedAndUsesOnlyColoursThatAreTheSameInAnyCoding) {
    const FramePtr hole = paintHole(QSize(640, 360), "missing: plate.0103.exr");
    ASSERT_NE(hole, nullptr);
    for (const auto& [x, y] : {std::pair(0, 180), std::pair(639, 180), std::pair(320, 0), std::pair(320, 359)}) {
        const Pixel edge = pixelAt(*hole, x, y);
        EXPECT_EQ(edge.red, 255) << x << "," << y;
        EXPECT_EQ(edge.green + edge.blue, 0) << x << "," << y;
    }
    EXPECT_GT(lightPixels(*hole, 0, 640), 200);
    const Pixel ground = pixelAt(*hole, 320, 60);
    EXPECT_EQ(ground.red + ground.green + ground.blue, 0);
}

}  // namespace
}  // namespace qrtplay
