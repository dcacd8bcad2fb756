// What each request of a host does, when it is refused, and what it leaves alone.
#include <functional>
#include <limits>
#include <vector>

#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

class PlayerCommands : public PlayerFixture {
protected:
    class Format final : public AudioFormatInterface {
    public:
        [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override { return sampleFrames * 2; }
        [[nodiscard]] int32 getSampleRate() const override { return 44100; }
    };

    const List<SharedPtr<ExternalSegment>> noSegments;
};

TEST_F(PlayerCommands, whatNeedsThePlayerThreadAnswersNotInitializedBeforeInitialize) {
    EXPECT_EQ(player->startProducing(playParams(0, 0, 5)).get(), 256);
    EXPECT_EQ(player->stopProducing().get(), 256);
    EXPECT_EQ(player->setComposition(FakeComposition::create(0, 10), noSegments).get(), 256);
    EXPECT_EQ(player->updateComposition(FakeComposition::create(0, 10), "").get(), 256);
    EXPECT_EQ(player->setVideoFrameRate(Rational(25, 1)).get(), 256);
    EXPECT_EQ(FakeGraphEngine::countOf("setVideoFrameRate 25/1"), 0);
}

TEST_F(PlayerCommands, settingsBeforeInitializeAreAppliedAtOnce) {
    const VideoBufferResolution resolution(32, 16, 3, 8, false);
    const ConstSharedPtr<AudioFormatInterface> format(new Format);
    EXPECT_EQ(player->setVideoResolution(resolution).get(), Status::ok);
    EXPECT_EQ(player->setRamOutputs(true).get(), Status::ok);
    EXPECT_EQ(player->setAudioFormat(format).get(), Status::ok);
    EXPECT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 5).get(), Status::ok);
    EXPECT_EQ(player->getVideoResolution(), resolution);
    EXPECT_TRUE(player->getRamOutputs());
    EXPECT_EQ(player->getAudioFormat(), format);
    start();
    EXPECT_EQ(host.countTextures(), 7);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    EXPECT_EQ(buffer->getResolution(), resolution);
    EXPECT_EQ(buffer->getType(), VideoBuffer::memoryKind);
}

TEST_F(PlayerCommands, aFreshPlayerReportsItsDefaults) {
    EXPECT_EQ(player->getVideoResolution(), smallRgba8);
    EXPECT_EQ(player->getVideoFrameRate(), Rational(24, 1));
    EXPECT_EQ(player->getDefaultSourceVideoFrameRate(), Rational(24, 1));
    EXPECT_FALSE(player->getRamOutputs());
    EXPECT_FALSE(player->getAudioFormat());
}

// ---- Start and stop

TEST_F(PlayerCommands, startingWithoutACompositionAnswersNoComposition) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 5)).get(), 265);
}

TEST_F(PlayerCommands, startingTwiceAnswersAlreadyProducing) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 5)).get(), Status::ok);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 5)).get(), 257);
}

TEST_F(PlayerCommands, startingTwiceAnswersAlreadyProducingWhateverTheParameters) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 5)).get(), Status::ok);
    EXPECT_EQ(player->startProducing(playParams(500, 400, 600)).get(), 257);
    EXPECT_EQ(player->startProducing(nullptr).get(), 257);
}

TEST_F(PlayerCommands, startingWithoutParametersAnswersInvalidPlayParams) {
    start();
    EXPECT_EQ(player->startProducing(nullptr).get(), 259);
}

TEST_F(PlayerCommands, stoppingWhenNotProducingAnswersNotProducing) {
    start();
    EXPECT_EQ(player->stopProducing().get(), 271);
    ASSERT_EQ(player->startProducing(playParams(0, 0, 5)).get(), Status::ok);
    EXPECT_EQ(player->stopProducing().get(), Status::ok);
    EXPECT_EQ(player->stopProducing().get(), 271);
}

TEST_F(PlayerCommands, aCurrentFrameOnePastTheEndIsInvalidAndTheMessageNamesAllSevenNumbers) {
    start(100);
    const LogCapture log;
    EXPECT_EQ(player->startProducing(playParams(51, 10, 50)).get(), 259);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].text(),
              "Player invalid play params. Player starts at 10 ends at 50 @ 24/1 and currentFrame is 51. "
              "Composition starts at 0 and ends at 99.");
    EXPECT_EQ(log.messages()[0].channel(), "");
    EXPECT_EQ(log.messages()[0].file(), "src/player/private/qrtPlayerImpl");
    EXPECT_EQ(player->stopProducing().get(), 271);
}

