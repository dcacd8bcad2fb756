// What the engine posts to its queue, and where: seen while the player thread is held in the rendering of a frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <latch>
#include <string>
#include <thread>

#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtHostContext.h"
#include "harness/qrtPlayerImplInspector.h"

namespace QRT_0_81 {

namespace {

SharedPtr<PlayParams> range(int64 current, int64 start, int64 end, PlayParams::PlayMode mode = PlayParams::single) {
    const Rational rate(24, 1);
    return PlayParams::create(Time(current, rate), Time(start, rate), Time(end - start + 1, rate), rate, 1, mode,
                              PlayParams::video_only);
}

}  // namespace

class PlayerImplQueue : public ::testing::Test {
protected:
    void SetUp() override {
        FakeGraphEngine::resetScript();
        engine = std::make_unique<PlayerImpl>(VideoBufferResolution(16, 8, 4, 8, false), FakeGraphEngine::create);
        ASSERT_EQ(engine->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        ASSERT_EQ(engine->setComposition(FakeComposition::create(0, 100), {}).get(), Status::ok);
    }
    void TearDown() override {
        letGo();
        if (holder.joinable()) holder.join();
        engine.reset();
        FakeGraphEngine::resetScript();
    }

    /// Holds the player thread in the rendering of `frame`, which a host waits for; nothing is queued then.
    void holdPlayerThreadIn(int64 frame) {
        FakeGraphEngine::callBeforeRender([this, frame](int64 rendered) {
            if (rendered != frame) return;
            isHeld.count_down();
            proceed.wait();
        });
        holder = std::thread([this, frame] {
            SharedPtr<VideoBuffer> buffer;
            (void)engine->getVideoBuffer(frame, buffer);
        });
        isHeld.wait();
    }
    void letGo() {
        if (!isLetGo) proceed.count_down();
        isLetGo = true;
    }
    void waitForQueueOf(size_t size) const {
        while (PlayerImplInspector::queue(*engine).size() != size)
            std::this_thread::yield();
    }
    /// Waits until everything posted so far has run.
    void drain() {
        int value = 0;
        (void)engine->getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, value);
    }

