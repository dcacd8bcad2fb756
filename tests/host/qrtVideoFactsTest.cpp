#include "media/qrtVideoFacts.h"

#include <gtest/gtest.h>

#include "host/qrtTestClips.h"

extern "C" {
#include <libavutil/display.h>
}

namespace qrtplay {
namespace {

ColourFacts bt709(AVColorSpace matrix, AVColorRange range) {
    return {matrix, range, AVCOL_PRI_BT709, AVCOL_TRC_BT709};
}

TEST(ColourFacts, areFilledInAsPlayersAgree) {
    const ColourFacts hd = completeColour({}, AV_PIX_FMT_YUV420P, 720);
    EXPECT_EQ(hd, bt709(AVCOL_SPC_BT709, AVCOL_RANGE_MPEG));
    const ColourFacts sd = completeColour({}, AV_PIX_FMT_YUV420P, 719);
    EXPECT_EQ(sd, (ColourFacts{AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG, AVCOL_PRI_SMPTE170M, AVCOL_TRC_BT709}));
    EXPECT_EQ(completeColour({}, AV_PIX_FMT_YUVJ422P, 720).range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(completeColour({}, AV_PIX_FMT_GRAY8, 720).range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(completeColour({}, AV_PIX_FMT_GBRP, 480).matrix, AVCOL_SPC_RGB);
    EXPECT_EQ(completeColour(bt709(AVCOL_SPC_RGB, AVCOL_RANGE_MPEG), AV_PIX_FMT_YUV444P, 1080).matrix, AVCOL_SPC_BT709);
}

TEST(ColourFacts, keepWhatTheStreamStates) {
    const ColourFacts stated{AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_JPEG, AVCOL_PRI_BT2020, AVCOL_TRC_SMPTE2084};
    EXPECT_EQ(completeColour(stated, AV_PIX_FMT_YUV420P10LE, 480), stated);
}

TEST(ColourFacts, takeCodedLightForWhatTheKindOfFormatUsuallyMeans) {
    EXPECT_EQ(completeColour({}, AV_PIX_FMT_YUV420P, 1080).transfer, AVCOL_TRC_BT709);
    EXPECT_EQ(completeColour({}, AV_PIX_FMT_RGB24, 1080).transfer, AVCOL_TRC_IEC61966_2_1);
    EXPECT_EQ(completeColour({}, AV_PIX_FMT_PAL8, 1080).transfer, AVCOL_TRC_IEC61966_2_1);
    EXPECT_EQ(completeColour({}, AV_PIX_FMT_GBRPF32LE, 1080).transfer, AVCOL_TRC_LINEAR);
    EXPECT_EQ(completeColour({}, AV_PIX_FMT_GRAYF32LE, 1080).transfer, AVCOL_TRC_LINEAR);
}

struct Turn {
    const char* name;
    double clockwise;
    bool isMirrored;
    int clockwiseQuarterTurns;
};
class DisplayMatrix : public ::testing::TestWithParam<Turn> {};

TEST_P(DisplayMatrix, tellsHowThePictureStandsUpright) {
    int32 matrix[9];
    av_display_rotation_set(matrix, GetParam().clockwise);
    if (GetParam().isMirrored) {  // before it is turned: what lies at x comes from -x
        matrix[0] = -matrix[0];
        matrix[1] = -matrix[1];
    }
    VideoFacts facts;
    readDisplayMatrix(matrix, facts);
    EXPECT_EQ(facts.clockwiseQuarterTurns, GetParam().clockwiseQuarterTurns);
    EXPECT_EQ(facts.isFlippedHorizontally, GetParam().isMirrored);
}

INSTANTIATE_TEST_SUITE_P(Turns, DisplayMatrix,
                         ::testing::Values(Turn{"upright", 0, false, 0}, Turn{"clockwise", 90, false, 1},
                                           Turn{"upsideDown", 180, false, 2}, Turn{"counterClockwise", -90, false, 3},
                                           Turn{"almostClockwise", 85, false, 1}, Turn{"mirrored", 0, true, 0},
                                           Turn{"mirroredAndTurned", 90, true, 1},
                                           Turn{"mirroredUpsideDown", 180, true, 2}),
                         [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(DisplayMatrixOfNothing, leavesThePictureAsItIs) {
    const int32 matrix[9] = {};
    VideoFacts facts;
    readDisplayMatrix(matrix, facts);
    EXPECT_EQ(facts.clockwiseQuarterTurns, 0);
    EXPECT_FALSE(facts.isFlippedHorizontally);
}

TEST(VideoFacts, stateRateSizeAndAspectOfTheClip) {
    const OpenClip ntsc("ntsc.mov");
    EXPECT_EQ(ntsc.facts().frameRate, Rational(30000, 1001));
    EXPECT_EQ(ntsc.facts().width, 160);
    EXPECT_EQ(ntsc.facts().height, 96);
    EXPECT_EQ(ntsc.facts().sampleAspect, Rational(1, 1));
    EXPECT_EQ(OpenClip("anamorphic.mp4").facts().sampleAspect, Rational(2, 1));
    EXPECT_EQ(OpenClip("tenbit.mkv").facts().pixelFormat, AV_PIX_FMT_YUV420P10LE);
}

TEST(VideoFacts, stateTheColoursThatTheStreamStates) {
    EXPECT_EQ(OpenClip("bt709.mp4").facts().colour, bt709(AVCOL_SPC_BT709, AVCOL_RANGE_MPEG));
    EXPECT_EQ(OpenClip("bt601.mp4").facts().colour, bt709(AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG));
    EXPECT_EQ(OpenClip("bt2020.mp4").facts().colour, bt709(AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG));
    EXPECT_EQ(OpenClip("full.mp4").facts().colour, bt709(AVCOL_SPC_BT709, AVCOL_RANGE_JPEG));
}

TEST(VideoFacts, stateHowTheClipIsTurned) {
    const OpenClip turned("turned.mov");
    EXPECT_EQ(turned.facts().clockwiseQuarterTurns, 1);
    EXPECT_FALSE(turned.facts().isFlippedHorizontally);
    EXPECT_EQ(turned.facts().width, 160) << "as stored";
    EXPECT_EQ(OpenClip("bframes.mp4").facts().clockwiseQuarterTurns, 0);
}

TEST(VideoFacts, stateTheOrderOfTheFields) {
    EXPECT_EQ(OpenClip("bframes.mp4").facts().fieldOrder, AV_FIELD_PROGRESSIVE);
    EXPECT_EQ(OpenClip("interlaced.ts").facts().fieldOrder, AV_FIELD_TT);
    EXPECT_EQ(OpenClip("fields.mov").facts().fieldOrder, AV_FIELD_BB);
}

TEST(VideoFacts, stateWhenFrameZeroIsShown) {
    EXPECT_EQ(OpenClip("bframes.mp4").facts().startTime, ExactTime());
    EXPECT_EQ(OpenClip("offset.mkv").facts().startTime, ExactTime(5, 1));
    // The edit begins with frame 17 of the original clip, which the file counts as its beginning.
    EXPECT_EQ(OpenClip("edited.mp4").facts().startTime, ExactTime());
}

TEST(VideoFacts, stateTheAverageOfAVaryingRate) {
    const OpenClip varying("varying.mkv");
    EXPECT_EQ(varying.facts().frameCount, 32);
    EXPECT_GT(varying.facts().frameRate.getValue(), 15);
    EXPECT_LE(varying.facts().frameRate.getValue(), 24);
}

}  // namespace
}  // namespace qrtplay