TEST_F(PlayerCommands, aRangeThatLeavesTheCompositionIsInvalid) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(10, 20)).get(), Status::ok);
    const LogCapture log;
    EXPECT_EQ(player->startProducing(playParams(10, 9, 29)).get(), 259);
    EXPECT_EQ(player->startProducing(playParams(10, 10, 30)).get(), 259);
    EXPECT_EQ(player->startProducing(playParams(9, 10, 29)).get(), 259);
    EXPECT_EQ(log.messages().size(), 3u);
    EXPECT_EQ(player->startProducing(playParams(10, 10, 29)).get(), Status::ok);
}

TEST_F(PlayerCommands, theCompositionsExtentIsRoundedAtTheRateOfTheParameters) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    // The last of 200 ticks, 199, is frame 99.5 at 24 frames per second: rounded upwards.
    ASSERT_EQ(setComposition(FakeComposition::create(0, 200, Rational(48, 1))).get(), Status::ok);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 101)).get(), 259);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 100)).get(), Status::ok);
}

TEST_F(PlayerCommands, theTicksOfTheDurationCountAtTheRateOfTheStart) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    const SharedPtr<FakeComposition> composition(
        new FakeComposition(Time(10, Rational(24, 1)), Time(20, Rational(48, 1))));
    ASSERT_EQ(setComposition(composition).get(), Status::ok);
    EXPECT_EQ(player->startProducing(playParams(10, 10, 30)).get(), 259);
    EXPECT_EQ(player->startProducing(playParams(10, 10, 29)).get(), Status::ok);
}

TEST_F(PlayerCommands, negativeFramesAreRoundedAlikeOnBothSides) {
    // A time at frame -10 is frame -9, of the composition as of the parameters, and so the message says.
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(-10, 20)).get(), Status::ok);
    const LogCapture log;
    const auto params = playParams(0, 0, 9);
    params->setStartFrame(-11);
    EXPECT_EQ(player->startProducing(params).get(), 259);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].text(),
              "Player invalid play params. Player starts at -10 ends at 9 @ 24/1 and currentFrame is 0. "
              "Composition starts at -9 and ends at 9.");
    params->setStartFrame(-10);
    EXPECT_EQ(player->startProducing(params).get(), Status::ok);
}

TEST_F(PlayerCommands, aRunMayReachTheEndsOf64Bits) {
    constexpr int64 least = std::numeric_limits<int64>::min();
    constexpr int64 most = std::numeric_limits<int64>::max();
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    struct Case {
        int64 first, count, current, start, end;
    };
    for (Case const& run : {Case{most - 10, 100, most, most - 10, most}, Case{least, 100, least, least, least},
                            Case{least, -5, least, least, least}, Case{0, most, most, 0, most}}) {
        ASSERT_EQ(setComposition(FakeComposition::create(run.first, run.count)).get(), Status::ok);
        const auto params = playParams(0, 0, 0);
        params->setCurrentFrame(run.current);
        params->setStartFrame(run.start);
        params->setEndFrame(run.end);
        ASSERT_EQ(player->startProducing(params).get(), Status::ok) << run.first << " " << run.count;
        waitUntilReady(run.current);
        EXPECT_EQ(player->stopProducing().get(), Status::ok);
    }
}

TEST_F(PlayerCommands, parametersWithoutARateLieAtFrame0AndSoDoesTheComposition) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(10, 20)).get(), Status::ok);
    for (Rational const& rate : {Rational(0, 0), Rational(24, 0), Rational(0, 24)}) {
        const auto params =
            PlayParams::create(Time(), Time(), Time(), rate, 1, PlayParams::single, PlayParams::video_only);
        params->setCurrentFrame(15);
        params->setEndFrame(5000);
        ASSERT_EQ(player->startProducing(params).get(), Status::ok);
        waitUntilReady(15);
        EXPECT_EQ(player->stopProducing().get(), Status::ok);
    }
}

TEST_F(PlayerCommands, theCompositionsOwnFailuresAreReturnedByStart) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    const auto composition = FakeComposition::create(0, 10);
    composition->startTimeStatus = static_cast<Status::Type>(700);
    ASSERT_EQ(setComposition(composition).get(), Status::ok);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 5)).get(), 700);
    const auto another = FakeComposition::create(0, 10);
    another->durationStatus = static_cast<Status::Type>(701);
    ASSERT_EQ(setComposition(another).get(), Status::ok);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 5)).get(), 701);
}

