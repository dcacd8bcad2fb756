// The production loop step by step: which frame is next, what a step posts, and what moves the current frame.
#include <gmock/gmock.h>

#include "foundation/core/qrtAudioFormatInterface.h"
#include "harness/qrtForeignRecord.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtOtherCommand.h"
#include "harness/qrtPlayerImplFixture.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int64 noFrame = -1;

class StereoFormat final : public AudioFormatInterface {
public:
    [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override { return sampleFrames * 4; }
    [[nodiscard]] int32 getSampleRate() const override { return 48000; }
};

}  // namespace

class PlayerImplLoop : public PlayerImplFixture {
protected:
    Status step() { return Inspector::produceNextVideoBuffer(*engine); }
    int64 next() { return Inspector::nextFrameToProduce(*engine); }
    Status moveTo(int64 frame) { return Inspector::updateCurrentFrameNumber(*engine, frame); }
};

// ---- Steps ----------------------------------------------------------------------------------------------------------

TEST_F(PlayerImplLoop, withoutARunNoFrameIsNextAndAStepDoesNothing) {
    EXPECT_EQ(next(), noFrame);
    EXPECT_EQ(step().get(), Status::ok);
    EXPECT_THAT(posted(), IsEmpty());
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{});
}

TEST_F(PlayerImplLoop, aStepRendersOneFrameAndPostsItsSuccessorBehindWhatWaits) {
    startRun(params(5, 0, 50));
    queue().pushBack(std::make_unique<OtherCommand>());
    EXPECT_EQ(step().get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{5});
    EXPECT_THAT(posted(), ElementsAre(CmdType::get_pref, CmdType::produce_next_video_buffer));
}

TEST_F(PlayerImplLoop, aStepThatFindsTheWholeWindowCachedPostsNothing) {
    startRun(params(5, 0, 50));
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(step().get(), Status::ok);
    (void)posted();
    EXPECT_EQ(next(), noFrame);
    EXPECT_EQ(step().get(), Status::ok);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(PlayerImplLoop, aRunWithMoreFramesBehindThanTheLastOneFindsThoseThatItLetGo) {
    startRun(params(5, 0, 50));
    while (next() != noFrame)
        ASSERT_EQ(step().get(), Status::ok);
    ASSERT_EQ(moveTo(6).get(), Status::ok);
    ASSERT_EQ(Inspector::cacheTryEvictOne(*engine), 1u) << "5 is behind";
    while (next() != noFrame)
        ASSERT_EQ(step().get(), Status::ok);
    ASSERT_EQ(Inspector::stopProducing(*engine).get(), Status::ok);
    ASSERT_EQ(engine->setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, 1).get(), Status::ok);
    startRun(params(6, 0, 50));
    EXPECT_EQ(next(), 5);
}

TEST_F(PlayerImplLoop, stepsTooManyRenderNoFrameTwice) {
    startRun(params(5, 0, 50));
    for (int i = 0; i < 10; ++i)
        ASSERT_EQ(step().get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), (Frames{5, 6, 7}));
}

TEST_F(PlayerImplLoop, aStepThatFailsAnswersWithItsStatusPostsNothingAndTheRunGoesOn) {
    setFramebuffers(1);  // which is kept for a host that waits
    startRun(params(5, 0, 50));
    const LogCapture log;
    EXPECT_EQ(step().get(), 260);
    EXPECT_THAT(log.lines(), ElementsAre("Stop producing because status failure = 260"));
    EXPECT_THAT(posted(), IsEmpty());
    EXPECT_TRUE(Inspector::isProducing(*engine));
    EXPECT_EQ(next(), 5);
}

TEST_F(PlayerImplLoop, aStepLeftOverFromAStoppedRunDoesNothing) {
    startRun(params(5, 0, 50));
    ASSERT_EQ(Inspector::stopProducing(*engine).get(), Status::ok);
    EXPECT_EQ(step().get(), Status::ok);
    EXPECT_THAT(posted(), IsEmpty());
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{});
}

