// What cannot be seen of the engine's features from outside: the sizes of its pools, records of other kinds in its
// cache, and commands whose time has passed.
#include <gtest/gtest.h>

#include "foundation/core/qrtAudioFormatInterface.h"
#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtHostContext.h"
#include "harness/qrtPlayerImplInspector.h"
#include "harness/qrtRecordingObserver.h"

namespace QRT_0_81 {

namespace {

using Inspector = PlayerImplInspector;

const VideoBufferResolution smallFormat(16, 8, 4, 8, false);

class SomeAudioFormat final : public AudioFormatInterface {
public:
    [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override { return sampleFrames * 4; }
    [[nodiscard]] int32 getSampleRate() const override { return 48000; }
};

}  // namespace

class PlayerImplFeatures : public ::testing::Test {
protected:
    PlayerImplFeatures() { FakeGraphEngine::resetScript(); }
    ~PlayerImplFeatures() override { FakeGraphEngine::resetScript(); }

    HostContext host;
};

// ---- The pools' sizes -----------------------------------------------------------------------------------------------

TEST_F(PlayerImplFeatures, beforeInitializeAPreferenceResizesThePoolOfMemoryButNotThatOfFramebuffers) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    auto& fboPool = Inspector::fboPool(engine);
    auto& ramPool = Inspector::ramPool(engine);
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    EXPECT_EQ(ramPool.getNumResources(), 0u) << "the switch itself resizes nothing before initialize";
    ASSERT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 3).get(), Status::ok);
    EXPECT_EQ(ramPool.getNumResources(), 5u);
    EXPECT_TRUE(ramPool.isInitialized());
    ASSERT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, 1).get(), Status::ok);
    EXPECT_EQ(ramPool.getNumResources(), 6u);
    EXPECT_EQ(fboPool.getNumResources(), 0u);
    EXPECT_FALSE(fboPool.isInitialized());
    ASSERT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(fboPool.getNumResources(), 6u);
    EXPECT_EQ(ramPool.getNumResources(), 6u);
}

TEST_F(PlayerImplFeatures, thePoolOfMemoryHasNoBlocksWhileRamOutputsAreOff) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    auto& ramPool = Inspector::ramPool(engine);
    ASSERT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 3).get(), Status::ok);
    EXPECT_EQ(ramPool.getNumResources(), 0u);
    EXPECT_EQ(ramPool.getResolution(), smallFormat) << "but it is set up all the same";
    ASSERT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(ramPool.getNumResources(), 0u);
    EXPECT_FALSE(ramPool.isInitialized());
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    EXPECT_EQ(ramPool.getNumResources(), 5u);
    ASSERT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 4).get(), Status::ok);
    EXPECT_EQ(ramPool.getNumResources(), 6u);
    ASSERT_EQ(engine.setRamOutputs(false).get(), Status::ok);
    EXPECT_EQ(ramPool.getNumResources(), 0u);
    EXPECT_EQ(Inspector::fboPool(engine).getNumResources(), 6u);
}

TEST_F(PlayerImplFeatures, aFramebufferPoolThatFailsLeavesThePoolOfMemoryAsItIs) {
    PlayerImpl engine(VideoBufferResolution(16, 8, 2, 8, false), FakeGraphEngine::create);
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    ASSERT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), 262);
    EXPECT_EQ(Inspector::ramPool(engine).getNumResources(), 0u);
    EXPECT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 5).get(), 262);
    EXPECT_EQ(Inspector::ramPool(engine).getNumResources(), 0u);
}

TEST_F(PlayerImplFeatures, aPreferenceSetToItsPresentValueLeavesThePoolsAlone) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    ASSERT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 2).get(), Status::ok);
    ASSERT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, 0).get(), Status::ok);
    EXPECT_EQ(Inspector::ramPool(engine).getNumResources(), 0u);
    ASSERT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, -1).get(), 3);
    EXPECT_EQ(Inspector::ramPool(engine).getNumResources(), 0u);
}

// ---- Statistics -----------------------------------------------------------------------------------------------------