TEST_F(PlayerCommands, aGraphEngineThatRefusesTheStepIsReturnedAndNothingStarts) {
    start();
    FakeGraphEngine::answer("setStep", 702);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 5)).get(), 702);
    EXPECT_EQ(player->stopProducing().get(), 271);
}

TEST_F(PlayerCommands, thePlayerKeepsACopyOfTheParameters) {
    start();
    const auto params = playParams(0, 0, 50);
    ASSERT_EQ(player->startProducing(params).get(), Status::ok);
    params->setCurrentFrame(40);
    waitUntilReady(2);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    waitUntilReady(3);
    EXPECT_EQ(params->getCurrentFrame(), 40);
    EXPECT_FALSE(player->isVideoBufferReady(40));
}

// ---- While producing

TEST_F(PlayerCommands, everySetterButTheDefaultSourceRateAndTheBudgetsIsRefusedWhileProducingAndChangesNothing) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    waitUntilReady(2);
    const int texturesBefore = host.countTextures();
    FakeGraphEngine::clearJournal();

    EXPECT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 9).get(), 275);
    EXPECT_EQ(player->setPref("FAKE_QUALITY", 9).get(), 275);
    EXPECT_EQ(player->setVideoResolution(VideoBufferResolution(32, 32, 4, 8, false)).get(), 275);
    EXPECT_EQ(player->setVideoFrameRate(Rational(25, 1)).get(), 275);
    EXPECT_EQ(player->setRamOutputs(true).get(), 275);
    EXPECT_EQ(player->setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new Format)).get(), 275);
    EXPECT_EQ(player->setComposition(FakeComposition::create(0, 5), noSegments).get(), 275);
    EXPECT_EQ(player->updateComposition(FakeComposition::create(0, 5), "change").get(), 275);
    EXPECT_EQ(player->setDefaultSourceVideoFrameRate(Rational(30, 1)).get(), Status::ok);
    auto mode = ResourceConstraint::ResizeMode::automatic;
    EXPECT_EQ(player->setExternalSegmentCacheConstraint(Resource::Type::vram, mode, 3, 4).get(), Status::ok);

    int value = 0;
    EXPECT_EQ(player->getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, value).get(), Status::ok);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(player->getVideoResolution(), smallRgba8);
    EXPECT_EQ(player->getVideoFrameRate(), Rational(24, 1));
    EXPECT_FALSE(player->getRamOutputs());
    EXPECT_FALSE(player->getAudioFormat());
    EXPECT_EQ(player->getDefaultSourceVideoFrameRate(), Rational(30, 1));
    uint64 first = 0;
    uint64 second = 0;
    player->getExternalSegmentCacheConstraint(Resource::Type::vram, mode, first, second);
    EXPECT_EQ(second, 4u);
    EXPECT_EQ(host.countTextures(), texturesBefore);
    for (std::string const& entry : FakeGraphEngine::journal())
        EXPECT_EQ(entry.rfind("renderFrame", 0), 0u) << entry;
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(99, buffer).get(), Status::ok) << "the composition of 100 frames is still there";
}

TEST_F(PlayerCommands, evenARefusedExchangeClearsTheCache) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 0)).get(), Status::ok);  // leaves room for another frame
    const std::vector<std::function<Status()>> exchanges{
        [&] { return setComposition(FakeComposition::create(0, 5)); },
        [&] { return player->updateComposition(FakeComposition::create(0, 5), "change"); },
        [&] { return player->setAudioFormat(nullptr); },
    };
    for (auto const& exchange : exchanges) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(90, buffer).get(), Status::ok);
        drain();
        ASSERT_TRUE(player->isVideoBufferReady(90));
        EXPECT_EQ(exchange().get(), 275);
        EXPECT_FALSE(player->isVideoBufferReady(90));
    }
}

// ---- Formats

TEST_F(PlayerCommands, anInvalidResolutionIsRefusedWhateverElseHolds) {
    EXPECT_EQ(player->setVideoResolution(VideoBufferResolution()).get(), 3);
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    EXPECT_EQ(player->setVideoResolution(VideoBufferResolution(0, 8, 4, 8, false)).get(), 3);
    EXPECT_EQ(player->getVideoResolution(), smallRgba8);
}

