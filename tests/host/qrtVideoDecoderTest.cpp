#include "media/qrtVideoDecoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <numeric>
#include <random>

#include "host/qrtTestClips.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

struct NumberedClip {
    const char* name;
    const char* file;
    int64 frames;
};

/// Every frame of a clip equals FFmpeg's own decode of that number, whatever the order of asking.
class FrameNumbers : public ::testing::TestWithParam<NumberedClip> {
protected:
    FrameNumbers()
        : clip(GetParam().file),
          reference(GetParam().file, clip.facts().pixelFormat, clip.facts().width, clip.facts().height) {}

    void expectFrames(std::vector<int64> const& numbers) {
        for (const int64 number : numbers) {
            ASSERT_TRUE(clip.bytes(number) == reference.frame(number)) << GetParam().file << " frame " << number;
        }
    }
    std::vector<int64> allFrames() const {
        std::vector<int64> numbers(static_cast<size_t>(clip.facts().frameCount));
        std::iota(numbers.begin(), numbers.end(), 0);
        return numbers;
    }

    OpenClip clip;
    ReferenceFrames reference;
};

TEST_P(FrameNumbers, areAsManyAsFFmpegDecodes) {
    EXPECT_EQ(clip.facts().frameCount, GetParam().frames);
    EXPECT_EQ(reference.count(), GetParam().frames);
}

TEST_P(FrameNumbers, areExactForwards) {
    expectFrames(allFrames());
}

TEST_P(FrameNumbers, areExactBackwardsWithoutRoomToCache) {
    clip.decoder->cache().setBudget(0);
    std::vector<int64> numbers = allFrames();
    std::reverse(numbers.begin(), numbers.end());
    expectFrames(numbers);
}

TEST_P(FrameNumbers, areExactInRandomOrder) {
    constexpr unsigned seed = 81;
    std::mt19937 random(seed);
    std::vector<int64> numbers = allFrames();
    std::shuffle(numbers.begin(), numbers.end(), random);
    expectFrames(numbers);
}

