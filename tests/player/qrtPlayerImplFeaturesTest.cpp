// What cannot be seen of the engine's features from outside: the sizes of its pools, records of other kinds in its
// cache, and commands whose time has passed.
#include <gtest/gtest.h>

#include "foundation/core/qrtAudioFormatInterface.h"
#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtFakeSegment.h"
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

// ---- Its life -------------------------------------------------------------------------------------------------------

TEST_F(PlayerImplFeatures, aNewEngineHasParametersThatPlayFrame0OnceWithPictureAndSound) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    EXPECT_TRUE(Inspector::playParams(engine) ==
                *PlayParams::create(Time(), Time(), Time(), Rational(24, 1), 1, PlayParams::single, PlayParams::all));
}

TEST_F(PlayerImplFeatures, theSurfaceIsTheCallersAndTheContextThePlayerThreadsBothOfACoreProfile) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    ASSERT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(engine.priority(), QThread::InheritPriority);
    const QSurfaceFormat wanted = Inspector::surface(engine)->requestedFormat();
    EXPECT_EQ(Inspector::surface(engine)->thread(), QThread::currentThread());
    EXPECT_EQ(wanted.profile(), QSurfaceFormat::CoreProfile);
    EXPECT_EQ(wanted.version(), qMakePair(3, 2));
    EXPECT_EQ(Inspector::playerContext(engine)->thread(), &engine);
    EXPECT_EQ(Inspector::playerContext(engine)->parent(), nullptr);
    EXPECT_EQ(Inspector::playerContext(engine)->format().profile(), QSurfaceFormat::CoreProfile);
    EXPECT_GE(Inspector::playerContext(engine)->format().version(), qMakePair(3, 2));
}

TEST_F(PlayerImplFeatures, theContextSharesWithTheHostsOrWithNobodyAndEndsWithTheLife) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    for (const bool isSharing : {true, false, true}) {
        ASSERT_EQ(engine.initialize(isSharing ? host.nativeContext() : nullptr, host.nativeWindow()).get(), Status::ok);
        EXPECT_EQ(Inspector::hostContext(engine) != nullptr, isSharing);
        EXPECT_EQ(Inspector::playerContext(engine)->shareContext(), Inspector::hostContext(engine));
        ASSERT_EQ(engine.uninitialize().get(), Status::ok);
        EXPECT_EQ(Inspector::surface(engine), nullptr);
        EXPECT_EQ(Inspector::hostContext(engine), nullptr);
        EXPECT_EQ(Inspector::playerContext(engine), nullptr);
    }
}

TEST_F(PlayerImplFeatures, uninitializeEmptiesThePoolsAndTheCacheAndInitializeFillsThePoolsAgain) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    for (int life = 0; life < 2; ++life) {
        ASSERT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        EXPECT_EQ(Inspector::fboPool(engine).getNumResources(), 4u);
        EXPECT_EQ(Inspector::ramPool(engine).getNumResources(), 4u);
        ASSERT_EQ(engine.setComposition(FakeComposition::create(0, 10), {}).get(), Status::ok);
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(engine.getVideoBuffer(3, buffer).get(), Status::ok);
        ASSERT_EQ(engine.uninitialize().get(), Status::ok);
        EXPECT_TRUE(Inspector::cache(engine).empty());
        EXPECT_FALSE(Inspector::fboPool(engine).isInitialized());
        EXPECT_FALSE(Inspector::ramPool(engine).isInitialized());
    }
}

TEST_F(PlayerImplFeatures, uninitializeLetsGoOfTheExternalSegments) {
    for (const bool isWrapped : {false, true}) {
        PlayerImpl engine(smallFormat, FakeGraphEngine::create);
        const size_t budget = isWrapped ? 1 : 0;
        (void)engine.externalSegmentCache().setConstraint(Resource::Type::ram, ResourceConstraint::ResizeMode::fixed, 0,
                                                          budget);
        ASSERT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        const auto segment = FakeSegment::create("a", {});
        List<SharedPtr<ExternalSegment>> segments;
        segments.append(segment);
        ASSERT_EQ(engine.setComposition(FakeComposition::create(0, 10), segments).get(), Status::ok);
        segments.clear();
        EXPECT_GT(segment->refcount(), 1u);
        ASSERT_EQ(engine.uninitialize().get(), Status::ok);
        EXPECT_EQ(segment->refcount(), 1u);
    }
}

// ---- The pools' formats ---------------------------------------------------------------------------------------------

TEST_F(PlayerImplFeatures, aResolutionReachesThePoolsThatAreInUseAndTheOthersWhenTheyAreNext) {
    const VideoBufferResolution larger(40, 20, 4, 8, false);
    const VideoBufferResolution largest(80, 40, 4, 8, false);
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    auto& fboPool = Inspector::fboPool(engine);
    auto& ramPool = Inspector::ramPool(engine);
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    ASSERT_EQ(engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 3).get(), Status::ok);
    ASSERT_EQ(engine.setVideoResolution(larger).get(), Status::ok);
    EXPECT_EQ(ramPool.getResolution(), larger) << "a preference has filled it before initialize";
    EXPECT_FALSE(fboPool.getResolution().isValid());
    ASSERT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(fboPool.getResolution(), larger);
    ASSERT_EQ(engine.setRamOutputs(false).get(), Status::ok);
    ASSERT_EQ(engine.setVideoResolution(largest).get(), Status::ok);
    EXPECT_EQ(fboPool.getResolution(), largest);
    EXPECT_EQ(ramPool.getResolution(), larger) << "it is empty";
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    EXPECT_EQ(ramPool.getResolution(), largest);
}

TEST_F(PlayerImplFeatures, aResolutionThatThePoolOfFramebuffersRefusesDoesNotReachThatOfMemory) {
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    ASSERT_EQ(engine.initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(engine.setVideoResolution(VideoBufferResolution(40, 20, 2, 8, false)).get(), 262);
    EXPECT_EQ(Inspector::ramPool(engine).getResolution(), smallFormat);
    EXPECT_EQ(engine.getVideoResolution(), smallFormat);
}

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

TEST_F(PlayerImplFeatures, statisticsGoOnBehindARecordThatIsNoProducedFrame) {
    class OtherRecord final : public CacheData {};
    PlayerImpl engine(smallFormat, FakeGraphEngine::create);
    const auto putOther = [&](char const* key) {
        ASSERT_EQ(Inspector::cache(engine).put(key, SharedPtr<CacheData>(new OtherRecord)).get(), Status::ok);
    };
    putOther("1");
    for (const int64 frame : {4, 5})
        ASSERT_EQ(Inspector::cachePut(engine, frame, nullptr).get(), Status::ok);
    putOther("9");  // whichever way the walk goes, it meets one of the two first
    ConstSharedPtr<CacheStats> stats;
    ASSERT_EQ(engine.getCacheStats(CacheStats::CacheType::producer, stats).get(), Status::ok);
    ASSERT_EQ(stats->getFrameRanges().size(), 1u);
    EXPECT_EQ(stats->getFrameRanges()[0], (CacheStats::FrameRange{4, 5}));
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