TEST_F(PlayerCommands, theSameResolutionSucceedsEvenWhileProducingAndKeepsTheCache) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    waitUntilReady(2);
    EXPECT_EQ(player->setVideoResolution(smallRgba8).get(), Status::ok);
    EXPECT_TRUE(player->isVideoBufferReady(2));
}

TEST_F(PlayerCommands, aNewResolutionClearsTheCacheAndNewFramesHaveIt) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    const VideoBufferResolution larger(40, 20, 3, 8, false);
    ASSERT_EQ(player->setVideoResolution(larger).get(), Status::ok);
    EXPECT_FALSE(player->isVideoBufferReady(1));
    EXPECT_EQ(player->getVideoResolution(), larger);
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    EXPECT_EQ(buffer->getResolution(), larger);
    EXPECT_EQ(frameIn(buffer), 1);
}

TEST_F(PlayerCommands, aResolutionThatThePoolRefusesIsReturnedAndTheOldOneStaysButNoCachedFrame) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    EXPECT_EQ(player->setVideoResolution(VideoBufferResolution(40, 20, 2, 8, false)).get(), 262);
    EXPECT_EQ(player->getVideoResolution(), smallRgba8);
    EXPECT_FALSE(player->isVideoBufferReady(1));
}

TEST_F(PlayerCommands, settingTheSameRamOutputsSucceedsEvenWhileProducing) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    EXPECT_EQ(player->setRamOutputs(false).get(), Status::ok);
}

TEST_F(PlayerCommands, switchingRamOutputsClearsTheCacheAndChangesTheKindOfFrames) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    for (const bool isRam : {true, false, true}) {
        ASSERT_EQ(player->setRamOutputs(isRam).get(), Status::ok);
        EXPECT_FALSE(player->isVideoBufferReady(1));
        EXPECT_EQ(player->getRamOutputs(), isRam);
        ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
        EXPECT_EQ(buffer->getType(), isRam ? VideoBuffer::memoryKind : VideoBuffer::framebufferKind);
        EXPECT_EQ(frameIn(buffer), 1);
    }
}

TEST_F(PlayerCommands, ramOutputsThatThePoolsCannotFollowReturnTheirFailureAndStaySet) {
    player = Player::create(VideoBufferResolution(16, 8, 2, 8, false), FakeGraphEngine::create);
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), 262);
    EXPECT_EQ(player->setRamOutputs(true).get(), 262);
    EXPECT_TRUE(player->getRamOutputs());
    EXPECT_EQ(player->setRamOutputs(true).get(), Status::ok) << "no change";
}

TEST_F(PlayerCommands, theFrameRateNeedsACompositionAndBecomesWhatTheGraphEngineReports) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(player->setVideoFrameRate(Rational(25, 1)).get(), 265);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    EXPECT_EQ(player->setVideoFrameRate(Rational(30000, 1001)).get(), Status::ok);
    EXPECT_EQ(player->getVideoFrameRate(), Rational(30000, 1001));
    EXPECT_FALSE(player->isVideoBufferReady(1));
}

TEST_F(PlayerCommands, aFrameRateThatTheGraphEngineRefusesIsReturnedAndTheOldOneStaysButNoCachedFrame) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    FakeGraphEngine::answer("setVideoFrameRate", 703);
    EXPECT_EQ(player->setVideoFrameRate(Rational(25, 1)).get(), 703);
    EXPECT_EQ(player->getVideoFrameRate(), Rational(24, 1));
    EXPECT_FALSE(player->isVideoBufferReady(1));
}

TEST_F(PlayerCommands, aNewAudioFormatClearsTheCacheAndTheSameObjectIsNoChange) {
    start();
    const ConstSharedPtr<AudioFormatInterface> format(new Format);
    EXPECT_EQ(player->setAudioFormat(format).get(), Status::ok);
    EXPECT_EQ(player->getAudioFormat(), format);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    EXPECT_EQ(player->setAudioFormat(nullptr).get(), Status::ok);
    EXPECT_FALSE(player->isVideoBufferReady(1));
    EXPECT_FALSE(player->getAudioFormat());
    EXPECT_EQ(format->refcount(), 1u) << "the player let go of it";
}

// ---- Composition

TEST_F(PlayerCommands, theGraphEngineGetsTheCompositionWithFormatAndDefaultRate) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(player->setDefaultSourceVideoFrameRate(Rational(50, 1)).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::countOf("setComposition 0 segments 16x8 50/1"), 1);
}