TEST_P(FrameNumbers, areExactAtEveryFirstCall) {
    for (int64 number = 0; number < clip.facts().frameCount; number += 5) {
        OpenClip fresh(GetParam().file);
        EXPECT_TRUE(fresh.bytes(number) == reference.frame(number)) << GetParam().file << " frame " << number;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Clips, FrameNumbers,
    ::testing::Values(NumberedClip{"withBFrames", "bframes.mp4", 48}, NumberedClip{"withOpenGroups", "opengop.mp4", 48},
                      NumberedClip{"refreshedBitByBit", "refresh.mkv", 48},
                      NumberedClip{"beginningAtFiveSeconds", "offset.mkv", 48},
                      NumberedClip{"ofATransportStream", "transport.ts", 48},
                      NumberedClip{"ofAnInterlacedTransportStream", "interlaced.ts", 48},
                      NumberedClip{"withoutTimestamps", "elementary.h264", 48},
                      NumberedClip{"withFewTimestamps", "packed.avi", 48},
                      NumberedClip{"ofAProgrammeStream", "programme.mpg", 48},
                      NumberedClip{"behindAnEditList", "edited.mp4", 31},
                      NumberedClip{"recordedFromTheMiddleOn", "joined.ts", 24},
                      NumberedClip{"withTenBits", "tenbit.mkv", 48}, NumberedClip{"atNtscRate", "ntsc.mov", 30},
                      NumberedClip{"ofOddSize", "odd.mkv", 10}),
    [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(VideoDecoder, statesRateSizeAndAspectOfTheClip) {
    OpenClip ntsc("ntsc.mov");
    EXPECT_EQ(ntsc.facts().frameRate, Rational(30000, 1001));
    EXPECT_EQ(ntsc.facts().width, 160);
    EXPECT_EQ(ntsc.facts().height, 96);
    EXPECT_EQ(ntsc.facts().sampleAspect, Rational(1, 1));
    EXPECT_EQ(OpenClip("anamorphic.mp4").facts().sampleAspect, Rational(2, 1));
    EXPECT_EQ(OpenClip("tenbit.mkv").facts().pixelFormat, AV_PIX_FMT_YUV420P10LE);
}

TEST(VideoDecoder, statesTheColoursThatTheStreamStates) {
    EXPECT_EQ(OpenClip("bt709.mp4").facts().colour, (ColourFacts{AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, AVCOL_PRI_BT709}));
    EXPECT_EQ(OpenClip("bt601.mp4").facts().colour,
              (ColourFacts{AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG, AVCOL_PRI_BT709}));
    EXPECT_EQ(OpenClip("bt2020.mp4").facts().colour,
              (ColourFacts{AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, AVCOL_PRI_BT709}));
    EXPECT_EQ(OpenClip("full.mp4").facts().colour, (ColourFacts{AVCOL_SPC_BT709, AVCOL_RANGE_JPEG, AVCOL_PRI_BT709}));
}

TEST(VideoDecoder, refusesFramesOutsideTheClip) {
    OpenClip clip("bframes.mp4");
    for (const int64 frame : {int64{-1}, int64{48}, INT64_MIN, INT64_MAX}) {
        FramePtr picture;
        const Outcome outcome = clip.decoder->frame(frame, picture);
        EXPECT_TRUE(outcome.failed()) << frame;
        EXPECT_EQ(picture, nullptr);
        EXPECT_THAT(outcome.message(), HasSubstr("frame " + std::to_string(frame) + ": outside the clip"));
    }
}

TEST(VideoDecoder, playsBackwardsFromWhatItHasDecodedBefore) {
    OpenClip clip("bframes.mp4");
    (void)clip.bytes(23);  // the last frame of its group, which begins with 12
    const std::vector<int64> cached = clip.decoder->cache().frames();
    for (int64 frame = 12; frame <= 23; ++frame) EXPECT_THAT(cached, ::testing::Contains(frame));
}

/// A clip of which some frames are lost.
struct DamagedClip {
    const char* name;
    const char* file;
    const char* whole;  ///< the same clip before the damage
    int64 frames;
    int64 atLeast;  ///< frames that have to be decoded
    int64 atMost;
};
class DamagedClips : public ::testing::TestWithParam<DamagedClip> {};

TEST_P(DamagedClips, deliverWhatCanBeDecodedAndNameTheRest) {
    OpenClip clip(GetParam().file);
    const ReferenceFrames whole(GetParam().whole, clip.facts().pixelFormat, clip.facts().width, clip.facts().height);
    ASSERT_EQ(clip.facts().frameCount, GetParam().frames);
    int64 decoded = 0;
    for (int64 frame = 0; frame < clip.facts().frameCount; ++frame) {
        FramePtr picture;
        const Outcome outcome = clip.decoder->frame(frame, picture);
        if (outcome.success()) {
            ++decoded;
            EXPECT_TRUE(bytesOf(*picture) == whole.frame(frame)) << "frame " << frame << " is another picture";
        } else {
            EXPECT_EQ(picture, nullptr);
            EXPECT_THAT(outcome.message(), HasSubstr(": frame " + std::to_string(frame) + ": "));
        }
    }
    EXPECT_GE(decoded, GetParam().atLeast);
    EXPECT_LE(decoded, GetParam().atMost);
}

INSTANTIATE_TEST_SUITE_P(Files, DamagedClips,
                         ::testing::Values(DamagedClip{"cutOff", "truncated.mp4", "bframes.mp4", 48, 24, 24},
                                           DamagedClip{"cutOffTransportStream", "truncated.ts", "transport.ts", 29, 25, 27},
                                           DamagedClip{"damagedInTheMiddle", "damaged.mp4", "bframes.mp4", 48, 36, 47}),
                         [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(VideoDecoder, neverShowsADamagedKeyPictureOrWhatFollowsFromIt) {
    // Overwrites the middle of the key picture of the second group and expects nothing of the group but the failure.
    OpenClip sound("bframes.mp4");
    const ReferenceFrames whole("bframes.mp4", AV_PIX_FMT_YUV420P, 160, 96);
    std::unique_ptr<Demuxer> demuxer;
    ASSERT_TRUE(Demuxer::open(clipPath("bframes.mp4"), demuxer).success());
    AvPtr<AVPacket> packet(av_packet_alloc());
    for (int number = 0; number <= 12; ++number) ASSERT_EQ(demuxer->read(*packet), Demuxer::ReadResult::packet);
    ASSERT_NE(packet->flags & AV_PKT_FLAG_KEY, 0);

    std::ifstream source(clipPath("bframes.mp4"), std::ios::binary);
    std::vector<char> bytes(std::istreambuf_iterator<char>(source), {});
    const auto middle = bytes.begin() + static_cast<std::ptrdiff_t>(packet->pos) + packet->size / 2;
    std::fill(middle, middle + 40, '\x5a');
    const std::string path = ::testing::TempDir() + "qrtplay-damaged-key.mp4";
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));

    std::shared_ptr<MediaFile const> file;
    std::unique_ptr<VideoDecoder> decoder;
    ASSERT_TRUE(MediaFile::open(path, file).success());
    ASSERT_TRUE(VideoDecoder::open(file, decoder).success());
    for (int64 frame = 0; frame < 48; ++frame) {
        FramePtr picture;
        const Outcome outcome = decoder->frame(frame, picture);
        const bool isLost = frame >= 12 && frame < 24;
        EXPECT_EQ(outcome.failed(), isLost) << frame;
        if (outcome.success()) {
            EXPECT_TRUE(bytesOf(*picture) == whole.frame(frame)) << frame;
        }
    }
    std::remove(path.c_str());
}

struct BadFile {
    const char* name;
    const char* file;
    const char* message;
};
class BadFiles : public ::testing::TestWithParam<BadFile> {};

TEST_P(BadFiles, areRefusedWithALineThatNamesThem) {
    std::shared_ptr<MediaFile const> file;
    const Outcome outcome = MediaFile::open(clipPath(GetParam().file), file);
    EXPECT_TRUE(outcome.failed());
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(outcome.message(), clipPath(GetParam().file) + ": " + GetParam().message);
}

constexpr char noMedia[] = "is no media file, or has lost the part that describes it";
INSTANTIATE_TEST_SUITE_P(
    Files, BadFiles,
    ::testing::Values(BadFile{"missing", "no-such.mp4", "no such file"},
                      BadFile{"folder", "folder.mp4", "is a folder, not a media file"},
                      BadFile{"empty", "empty.mp4", noMedia}, BadFile{"textNamedAsAFilm", "text.mp4", noMedia},
                      BadFile{"text", "text.txt", noMedia}, BadFile{"cutOffBeforeItsIndex", "headless.mp4", noMedia},
                      BadFile{"onlySound", "audio.m4a", "has no video"},
                      BadFile{"onlyACoverPicture", "cover.m4a", "has no video, only a cover picture"}),
    [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(MediaFile, opensOnlyRegularFilesWhateverTheirNameLooksLike) {
    for (const char* const name : {"http://localhost/clip.mp4", "concat:a|b", "pipe:0", "-", "/dev/zero", ""}) {
        std::shared_ptr<MediaFile const> file;
        EXPECT_TRUE(MediaFile::open(name, file).failed()) << name;
    }
}

TEST(MediaFile, opensNamesWithSpacesAndSigns) {
    EXPECT_EQ(OpenClip("a name with spaces, 100% and #.mp4").facts().frameCount, 48);
}

}  // namespace
}  // namespace qrtplay
