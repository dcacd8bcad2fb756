// Audio: the format, what hosts pull, and how a run positions the graph engine's audio.
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "foundation/core/qrtAudioFormatInterface.h"
#include "harness/qrtPlayerFixture.h"
#include "harness/qrtRecordingObserver.h"

namespace QRT_0_81 {

namespace {

class FakeAudioFormat final : public AudioFormatInterface {
public:
    explicit FakeAudioFormat(int32 sampleRate, size_t bytesPerSampleFrame = 4)
        : m_sampleRate(sampleRate), m_bytesPerSampleFrame(bytesPerSampleFrame) {}
    [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override {
        return sampleFrames * m_bytesPerSampleFrame;
    }
    [[nodiscard]] int32 getSampleRate() const override { return m_sampleRate; }

private:
    const int32 m_sampleRate;
    const size_t m_bytesPerSampleFrame;
};

ConstSharedPtr<AudioFormatInterface> formatOf(int32 sampleRate, size_t bytesPerSampleFrame = 4) {
    return ConstSharedPtr<AudioFormatInterface>(new FakeAudioFormat(sampleRate, bytesPerSampleFrame));
}

}  // namespace

class PlayerAudio : public PlayerFixture {
protected:
    /// Everything that the graph engine was asked to fill so far.
    static std::vector<std::string> fills() {
        std::vector<std::string> found;
        for (std::string const& entry : FakeGraphEngine::journal()) {
            if (entry.rfind("fillAudio", 0) == 0) found.push_back(entry);
        }
        return found;
    }
    using Fills = std::vector<std::string>;

