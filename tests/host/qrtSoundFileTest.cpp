#include "sound/qrtSoundFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/qrtSoundClips.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(SoundFile, statesTheFactsOfItsSound) {
    const auto file = openSoundFile("surround.wav");
    ASSERT_TRUE(file);
    SoundFacts const& facts = file->facts();
    EXPECT_TRUE(facts.hasSound);
    EXPECT_EQ(facts.sampleRate, 48000);
    EXPECT_EQ(facts.channels, 6);
    EXPECT_EQ(facts.channelLayout, "5.1");
    EXPECT_EQ(facts.codecName, "pcm_s16le");
    EXPECT_EQ(facts.start(), ExactTime());
    EXPECT_EQ(facts.duration(), ExactTime(3, 1));
    EXPECT_FALSE(facts.isCutOff);
}

struct SpanCase {
    const char* name;
    int64 firstSample;
    int64 sampleCount;
};

class SoundFileSpan : public ::testing::TestWithParam<SpanCase> {};

TEST_P(SoundFileSpan, leavesOutWhatIsNotToBeHeard) {
    const auto file = openSoundFile(GetParam().name);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->facts().firstSample, GetParam().firstSample);
    EXPECT_EQ(file->facts().sampleCount, GetParam().sampleCount);
    EXPECT_FALSE(file->facts().isCutOff);
}

// 1105 samples is what an encoder and a decoder of MP3 delay together.
INSTANTIATE_TEST_SUITE_P(Files, SoundFileSpan,
                         ::testing::Values(SpanCase{"plain.mp3", 1105, 144000}, SpanCase{"plain.opus", 0, 144000},
                                           SpanCase{"opus.webm", 0, 144000}, SpanCase{"plain.ogg", 0, 144000},
                                           SpanCase{"plain.m4a", 0, 144384}, SpanCase{"edited.mp4", 0, 110784},
                                           SpanCase{"late.mkv", 24000, 144000}, SpanCase{"gap.mkv", 0, 144000}),
                         [](auto const& caseInfo) {
                             std::string name = caseInfo.param.name;
                             name.replace(name.find('.'), 1, "_");
                             return name;
                         });

TEST(SoundFile, mayHaveNoSound) {
    const auto file = openSoundFile("silent.mp4");
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->facts().hasSound);
}

TEST(SoundFile, knowsThatItIsCutOff) {
    for (const char* name : {"truncated.mp4", "truncated.wav"}) {
        const auto file = openSoundFile(name);
        ASSERT_TRUE(file);
        EXPECT_TRUE(file->facts().isCutOff) << name;
        EXPECT_LT(file->facts().sampleCount, 144000) << name;
    }
}

TEST(SoundFile, namesAFileThatIsNoMediaFile) {
    for (const char* name : {"text.wav", "empty.wav", "folder.wav", "header.wav", "nowhere.wav"}) {
        std::shared_ptr<SoundFile const> file;
        const Outcome outcome = SoundFile::open(soundClipPath(name), file);
        EXPECT_TRUE(outcome.failed()) << name;
        EXPECT_THAT(outcome.message(), StartsWith(soundClipPath(name) + ": "));
        EXPECT_FALSE(file);
    }
}

TEST(SoundFile, refusesWhatNoRecordingCanBe) {
    for (const char* name : {"endless.mkv", "channels.wav", "rate.wav"}) {
        std::shared_ptr<SoundFile const> file;
        const Outcome outcome = SoundFile::open(soundClipPath(name), file);
        EXPECT_THAT(outcome.message(), StartsWith(soundClipPath(name) + ": its sound states ")) << name;
        EXPECT_THAT(outcome.message(), HasSubstr("cannot be played")) << name;
        EXPECT_FALSE(file) << name;
    }
}

TEST(SoundFile, isNeverAnAddress) {
    std::shared_ptr<SoundFile const> file;
    EXPECT_THAT(SoundFile::open("http://localhost/plain.wav", file).message(), HasSubstr("no such file"));
    EXPECT_THAT(SoundFile::open("concat:" + soundClipPath("plain.wav"), file).message(), HasSubstr("no such file"));
}

}  // namespace
}  // namespace qrtplay