TEST_F(PlayerImplFeatures, statisticsSkipRecordsThatAreNoProducedFrames) {
    class OtherRecord final : public CacheData {};
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    ASSERT_EQ(Inspector::cache(engine).put("5", SharedPtr<CacheData>(new OtherRecord)).get(), Status::ok);
    ConstSharedPtr<CacheStats> stats;
    ASSERT_EQ(engine.getCacheStats(CacheStats::CacheType::producer, stats).get(), Status::ok);
    EXPECT_TRUE(stats->getFrameRanges().empty());
    for (const int64 frame : {4, 6})
        ASSERT_EQ(Inspector::cachePut(engine, frame, nullptr).get(), Status::ok);
    ASSERT_EQ(engine.getCacheStats(CacheStats::CacheType::producer, stats).get(), Status::ok);
    ASSERT_EQ(stats->getFrameRanges().size(), 2u);
    EXPECT_EQ(stats->getFrameRanges()[0], (CacheStats::FrameRange{4, 4}));
    EXPECT_EQ(stats->getFrameRanges()[1], (CacheStats::FrameRange{6, 6}));
}

TEST_F(PlayerImplFeatures, statisticsReachBothEndsOfAll64Bits) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    constexpr int64 least = std::numeric_limits<int64>::min();
    constexpr int64 most = std::numeric_limits<int64>::max();
    for (const int64 frame : {most, least, least + 1}) {
        ASSERT_EQ(Inspector::cachePut(engine, frame, nullptr).get(), Status::ok);
    }
    ConstSharedPtr<CacheStats> stats;
    ASSERT_EQ(engine.getCacheStats(CacheStats::CacheType::producer, stats).get(), Status::ok);
    ASSERT_EQ(stats->getFrameRanges().size(), 2u);
    EXPECT_EQ(stats->getFrameRanges()[0], (CacheStats::FrameRange{least, least + 1}));
    EXPECT_EQ(stats->getFrameRanges()[1], (CacheStats::FrameRange{most, most}));
}

// ---- Audio ----------------------------------------------------------------------------------------------------------

TEST_F(PlayerImplFeatures, audioIsPositionedOnlyIfTheRunThatWantedItStillGoesOn) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);  // its play parameters are of both media
    FakeGraphEngine::clearJournal();
    EXPECT_EQ(Inspector::startProducingAudio(engine).get(), Status::ok);
    ASSERT_EQ(engine.setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new SomeAudioFormat)).get(), Status::ok);
    EXPECT_EQ(Inspector::startProducingAudio(engine).get(), Status::ok) << "no run";
    EXPECT_EQ(FakeGraphEngine::journal(), std::vector<std::string>{});
    Inspector::setProducing(engine, true);
    EXPECT_EQ(Inspector::startProducingAudio(engine).get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::journal(), std::vector<std::string>{"fillAudio format 4 at 0"});
    FakeGraphEngine::answer("fillAudio", 55);
    EXPECT_EQ(Inspector::startProducingAudio(engine).get(), 55);
    Inspector::setProducing(engine, false);
    ASSERT_EQ(engine.setAudioFormat(nullptr).get(), Status::ok);
    Inspector::setProducing(engine, true);
    EXPECT_EQ(Inspector::startProducingAudio(engine).get(), Status::ok) << "no format";
    Inspector::setProducing(engine, false);
}

// ---- Notifications of the pools -------------------------------------------------------------------------------------

TEST_F(PlayerImplFeatures, aResourceThatComesBackPostsAStepOnlyDuringARun) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    auto& queue = Inspector::queue(engine);
    auto& fboPool = Inspector::fboPool(engine);
    auto& ramPool = Inspector::ramPool(engine);
    RecordingObserver observer;
    engine.addObserver(&observer);
    fboPool.release(nullptr);
    ramPool.release(nullptr);
    EXPECT_EQ(queue.size(), 0u);
    Inspector::setProducing(engine, true);
    fboPool.release(nullptr);
    EXPECT_EQ(queue.size(), 1u);
    ramPool.release(nullptr);
    EXPECT_EQ(queue.size(), 2u);
    fboPool.notify(ResourcePoolInterface::LockHint());
    fboPool.notify(InvalidationHint(0, 9));
    ramPool.notify(NotificationHint());
    EXPECT_EQ(queue.size(), 2u);
    Inspector::setProducing(engine, false);
    EXPECT_EQ(observer.count(), 0u) << "nothing of the pools is passed on";
    EXPECT_EQ(queue.take()->type(), CmdType::produce_next_video_buffer);
}

TEST_F(PlayerImplFeatures, anInvalidationOfThePoolsCostsNoFrame) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    ASSERT_EQ(Inspector::cachePut(engine, 4, nullptr).get(), Status::ok);
    Inspector::fboPool(engine).notify(InvalidationHint(0, 9));
    EXPECT_TRUE(Inspector::cacheContains(engine, 4));
}

}  // namespace QRT_0_81