    HostContext host;
    std::unique_ptr<PlayerImpl> engine;
    std::latch isHeld{1};
    std::latch proceed{1};
    bool isLetGo = false;
    std::thread holder;
};

TEST_F(PlayerImplQueue, aWaitingHostOvertakesEveryRequestThatWaitsAtTheBack) {
    holdPlayerThreadIn(1);
    std::thread setter([this] { (void)engine->setVideoFrameRate(Rational(25, 1)); });
    waitForQueueOf(1);
    std::thread reader([this] {
        SharedPtr<VideoBuffer> buffer;
        EXPECT_EQ(engine->getVideoBuffer(2, buffer).get(), Status::ok);
    });
    waitForQueueOf(2);
    letGo();
    setter.join();
    reader.join();
    const auto journal = FakeGraphEngine::journal();
    const auto rendered = std::find(journal.begin(), journal.end(), "renderFrame 2");
    const auto set = std::find(journal.begin(), journal.end(), "setVideoFrameRate 25/1");
    ASSERT_NE(rendered, journal.end());
    ASSERT_NE(set, journal.end());
    EXPECT_LT(rendered, set);
}

TEST_F(PlayerImplQueue, requestsAtTheBackRunInTheOrderOfPosting) {
    holdPlayerThreadIn(1);
    std::vector<std::thread> setters;
    for (int i = 0; i < 10; ++i) {
        setters.emplace_back([this, i] { (void)engine->setVideoFrameRate(Rational(30 + i, 1)); });
        waitForQueueOf(static_cast<size_t>(i) + 1);
    }
    letGo();
    for (std::thread& setter : setters)
        setter.join();
    std::vector<std::string> rates;
    for (std::string const& entry : FakeGraphEngine::journal()) {
        if (entry.rfind("setVideoFrameRate", 0) == 0) rates.push_back(entry);
    }
    ASSERT_EQ(rates.size(), 10u);
    for (size_t i = 0; i < 10; ++i)
        EXPECT_EQ(rates[i], "setVideoFrameRate " + std::to_string(30 + i) + "/1");
}

TEST_F(PlayerImplQueue, terminationBehindTenRequestsLetsTheTenRunFirst) {
    holdPlayerThreadIn(1);
    std::vector<std::thread> setters;
    std::atomic<int> numSucceeded{0};
    for (int i = 0; i < 10; ++i) {
        setters.emplace_back([&] { numSucceeded += engine->setVideoFrameRate(Rational(25, 1)).success() ? 1 : 0; });
    }
    waitForQueueOf(10);
    std::thread ender([this] { EXPECT_EQ(engine->uninitialize().get(), Status::ok); });
    waitForQueueOf(11);
    letGo();
    for (std::thread& setter : setters)
        setter.join();
    ender.join();
    EXPECT_EQ(numSucceeded, 10);
}

TEST_F(PlayerImplQueue, aCachedFrameWhileNotProducingPostsNothing) {
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(engine->getVideoBuffer(5, buffer).get(), Status::ok);
    holdPlayerThreadIn(1);
    ASSERT_EQ(engine->getVideoBuffer(5, buffer).get(), Status::ok);
    EXPECT_EQ(PlayerImplInspector::queue(*engine).size(), 0u);
}

TEST_F(PlayerImplQueue, aCachedFrameWhileProducingPostsOneUpdateOfTheCurrentFrame) {
    ASSERT_EQ(engine->startProducing(range(5, 0, 50)).get(), Status::ok);
    while (!engine->isVideoBufferReady(7))
        drain();
    for (int i = 0; i < 4; ++i)
        drain();
    holdPlayerThreadIn(90);  // outside the play range: moves nothing
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(engine->getVideoBuffer(6, buffer).get(), Status::ok);
    EXPECT_EQ(PlayerImplInspector::queue(*engine).size(), 1u);
    buffer.reset();
    letGo();
    holder.join();
    while (!engine->isVideoBufferReady(8))
        drain();
    ASSERT_EQ(engine->stopProducing().get(), Status::ok);
    EXPECT_EQ(PlayerImplInspector::playParams(*engine).getCurrentFrame(), 6);
}

TEST_F(PlayerImplQueue, aFrameOnDemandInsideTheRangeMovesTheCurrentFrameAndOneOutsideDoesNot) {
    ASSERT_EQ(engine->startProducing(range(5, 0, 50)).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(engine->getVideoBuffer(70, buffer).get(), Status::ok);
    ASSERT_EQ(engine->stopProducing().get(), Status::ok);
    EXPECT_EQ(PlayerImplInspector::playParams(*engine).getCurrentFrame(), 5);
    ASSERT_EQ(engine->startProducing(range(5, 0, 50)).get(), Status::ok);
    ASSERT_EQ(engine->getVideoBuffer(50, buffer).get(), Status::ok);
    ASSERT_EQ(engine->stopProducing().get(), Status::ok);
    EXPECT_EQ(PlayerImplInspector::playParams(*engine).getCurrentFrame(), 50) << "both ends of the range are inside";
}

TEST_F(PlayerImplQueue, aFrameOnDemandWhileNotProducingMovesNothing) {
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(engine->getVideoBuffer(70, buffer).get(), Status::ok);
    drain();
    EXPECT_EQ(PlayerImplInspector::playParams(*engine).getCurrentFrame(), 0);
}

TEST_F(PlayerImplQueue, aReleasedFrameWhileNotProducingPostsNothing) {
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(engine->getVideoBuffer(5, buffer).get(), Status::ok);
    ASSERT_EQ(engine->setComposition(FakeComposition::create(0, 100), {}).get(), Status::ok);
    holdPlayerThreadIn(1);
    buffer.reset();  // the last reference: the framebuffer goes back
    EXPECT_EQ(PlayerImplInspector::queue(*engine).size(), 0u);
}

TEST_F(PlayerImplQueue, aReleasedFrameWhileProducingRestartsTheLoop) {
    SharedPtr<VideoBuffer> held;
    ASSERT_EQ(engine->getVideoBuffer(91, held).get(), Status::ok);
    (void)PlayerImplInspector::cacheErase(*engine, 91);  // the host alone holds it now
    holdPlayerThreadIn(1);
    PlayerImplInspector::setProducing(*engine, true);
    held.reset();
    EXPECT_EQ(PlayerImplInspector::queue(*engine).size(), 1u);
    PlayerImplInspector::setProducing(*engine, false);
}

// ---- What hosts post ------------------------------------------------------------------------------------------------

TEST_F(PlayerImplQueue, whatOnlyReadsOrNeedsNoPlayerThreadPostsNothing) {
    holdPlayerThreadIn(1);
    Vector<String> names;
    ConstSharedPtr<CacheStats> stats;
    EXPECT_EQ(engine->setDefaultSourceVideoFrameRate(Rational(50, 1)).get(), Status::ok);
    EXPECT_EQ(engine->getDefaultSourceVideoFrameRate(), Rational(50, 1));
    EXPECT_EQ(engine->getVideoFrameRate(), Rational(24, 1));
    EXPECT_EQ(engine->getVideoResolution(), VideoBufferResolution(16, 8, 4, 8, false));
    EXPECT_FALSE(engine->getAudioFormat());
    EXPECT_FALSE(engine->getRamOutputs());
    EXPECT_TRUE(engine->getTokenResolver());
    EXPECT_FALSE(engine->isVideoBufferReady(2));
    EXPECT_EQ(engine->getPrefs(names).get(), Status::ok);
    EXPECT_EQ(engine->getCacheStats(CacheStats::CacheType::producer, stats).get(), Status::ok);
    EXPECT_EQ(engine->initialize(nullptr, nullptr).get(), 272);
    EXPECT_EQ(engine->stopProducing().get(), 271);
    EXPECT_EQ(PlayerImplInspector::queue(*engine).size(), 0u);
}

struct PostedCase {
    char const* name;
    int code;
    bool isSynchronous;
    std::function<void(PlayerImpl&)> call;
};

class PlayerImplPosts : public PlayerImplQueue, public ::testing::WithParamInterface<PostedCase> {};

TEST_P(PlayerImplPosts, oneCommandOfItsOwnKind) {
    SharedPtr<VideoBuffer> cached;
    ASSERT_EQ(engine->getVideoBuffer(5, cached).get(), Status::ok);
    holdPlayerThreadIn(1);
    PlayerImplInspector::setProducing(*engine, true);
    std::thread caller([this] { GetParam().call(*engine); });
    auto& queue = PlayerImplInspector::queue(*engine);
    std::unique_ptr<Cmd> command = queue.take();
    EXPECT_EQ(static_cast<int>(command->type()), GetParam().code);
    EXPECT_EQ(dynamic_cast<CmdSynchronous*>(command.get()) != nullptr, GetParam().isSynchronous);
    EXPECT_EQ(queue.size(), 0u);
    PlayerImplInspector::setProducing(*engine, false);
    queue.pushFront(std::move(command));
    letGo();
    caller.join();
}

namespace {

const auto someParams = range(0, 0, 50);
const SharedPtr<Composition> someComposition = FakeComposition::create(0, 100);
const String headFrames("PRODUCER_CACHE_NB_HEAD_FRAMES");

void fetch(PlayerImpl& engine, int64 frame) {
    SharedPtr<VideoBuffer> buffer;
    (void)engine.getVideoBuffer(frame, buffer);
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(
    Operations, PlayerImplPosts,
    ::testing::Values(
        PostedCase{"startProducing", 1, true, [](PlayerImpl& e) { (void)e.startProducing(someParams); }},
        PostedCase{"stopProducing", 2, true, [](PlayerImpl& e) { (void)e.stopProducing(); }},
        PostedCase{"setComposition", 4, true, [](PlayerImpl& e) { (void)e.setComposition(someComposition, {}); }},
        PostedCase{"updateComposition", 5, true,
                   [](PlayerImpl& e) { (void)e.updateComposition(someComposition, "x"); }},
        PostedCase{"setVideoResolution", 6, true,
                   [](PlayerImpl& e) { (void)e.setVideoResolution(VideoBufferResolution(8, 8, 4, 8, false)); }},
        PostedCase{"setVideoFrameRate", 7, true, [](PlayerImpl& e) { (void)e.setVideoFrameRate(Rational(25, 1)); }},
        PostedCase{"setAudioFormat", 9, true, [](PlayerImpl& e) { (void)e.setAudioFormat(nullptr); }},
        PostedCase{"setRamOutputs", 10, true, [](PlayerImpl& e) { (void)e.setRamOutputs(true); }},
        PostedCase{"setPref", 11, true, [](PlayerImpl& e) { (void)e.setPref(headFrames, 3); }},
        PostedCase{"getPref", 12, true,
                   [](PlayerImpl& e) {
                       int value = 0;
                       EXPECT_EQ(e.getPref(headFrames, value).get(), Status::ok);
                       EXPECT_EQ(value, 2);
                   }},
        PostedCase{"getVideoBufferMissed", 14, true, [](PlayerImpl& e) { fetch(e, 2); }},
        PostedCase{"getVideoBufferCached", 16, false, [](PlayerImpl& e) { fetch(e, 5); }},
        PostedCase{"uninitialize", 17, false, [](PlayerImpl& e) { (void)e.uninitialize(); }}),
    [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

}  // namespace QRT_0_81
