#include "media/qrtVideoDecoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <random>
#include <utility>

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
    std::vector<int64> allFrames() const { return everyFrame(1); }
    /// All frames of a short clip, and some of a long one, each of which may mean to decode a long group.
    std::vector<int64> someFrames() const { return everyFrame(1 + clip.facts().frameCount / 50); }
    std::vector<int64> everyFrame(int64 step) const {
        std::vector<int64> numbers;
        for (int64 number = 0; number < clip.facts().frameCount; number += step)
            numbers.push_back(number);
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

TEST_P(FrameNumbers, areExactBackwards) {
    std::vector<int64> numbers = someFrames();
    std::reverse(numbers.begin(), numbers.end());
    expectFrames(numbers);
}

TEST_P(FrameNumbers, areExactInRandomOrder) {
    constexpr unsigned seed = 81;
    std::mt19937 random(seed);
    std::vector<int64> numbers = someFrames();
    std::shuffle(numbers.begin(), numbers.end(), random);
    expectFrames(numbers);
}

TEST_P(FrameNumbers, areExactAtEveryFirstCall) {
    for (const int64 number : everyFrame(5 + clip.facts().frameCount / 10)) {
        OpenClip fresh(GetParam().file);
        EXPECT_TRUE(fresh.bytes(number) == reference.frame(number)) << GetParam().file << " frame " << number;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Clips, FrameNumbers,
    ::testing::Values(
        NumberedClip{"withBFrames", "bframes.mp4", 48}, NumberedClip{"withOpenGroups", "opengop.mp4", 48},
        NumberedClip{"refreshedBitByBit", "refresh.mkv", 48}, NumberedClip{"beginningAtFiveSeconds", "offset.mkv", 48},
        NumberedClip{"ofATransportStream", "transport.ts", 48},
        NumberedClip{"ofAnInterlacedTransportStream", "interlaced.ts", 48},
        NumberedClip{"withoutTimestamps", "elementary.h264", 48}, NumberedClip{"withFewTimestamps", "packed.avi", 48},
        NumberedClip{"ofAProgrammeStream", "programme.mpg", 48}, NumberedClip{"behindAnEditList", "edited.mp4", 31},
        NumberedClip{"recordedFromTheMiddleOn", "joined.ts", 24}, NumberedClip{"withTenBits", "tenbit.mkv", 48},
        NumberedClip{"atNtscRate", "ntsc.mov", 30}, NumberedClip{"ofOddSize", "odd.mkv", 10},
        NumberedClip{"inOneLongGroup", "longgroup.mp4", 260}, NumberedClip{"withLongOpenGroups", "longopen.mp4", 130},
        NumberedClip{"ofHevc", "hevc.mp4", 48}, NumberedClip{"ofHevcWithOpenGroups", "hevcopen.mkv", 48},
        NumberedClip{"ofProRes", "prores.mov", 12}, NumberedClip{"ofMotionJpeg", "motionjpeg.avi", 24},
        NumberedClip{"ofVp9WithHiddenFrames", "vp9.webm", 48}, NumberedClip{"ofDnxhd", "dnxhd.mxf", 6},
        NumberedClip{"atVaryingRate", "varying.mkv", 32}, NumberedClip{"turned", "turned.mov", 48},
        NumberedClip{"interlacedInTwoFieldsAFrame", "fields.mov", 24}),
    [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(VideoDecoder, refusesFramesOutsideTheClip) {
    OpenClip clip("bframes.mp4");
    for (const int64 frame : {int64{-1}, int64{48}, INT64_MIN, INT64_MAX}) {
        FramePtr picture;
        const Outcome outcome = clip.picture(frame, picture);
        EXPECT_TRUE(outcome.failed()) << frame;
        EXPECT_EQ(picture, nullptr);
        EXPECT_THAT(outcome.message(), HasSubstr("frame " + std::to_string(frame) + ": outside the clip"));
    }
}

TEST(VideoDecoder, tellsOfThePicturesThatItComesBy) {
    OpenClip clip("bframes.mp4");
    const ReferenceFrames reference("bframes.mp4", AV_PIX_FMT_YUV420P, 160, 96);
    (void)clip.bytes(23);  // the last frame of its group, which begins with 12
    for (int64 frame = 12; frame <= 23; ++frame) {
        ASSERT_NE(clip.passed[frame], nullptr) << frame;
        EXPECT_TRUE(bytesOf(*clip.passed[frame]) == reference.frame(frame)) << frame;
    }
}

TEST(VideoDecoder, leavesOutWhatNobodyWantsOnTheWay) {
    OpenClip clip("bframes.mp4");
    const ReferenceFrames reference("bframes.mp4", AV_PIX_FMT_YUV420P, 160, 96);
    for (const int64 wanted : {23, 22, 21, 35, 30, 47, 46, 13}) {
        std::map<int64, FramePtr> passed;
        const auto keep = [&](int64 frame, FramePtr const& picture) { passed[frame] = picture; };
        FramePtr picture;
        std::string why;
        ASSERT_EQ(clip.decoder->frame(
                      wanted, keep, [=](int64 frame) { return frame == wanted; }, picture, why),
                  PictureSource::Result::picture)
            << why;
        for (auto const& [frame, each] : passed)
            EXPECT_TRUE(bytesOf(*each) == reference.frame(frame)) << frame;
        if (wanted == 23) {
            EXPECT_LT(passed.size(), 12u) << "all frames of the group were decoded";
        }
    }
}

TEST(VideoDecoder, goesBackToWhatItHasLeftOut) {
    OpenClip clip("longgroup.mp4");
    const ReferenceFrames reference("longgroup.mp4", clip.facts().pixelFormat, clip.facts().width, clip.facts().height);
    FramePtr picture;
    std::string why;
    const auto keep = [](int64, FramePtr const&) {};
    bool isWanted = true;
    const auto isWantedOnce = [&](int64 frame) { return frame == 200 && std::exchange(isWanted, false); };
    EXPECT_EQ(clip.decoder->frame(200, keep, isWantedOnce, picture, why), PictureSource::Result::given_up);
    for (const int64 frame : {1, 2, 3, 4})
        EXPECT_TRUE(clip.bytes(frame) == reference.frame(frame)) << frame;
}

TEST(VideoDecoder, tellsWhereDecodingBegins) {
    const OpenClip clip("bframes.mp4");
    EXPECT_EQ(clip.decoder->runBegin(12), 12);
    EXPECT_EQ(clip.decoder->runBegin(23), 12);
    EXPECT_EQ(clip.decoder->runBegin(-1), -1);
    EXPECT_EQ(clip.decoder->runBegin(48), 48);
    EXPECT_EQ(OpenClip("motionjpeg.avi").decoder->runBegin(7), 7);
    EXPECT_EQ(OpenClip("elementary.h264").decoder->runBegin(40), 0);
}

/// Decodes `frame` but gives up after each picture, as often as it takes; counts the pictures that came out on the way.
int64 decodeInSteps(VideoDecoder& decoder, int64 frame, FramePtr& picture) {
    int64 passed = 0;
    std::string why;
    for (;;) {
        bool isWanted = true;
        const auto keep = [&](int64, FramePtr const&) {
            ++passed;
            isWanted = false;
        };
        const auto result = decoder.frame(
            frame, keep, [&](int64) { return isWanted; }, picture, why);
        if (result == PictureSource::Result::picture) return passed;
        EXPECT_EQ(result, PictureSource::Result::given_up) << why;
        EXPECT_EQ(picture, nullptr);
        if (result == PictureSource::Result::failure) return passed;
    }
}

TEST(VideoDecoder, goesOnWhereItWasMadeToGiveUp) {
    for (const char* const name : {"bframes.mp4", "longgroup.mp4"}) {
        OpenClip clip(name);
        const ReferenceFrames reference(name, AV_PIX_FMT_YUV420P, 160, 96);
        FramePtr picture;
        const int64 passed = decodeInSteps(*clip.decoder, 40, picture);
        ASSERT_NE(picture, nullptr);
        EXPECT_TRUE(bytesOf(*picture) == reference.frame(40)) << name;
        EXPECT_LE(passed, 40 + 8 - clip.decoder->runBegin(40)) << name << " started over";
    }
}

TEST(VideoDecoder, doesNotTakeGivingUpForAFailure) {
    OpenClip clip("bframes.mp4");
    FramePtr picture;
    std::string why;
    const auto keep = [](int64, FramePtr const&) {};
    EXPECT_EQ(clip.decoder->frame(
                  20, keep, [](int64) { return false; }, picture, why),
              PictureSource::Result::given_up);
    EXPECT_EQ(picture, nullptr);
    EXPECT_FALSE(clip.bytes(20).empty());
}

TEST(VideoDecoder, worksBesideItsTwinAndAfterARest) {
    OpenClip clip("bframes.mp4");
    const ReferenceFrames reference("bframes.mp4", AV_PIX_FMT_YUV420P, 160, 96);
    OpenClip other("bframes.mp4");
    const std::unique_ptr<PictureSource> twin = clip.decoder->twin();
    ASSERT_NE(twin, nullptr);
    EXPECT_EQ(twin->path(), clip.decoder->path());
    for (const int64 step : {0, 1, 2, 3}) {
        FramePtr picture;
        std::string why;
        const auto keep = [](int64, FramePtr const&) {};
        EXPECT_EQ(twin->frame(
                      30 + step, keep, [](int64) { return true; }, picture, why),
                  PictureSource::Result::picture)
            << why;
        ASSERT_NE(picture, nullptr);
        EXPECT_TRUE(bytesOf(*picture) == reference.frame(30 + step));
        EXPECT_TRUE(clip.bytes(5 + step) == reference.frame(5 + step));
        clip.decoder->rest();
    }
}

TEST(VideoDecoder, decodesGoingForwardEachFrameOnceThoughNobodyKeepsWhatItTellsOf) {
    OpenClip clip("longgroup.mp4");
    int64 told = 0;
    for (int64 frame = 0; frame < 48; ++frame) {
        (void)clip.bytes(frame);
        told += static_cast<int64>(clip.passed.size());
    }
    EXPECT_LE(told, 2 * 48) << "pictures that lay ahead were decoded again";
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
        const Outcome outcome = clip.picture(frame, picture);
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
                                           DamagedClip{"cutOffTransportStream", "truncated.ts", "transport.ts", 29, 25,
                                                       27},
                                           DamagedClip{"damagedInTheMiddle", "damaged.mp4", "bframes.mp4", 48, 36, 47}),
                         [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(VideoDecoder, neverShowsADamagedKeyPictureOrWhatFollowsFromIt) {
    // Overwrites the middle of the key picture of the second group and expects nothing of the group but the failure.
    OpenClip sound("bframes.mp4");
    const ReferenceFrames whole("bframes.mp4", AV_PIX_FMT_YUV420P, 160, 96);
    std::unique_ptr<Demuxer> demuxer;
    ASSERT_TRUE(Demuxer::open(clipPath("bframes.mp4"), demuxer).success());
    AvPtr<AVPacket> packet(av_packet_alloc());
    for (int number = 0; number <= 12; ++number)
        ASSERT_EQ(demuxer->read(*packet), Demuxer::ReadResult::packet);
    ASSERT_NE(packet->flags & AV_PKT_FLAG_KEY, 0);

    std::ifstream source(clipPath("bframes.mp4"), std::ios::binary);
    std::vector<char> bytes(std::istreambuf_iterator<char>(source), {});
    const auto middle = bytes.begin() + static_cast<std::ptrdiff_t>(packet->pos) + packet->size / 2;
    std::fill(middle, middle + 40, '\x5a');
    const std::string path = ::testing::TempDir() + "qrtplay-damaged-key.mp4";
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));

    OpenClip damaged = OpenClip::at(path);
    for (int64 frame = 0; frame < 48; ++frame) {
        FramePtr picture;
        const Outcome outcome = damaged.picture(frame, picture);
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