    /// Starts a run of frames 0 to 999 and waits until its first commands have been executed.
    void startRun(int64 current, PlayParams::ProductionMode mode = PlayParams::all) {
        ASSERT_EQ(player->startProducing(playParams(current, 0, 999, 1, PlayParams::single, mode)).get(), Status::ok);
        drain();
    }
};

// ---- The format -----------------------------------------------------------------------------------------------------

TEST_F(PlayerAudio, hasNoFormatUntilOneIsSetAndThenThatVeryObject) {
    EXPECT_FALSE(player->getAudioFormat());
    const auto first = formatOf(48000);
    const auto second = formatOf(44100);
    EXPECT_EQ(player->setAudioFormat(first).get(), Status::ok);
    EXPECT_EQ(player->getAudioFormat(), first);
    start();
    EXPECT_EQ(player->getAudioFormat(), first);
    EXPECT_EQ(player->setAudioFormat(second).get(), Status::ok);
    EXPECT_EQ(player->getAudioFormat(), second);
    EXPECT_EQ(player->setAudioFormat(nullptr).get(), Status::ok);
    EXPECT_FALSE(player->getAudioFormat());
}

TEST_F(PlayerAudio, letsGoOfTheOldFormat) {
    const auto first = formatOf(48000);
    for (const bool isInitialized : {false, true}) {
        if (isInitialized) start();
        ASSERT_EQ(player->setAudioFormat(first).get(), Status::ok);
        EXPECT_EQ(first->refcount(), 2u);
        ASSERT_EQ(player->setAudioFormat(first).get(), Status::ok);
        EXPECT_EQ(first->refcount(), 2u);
        ASSERT_EQ(player->setAudioFormat(formatOf(1)).get(), Status::ok);
        EXPECT_EQ(first->refcount(), 1u);
    }
}

TEST_F(PlayerAudio, refusesAFormatWhileProducing) {
    start(1000);
    const auto before = formatOf(48000);
    ASSERT_EQ(player->setAudioFormat(before).get(), Status::ok);
    startRun(0);
    EXPECT_EQ(player->setAudioFormat(formatOf(44100)).get(), 275);
    EXPECT_EQ(player->setAudioFormat(before).get(), 275);
    EXPECT_EQ(player->getAudioFormat(), before);
}

TEST_F(PlayerAudio, aFormatSetThroughTheQueueEmptiesTheCacheAndThenNotifies) {
    start();
    const auto audioFormat = formatOf(48000);
    for (int round = 0; round < 2; ++round) {  // the same object again has no other effect, but these it has
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(3, buffer).get(), Status::ok);
        bool wasCached = true;
        RecordingObserver observer([&](Subject&) { wasCached = player->isVideoBufferReady(3); });
        player->addObserver(&observer);
        EXPECT_EQ(player->setAudioFormat(audioFormat).get(), Status::ok);
        ASSERT_EQ(observer.count(), 1u);
        EXPECT_TRUE(observer.updates()[0].isPlain);
        EXPECT_EQ(observer.updates()[0].thread, std::this_thread::get_id());
        EXPECT_FALSE(wasCached);
    }
}

TEST_F(PlayerAudio, aFormatSetBeforeInitializeNotifiesNobody) {
    RecordingObserver observer;
    player->addObserver(&observer);
    EXPECT_EQ(player->setAudioFormat(formatOf(48000)).get(), Status::ok);
    EXPECT_EQ(observer.count(), 0u);
}

// ---- Pulling --------------------------------------------------------------------------------------------------------

TEST_F(PlayerAudio, handsAHostsBufferToTheGraphEngineAsItIs) {
    char samples[8] = {};
    EXPECT_EQ(player->fillAudioBuffer(samples, 8, 123).get(), Status::ok) << "also before initialize";
    EXPECT_EQ(samples[7], 0x5A);
    ASSERT_EQ(player->setAudioFormat(formatOf(48000)).get(), Status::ok);
    start();
    EXPECT_EQ(player->fillAudioBuffer(samples, 8, std::numeric_limits<uint64>::max()).get(), Status::ok);
    EXPECT_EQ(player->fillAudioBuffer(nullptr, 0, 0).get(), Status::ok);
    EXPECT_EQ(fills(), (Fills{"fillAudio no format 8 at 123", "fillAudio format 8 at 18446744073709551615",
                              "fillAudio format 0 at 0"}));
}

TEST_F(PlayerAudio, passesTheGraphEnginesFailureOn) {
    start();
    FakeGraphEngine::answer("fillAudio", 4321);
    EXPECT_EQ(player->fillAudioBuffer(nullptr, 0, 0).get(), 4321);
}

TEST_F(PlayerAudio, isPulledDuringARunAndWithoutOneAlike) {
    start(1000);
    char samples[8] = {};
    EXPECT_EQ(player->fillAudioBuffer(samples, 8, 1).get(), Status::ok);
    startRun(0);
    EXPECT_EQ(player->fillAudioBuffer(samples, 8, 2).get(), Status::ok);
    EXPECT_EQ(fills(), (Fills{"fillAudio no format 8 at 1", "fillAudio no format 8 at 2"}));
}

TEST_F(PlayerAudio, isPulledWhileThePlayerThreadIsRendering) {
    start();
    std::latch rendering(1);
    std::latch proceed(1);
    FakeGraphEngine::callBeforeRender([&](int64) {
        rendering.count_down();
        proceed.wait();
    });
    std::thread waitingHost([&] {
        SharedPtr<VideoBuffer> buffer;
        (void)player->getVideoBuffer(1, buffer);
    });
    rendering.wait();
    char samples[8] = {};
    EXPECT_EQ(player->fillAudioBuffer(samples, 8, 2).get(), Status::ok);
    EXPECT_FALSE(player->getAudioFormat());
    EXPECT_EQ(samples[0], 0x5A);
    proceed.count_down();
    waitingHost.join();
}

// ---- Positioning ----------------------------------------------------------------------------------------------------

TEST_F(PlayerAudio, aRunReadsOneSampleFrameAtItsCurrentFrameBeforeItRendersAny) {
    start(1000);
    ASSERT_EQ(player->setAudioFormat(formatOf(48000)).get(), Status::ok);
    FakeGraphEngine::clearJournal();
    startRun(48);
    waitUntilReady(48);
    const auto journal = FakeGraphEngine::journal();
    ASSERT_GE(journal.size(), 3u);
    EXPECT_EQ(journal[0], "setStep 1");
    EXPECT_EQ(journal[1], "fillAudio format 4 at 96000");
    EXPECT_EQ(journal[2], "renderFrame 48");
    EXPECT_EQ(fills().size(), 1u);
}

TEST_F(PlayerAudio, onlyRunsWithSoundPositionIt) {
    start(1000);
    ASSERT_EQ(player->setAudioFormat(formatOf(48000)).get(), Status::ok);
    startRun(24, PlayParams::video_only);
    EXPECT_EQ(fills(), Fills{});
    ASSERT_EQ(player->stopProducing().get(), Status::ok);
    startRun(24, static_cast<PlayParams::ProductionMode>(3));
    EXPECT_EQ(fills(), Fills{});
    ASSERT_EQ(player->stopProducing().get(), Status::ok);
    startRun(24, PlayParams::audio_only);
    EXPECT_EQ(fills(), Fills{"fillAudio format 4 at 48000"});
    ASSERT_EQ(player->stopProducing().get(), Status::ok);
    startRun(48, PlayParams::all);
    EXPECT_EQ(fills(), (Fills{"fillAudio format 4 at 48000", "fillAudio format 4 at 96000"}));
}

TEST_F(PlayerAudio, aRunWithoutAFormatPositionsNothing) {
    start(1000);
    startRun(24);
    EXPECT_EQ(fills(), Fills{});
}

TEST_F(PlayerAudio, aFormatWhoseSampleFrameIsEmptyIsNotPositioned) {
    start(1000);
    ASSERT_EQ(player->setAudioFormat(formatOf(48000, 0)).get(), Status::ok);
    startRun(24);
    EXPECT_EQ(fills(), Fills{});
}

struct PositionCase {
    char const* name;
    Rational frameRate;  ///< of the output, as the graph engine reports it
    int32 sampleRate;
    int64 frame;
    char const* fill;  ///< empty: no reading at all
};

class PlayerAudioPosition : public PlayerAudio, public ::testing::WithParamInterface<PositionCase> {};

TEST_P(PlayerAudioPosition, isTheNearestSampleFrame) {
    FakeGraphEngine::script().frameRateToReport = GetParam().frameRate;
    LogCapture log;
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(-1000, 3000)).get(), Status::ok);
    ASSERT_EQ(player->setAudioFormat(formatOf(GetParam().sampleRate)).get(), Status::ok);
    const auto params = playParams(0, -900, 1900, 1, PlayParams::single, PlayParams::all);
    params->setCurrentFrame(GetParam().frame);
    ASSERT_EQ(player->startProducing(params).get(), Status::ok);
    drain();
    EXPECT_EQ(fills(), std::string(GetParam().fill).empty() ? Fills{} : Fills{GetParam().fill});
    EXPECT_FALSE(log.contains("Start producing audio failure = 1"));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PlayerAudioPosition,
    ::testing::Values(
        PositionCase{"roundedDown", Rational(30000, 1001), 44100, 1, "fillAudio format 4 at 1471"},  // 1471.47
        PositionCase{"roundedUp", Rational(30000, 1001), 44100, 2, "fillAudio format 4 at 2943"},    // 2942.94
        PositionCase{"halvesUp", Rational(2, 1), 1, 1, "fillAudio format 4 at 1"},                   // 0.5
        PositionCase{"atTheOutputRateNotThePlayParams", Rational(25, 1), 48000, 50, "fillAudio format 4 at 96000"},
        PositionCase{"frame0", Rational(24, 1), 48000, 0, "fillAudio format 4 at 0"},
        PositionCase{"frameRate0", Rational(0, 1), 48000, 24, ""},
        PositionCase{"frameRateOverZero", Rational(24, 0), 48000, 24, ""},
        PositionCase{"frameRateOfTheSmallestNumbers", Rational(1, 4294967295u), 1, 1,
                     "fillAudio format 4 at 4294967295"},
        // There is no audio before the start: the position stays in its range.
        PositionCase{"beforeTheStart", Rational(24, 1), 48000, -24, "fillAudio format 4 at 0"},
        PositionCase{"negativeSampleRate", Rational(24, 1), -48000, 24, "fillAudio format 4 at 0"},
        PositionCase{"negativeFrameRate", Rational(-24, 1), 48000, -48, "fillAudio format 4 at 96000"},
        PositionCase{"farBeyondAllRange", Rational(1, 4294967295u), 2147483647, 1800,
                     "fillAudio format 4 at 18446744073709551615"}),
    [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

TEST_F(PlayerAudio, aFailureToPositionIsLoggedAndTheRunGoesOn) {
    start(1000);
    ASSERT_EQ(player->setAudioFormat(formatOf(48000)).get(), Status::ok);
    FakeGraphEngine::answer("fillAudio", 321);
    LogCapture log;
    startRun(24);
    EXPECT_EQ(log.count("Start producing audio failure = 321"), 1u);
    waitUntilReady(26);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 9)).get(), 257);
}

TEST_F(PlayerAudio, aSampleFrameTooLargeForTheMemoryIsAFailureToPosition) {
    start(1000);
    ASSERT_EQ(player->setAudioFormat(formatOf(48000, std::numeric_limits<size_t>::max())).get(), Status::ok);
    LogCapture log;
    startRun(24);
    EXPECT_EQ(log.count("Start producing audio failure = 1"), 1u);
    EXPECT_EQ(fills(), Fills{});
    waitUntilReady(26);
}

}  // namespace QRT_0_81