TEST_F(PlayerImplLoop, aRecordThatIsNoFrameCountsAsNotCached) {
    startRun(params(5, 0, 50));
    ASSERT_EQ(Inspector::cache(*engine).put("5", SharedPtr<CacheData>(new ForeignRecord)).get(), Status::ok);
    EXPECT_EQ(next(), 5);
    ASSERT_EQ(step().get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(Inspector::cacheGet(*engine, 5, buffer).get(), Status::ok) << "the frame has taken the record's place";
    EXPECT_EQ(next(), 6);
}

TEST_F(PlayerImplLoop, negativeCountsMeanNoHeadAndNoTail) {
    startRun(params(5, 0, 50));
    Inspector::setFrameCounts(*engine, -3, -1);
    EXPECT_EQ(next(), 5);
    ASSERT_EQ(step().get(), Status::ok);
    EXPECT_EQ(next(), noFrame);
}

TEST_F(PlayerImplLoop, theFrameMinusOneIsTakenForNone) {
    const auto run = params(0, -9, 9);
    run->setCurrentFrame(-1);
    startRun(run);
    EXPECT_EQ(step().get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), Frames{});
    EXPECT_THAT(posted(), IsEmpty());
}

// ---- Start and stop -------------------------------------------------------------------------------------------------

TEST_F(PlayerImplLoop, startingPostsTheFirstStepAndBeforeItThePositioningOfTheSoundIfThereIsAny) {
    using Mode = PlayParams::ProductionMode;
    const auto postedByAStart = [this](Mode mode) {
        const auto run = params(5, 0, 50);
        run->setProductionMode(mode);
        EXPECT_EQ(Inspector::startProducing(*engine, run).get(), Status::ok);
        EXPECT_EQ(Inspector::stopProducing(*engine).get(), Status::ok);
        return posted();
    };
    EXPECT_THAT(postedByAStart(PlayParams::all), ElementsAre(CmdType::produce_next_video_buffer)) << "no format";
    ASSERT_EQ(engine->setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new StereoFormat)).get(), Status::ok);
    EXPECT_THAT(postedByAStart(PlayParams::video_only), ElementsAre(CmdType::produce_next_video_buffer));
    for (const Mode mode : {PlayParams::audio_only, PlayParams::all}) {
        EXPECT_THAT(postedByAStart(mode),
                    ElementsAre(CmdType::start_producing_audio, CmdType::produce_next_video_buffer));
    }
    EXPECT_EQ(static_cast<int>(CmdType::start_producing_audio), 13);
}

TEST_F(PlayerImplLoop, soundIsPositionedOnlyIfTheRunStillHasSomeWhenItsTurnComes) {
    ASSERT_EQ(engine->setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new StereoFormat)).get(), Status::ok);
    startRun(params(24, 0, 50));
    EXPECT_EQ(Inspector::startProducingAudio(*engine).get(), Status::ok);
    EXPECT_THAT(FakeGraphEngine::journal(), IsEmpty());
    Inspector::playParams(*engine).setProductionMode(PlayParams::audio_only);
    EXPECT_EQ(Inspector::startProducingAudio(*engine).get(), Status::ok);
    EXPECT_THAT(FakeGraphEngine::journal(), ElementsAre("fillAudio format 4 at 48000"));
}

TEST_F(PlayerImplLoop, theAdvisorOfEvictionIsThereForTheLengthOfARun) {
    const auto evictAdvised = [this] {
        size_t numEvicted = 0;
        EXPECT_EQ(Inspector::cache(*engine).evict(evict_one, evict_advised, numEvicted).get(), Status::ok);
        return numEvicted;
    };
    for (const int64 frame : {60, 61, 62})
        (void)produce(frame);
    EXPECT_EQ(evictAdvised(), 0u);
    startRun(params(5, 0, 50));
    EXPECT_EQ(evictAdvised(), 1u);
    ASSERT_EQ(Inspector::stopProducing(*engine).get(), Status::ok);
    EXPECT_EQ(evictAdvised(), 0u);
    EXPECT_TRUE(isCached(62)) << "stopping keeps the frames";
}