TEST_F(PlayerCommands, aDefaultSourceRateTakesEffectWithTheNextComposition) {
    start();
    FakeGraphEngine::clearJournal();
    ASSERT_EQ(player->setDefaultSourceVideoFrameRate(Rational(50, 1)).get(), Status::ok);
    drain();
    EXPECT_EQ(FakeGraphEngine::journal(), std::vector<std::string>{});
    EXPECT_EQ(player->getVideoFrameRate(), Rational(24, 1)) << "that of sources is not that of the output";
    ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::journal(), std::vector<std::string>{"setComposition 0 segments 16x8 50/1"});
}

TEST_F(PlayerCommands, theCompositionsFrameRateBecomesTheOutputRate) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    {
        const std::lock_guard lock(FakeGraphEngine::script().mutex);
        FakeGraphEngine::script().frameRateToReport = Rational(60, 1);
    }
    ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    EXPECT_EQ(player->getVideoFrameRate(), Rational(60, 1));
}

TEST_F(PlayerCommands, anIncompleteCompositionIsAdoptedAndItsResultReturned) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    {
        const std::lock_guard lock(FakeGraphEngine::script().mutex);
        FakeGraphEngine::script().frameRateToReport = Rational(60, 1);
    }
    FakeGraphEngine::answer("setComposition", 269);
    EXPECT_EQ(setComposition(FakeComposition::create(0, 100)).get(), 269);
    EXPECT_EQ(player->getVideoFrameRate(), Rational(60, 1));
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(99, buffer).get(), Status::ok);
}

TEST_F(PlayerCommands, aCompositionThatTheGraphEngineRefusesLeavesNone) {
    start();
    {
        const std::lock_guard lock(FakeGraphEngine::script().mutex);
        FakeGraphEngine::script().frameRateToReport = Rational(60, 1);
    }
    FakeGraphEngine::answer("setComposition", 704);
    EXPECT_EQ(setComposition(FakeComposition::create(0, 100)).get(), 704);
    EXPECT_EQ(player->getVideoFrameRate(), Rational(24, 1));
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), 265);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 5)).get(), 265);
    EXPECT_EQ(player->updateComposition(FakeComposition::create(0, 5), "x").get(), 273);
}

TEST_F(PlayerCommands, aNewCompositionClearsTheCacheSoThatNoFrameOfTheOldOneIsDelivered) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    const auto another = FakeComposition::create(0, 100);
    another->identity = 200;
    ASSERT_EQ(setComposition(another).get(), Status::ok);
    EXPECT_FALSE(player->isVideoBufferReady(1));
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    unsigned int texture = 0;
    ASSERT_EQ(buffer->getTexture(texture).get(), Status::ok);
    EXPECT_EQ(paintedIdentity(&host.readTexture(texture, 16, 8)[8]), 200);
}

TEST_F(PlayerCommands, thePlayerLetsGoOfAReplacedComposition) {
    start();
    const auto first = FakeComposition::create(0, 10);
    ASSERT_EQ(setComposition(first).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 10)).get(), Status::ok);
    EXPECT_EQ(first->refcount(), 1u);
}

TEST_F(PlayerCommands, updatingHandsTheDescriptionOnAndClearsTheCache) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    EXPECT_EQ(player->updateComposition(FakeComposition::create(0, 5), "trimmed").get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::countOf("updateComposition trimmed"), 1);
    EXPECT_FALSE(player->isVideoBufferReady(1));
    EXPECT_EQ(player->getVideoBuffer(99, buffer).get(), Status::ok) << "the composition itself is not replaced";
}

TEST_F(PlayerCommands, updatingWithoutACompositionAnswersNoCompositionToUpdate) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(player->updateComposition(FakeComposition::create(0, 5), "x").get(), 273);
}

TEST_F(PlayerCommands, anUpdateThatTheGraphEngineRefusesIsReturnedAndNoCachedFrameStays) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    FakeGraphEngine::answer("updateComposition", 705);
    EXPECT_EQ(player->updateComposition(FakeComposition::create(0, 5), "x").get(), 705);
    EXPECT_FALSE(player->isVideoBufferReady(1));
}

TEST_F(PlayerCommands, theTokenResolverIsTheGraphEngines) {
    const auto resolver = player->getTokenResolver();
    EXPECT_TRUE(resolver);
    EXPECT_EQ(player->getTokenResolver(), resolver);
}

}  // namespace QRT_0_81