TEST_F(PlayerImplLoop, evictionKeepsTheCountsOfTheStartThoughTheLoopFollowsANewOneAtOnce) {
    Inspector::setFrameCounts(*engine, 1, 0);
    startRun(params(5, 0, 50));
    Inspector::setFrameCounts(*engine, 2, 0);
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(step().get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), (Frames{5, 6, 7}));
    EXPECT_EQ(Inspector::cacheTryEvictOne(*engine), 1u);
    EXPECT_FALSE(isCached(7));
    EXPECT_EQ(Inspector::cacheTryEvictOne(*engine), 0u);
}

TEST_F(PlayerImplLoop, evictionFollowsTheCurrentFrame) {
    startRun(params(5, 0, 50));
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(step().get(), Status::ok);
    ASSERT_EQ(moveTo(7).get(), Status::ok);
    EXPECT_EQ(Inspector::cacheTryEvictOne(*engine), 1u);
    EXPECT_EQ(Inspector::cacheTryEvictOne(*engine), 1u);
    EXPECT_EQ(Inspector::cacheTryEvictOne(*engine), 0u);
    EXPECT_TRUE(isCached(7));
}

// ---- The current frame ----------------------------------------------------------------------------------------------

TEST_F(PlayerImplLoop, theCurrentFrameMovesToBothEndsOfTheRangeAndRestartsTheLoop) {
    startRun(params(5, 3, 50));
    for (const int64 frame : {3, 50, 20}) {
        queue().pushBack(std::make_unique<OtherCommand>());
        EXPECT_EQ(moveTo(frame).get(), Status::ok);
        EXPECT_EQ(currentFrame(), frame);
        EXPECT_THAT(posted(), ElementsAre(CmdType::get_pref, CmdType::produce_next_video_buffer));
    }
    EXPECT_THAT(FakeGraphEngine::journal(), IsEmpty()) << "the step is the graph engine's already";
}

TEST_F(PlayerImplLoop, theCurrentFrameDoesNotLeaveTheRange) {
    startRun(params(5, 3, 50));
    for (const int64 frame : {2, 51, -5}) {
        EXPECT_EQ(moveTo(frame).get(), Status::ok);
        EXPECT_EQ(currentFrame(), 5);
        EXPECT_THAT(posted(), IsEmpty());
    }
}

TEST_F(PlayerImplLoop, theCurrentFrameStaysWithoutARun) {
    startRun(params(5, 0, 50));
    ASSERT_EQ(Inspector::stopProducing(*engine).get(), Status::ok);
    EXPECT_EQ(moveTo(7).get(), Status::ok);
    EXPECT_EQ(currentFrame(), 5);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(PlayerImplLoop, aMoveThatTurnsPlaybackRoundTellsTheGraphEngineItsStep) {
    startRun(params(10, 0, 50, PlayParams::ping_pong));
    EXPECT_EQ(moveTo(4).get(), Status::ok);
    EXPECT_EQ(moveTo(3).get(), Status::ok);
    EXPECT_THAT(FakeGraphEngine::journal(), ElementsAre("setStep -1")) << "once: then the two agree";
    EXPECT_THAT(posted(), ElementsAre(CmdType::produce_next_video_buffer, CmdType::produce_next_video_buffer));
}

TEST_F(PlayerImplLoop, aStepThatTheGraphEngineRefusesIsReturnedAndTheLoopNotRestarted) {
    startRun(params(10, 0, 50, PlayParams::ping_pong));
    FakeGraphEngine::answer("setStep", 778);
    EXPECT_EQ(moveTo(4).get(), 778);
    EXPECT_EQ(currentFrame(), 4);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(PlayerImplLoop, aMoveThatFailsIsReturnedAndNothingElseHappens) {
    startRun(params(10, 0, 50, static_cast<PlayParams::PlayMode>(9)));
    EXPECT_EQ(moveTo(4).get(), 258);
    EXPECT_EQ(currentFrame(), 10);
    EXPECT_THAT(FakeGraphEngine::journal(), IsEmpty());
    EXPECT_THAT(posted(), IsEmpty());
}

}  // namespace QRT_0_81
