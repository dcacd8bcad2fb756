// What engines tell in a trace.
#include <gmock/gmock.h>

#include <stdexcept>
#include <utility>

#include "harness/qrtExternalSegmentWrapperFixture.h"
#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtFileSizeLimit.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtPlayerImplInspector.h"
#include "harness/qrtTraceFixture.h"
#include "stress/qrtStressInspector.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Event = TraceDocument::Event;
using Numbers = std::vector<int64_t>;

Numbers numbersOf(TraceDocument::Events const& events, std::string const& key) {
    Numbers numbers;
    for (Event const& event : events)
        numbers.push_back(event.number(key));
    return numbers;
}

/// The one event that contains another.
Event around(TraceDocument::Events const& candidates, Event const& inner) {
    TraceDocument::Events found;
    for (Event const& candidate : candidates) {
        if (candidate.contains(inner)) found.push_back(candidate);
    }
    EXPECT_THAT(found, SizeIs(1)) << "around " << inner.name;
    return found.empty() ? Event{} : found.front();
}

}  // namespace

class PlayerTrace : public TraceFixture {
protected:
    using Inspector = PlayerImplInspector;

    PlayerTrace() { FakeGraphEngine::resetScript(); }
    ~PlayerTrace() override { FakeGraphEngine::resetScript(); }

    /// An engine with 100 frames, whose thread is at work.
    std::unique_ptr<PlayerImpl> makeEngine() {
        auto engine = std::make_unique<PlayerImpl>(VideoBufferResolution(16, 8, 4, 8, false), FakeGraphEngine::create);
        EXPECT_EQ(engine->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        EXPECT_EQ(engine->setComposition(FakeComposition::create(0, 100), {}).get(), Status::ok);
        return engine;
    }
    static void fetch(PlayerImpl& engine, int64 frame, int expected = Status::ok) {
        SharedPtr<VideoBuffer> buffer;
        EXPECT_EQ(engine.getVideoBuffer(frame, buffer).get(), expected);
    }
    static void drain(PlayerImpl& engine) {
        int value = 0;
        (void)engine.getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, value);
    }
    /// Produces from `current` on until nothing is missing.
    static void lookAhead(PlayerImpl& engine, int64 current) {
        const Rational rate24(24, 1);
        ASSERT_EQ(engine
                      .startProducing(PlayParams::create(Time(current, rate24), Time(0, rate24), Time(100, rate24),
                                                         rate24, 1, PlayParams::single, PlayParams::video_only))
                      .get(),
                  Status::ok);
        while (!engine.isVideoBufferReady(current + 2))
            drain(engine);
        ASSERT_EQ(engine.stopProducing().get(), Status::ok);
    }

    HostContext host;
};

TEST_F(PlayerTrace, hasTheCommandsInTheOrderOfTheQueue) {
    start();
    auto engine = makeEngine();
    ASSERT_EQ(engine->setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, 1).get(), Status::ok);
    ASSERT_EQ(engine->setRamOutputs(true).get(), Status::ok);
    fetch(*engine, 7);
    ASSERT_EQ(engine->setVideoResolution(VideoBufferResolution(32, 8, 4, 8, false)).get(), Status::ok);
    ASSERT_EQ(engine->setVideoFrameRate(Rational(25, 1)).get(), Status::ok);
    ASSERT_EQ(engine->updateComposition(FakeComposition::create(0, 50), "").get(), Status::ok);
    drain(*engine);
    engine.reset();
    const TraceDocument trace = stopAndRead();
    const std::string expected[] = {
        "CmdSetComposition",     "CmdSetPref",           "CmdSetRamOutputs",     "CmdProduceVideoBuffer",
        "CmdSetVideoResolution", "CmdSetVideoFrameRate", "CmdUpdateComposition", "CmdGetPref"};
    const auto waits = trace.spans("wait");
    ASSERT_THAT(waits, SizeIs(std::size(expected)));
    const int64_t thread = trace.spans("set up").front().thread;
    EXPECT_THAT(trace.namesOf(thread, "Cmd"), ::testing::ElementsAreArray(expected));
    for (size_t i = 0; i < waits.size(); ++i) {
        EXPECT_EQ(waits[i].texts.at("command"), expected[i]);
        EXPECT_EQ(waits[i].number("status"), 0);
        const Event command = trace.spans(expected[i]).front();
        EXPECT_TRUE(waits[i].begin <= command.begin && command.end() <= waits[i].end()) << expected[i];
        EXPECT_NE(waits[i].thread, command.thread);
    }
}

TEST_F(PlayerTrace, hasARenderForEachFrameInsideOfItsCommand) {
    start();
    auto engine = makeEngine();
    for (const int64 frame : {12, 3, 57})
        fetch(*engine, frame);
    fetch(*engine, 3);
    engine.reset();
    const TraceDocument trace = stopAndRead();
    EXPECT_EQ(numbersOf(trace.spans("render"), "frame"), (Numbers{12, 3, 57}));
    for (Event const& render : trace.spans("render")) {
        const Event production = around(trace.spans("produce"), render);
        EXPECT_EQ(production.number("frame"), render.number("frame"));
        EXPECT_EQ(production.number("on demand"), 1);
        EXPECT_EQ(production.number("status"), 0);
        (void)around(trace.spans("CmdProduceVideoBuffer"), production);
    }
    for (char const* const part : {"renderFrame", "glFinish"}) {
        EXPECT_THAT(trace.spans(part), SizeIs(3));
        for (Event const& span : trace.spans(part))
            (void)around(trace.spans("render"), span);
    }
    EXPECT_EQ(numbersOf(trace.spans("getVideoBuffer"), "frame"), (Numbers{12, 3, 57, 3}));
    EXPECT_EQ(numbersOf(trace.spans("getVideoBuffer"), "cached"), (Numbers{0, 0, 0, 1}));
    EXPECT_THAT(trace.spans("read back"), IsEmpty());
}

TEST_F(PlayerTrace, hasTheReadBackOfFramesInMemory) {
    start();
    auto engine = makeEngine();
    ASSERT_EQ(engine->setRamOutputs(true).get(), Status::ok);
    fetch(*engine, 12);
    fetch(*engine, 13);
    engine.reset();
    const TraceDocument trace = stopAndRead();
    ASSERT_THAT(trace.spans("read back"), SizeIs(2));
    for (Event const& span : trace.spans("read back"))
        (void)around(trace.spans("produce"), span);
}

TEST_F(PlayerTrace, hasTheFramesOfLookAheadInTheirOrder) {
    start();
    auto engine = makeEngine();
    lookAhead(*engine, 20);
    engine.reset();
    const TraceDocument trace = stopAndRead();
    EXPECT_EQ(numbersOf(trace.spans("render"), "frame"), (Numbers{20, 21, 22}));
    for (Event const& production : trace.spans("produce")) {
        EXPECT_EQ(production.number("on demand"), 0);
        (void)around(trace.spans("CmdProduceNextVideoBuffer"), production);
    }
}

TEST_F(PlayerTrace, hasWhatThePoolsHaveAfterEveryChange) {
    start();
    auto engine = makeEngine();
    ASSERT_EQ(engine->setRamOutputs(true).get(), Status::ok);
    std::vector<SharedPtr<VideoBuffer>> held;
    std::vector<PoolState> states;
    for (int64 frame = 0; frame < 3; ++frame) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(engine->getVideoBuffer(frame, buffer).get(), Status::ok);
        held.push_back(buffer);
        states.push_back(ResourcePoolInspector::stateOf(Inspector::ramPool(*engine)));
    }
    const PoolState framebuffers = ResourcePoolInspector::stateOf(Inspector::fboPool(*engine));
    const TraceDocument trace = stopAndRead();
    const std::string number = std::to_string(trace.spans("set up").front().number("player"));
    const auto blocks = trace.counts("memory blocks of player " + number);
    ASSERT_GE(blocks.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        Event const& told = blocks[blocks.size() - 3 + i];
        EXPECT_EQ(told.number("free"), static_cast<int64_t>(states[i].numFree));
        EXPECT_EQ(told.number("lent"), static_cast<int64_t>(states[i].lent.size()));
        EXPECT_EQ(told.number("free") + told.number("lent"), states[i].size);
    }
    // A framebuffer is lent while a frame is rendered and read back, and then returns.
    const auto levels = trace.counts("framebuffers of player " + number);
    EXPECT_EQ(levels.back().number("free"), static_cast<int64_t>(framebuffers.numFree));
    EXPECT_EQ(levels.back().number("lent"), static_cast<int64_t>(framebuffers.lent.size()));
    ASSERT_GE(levels.size(), 6u);
    EXPECT_EQ(levels[levels.size() - 2].number("lent"), 1);
    EXPECT_EQ(trace.counts("cached frames of player " + number).back().number("frames"), 3);
    EXPECT_EQ(trace.counts("waiting commands of player " + number).back().number("commands"), 0);
}

TEST_F(PlayerTrace, hasEvictionsWithTheNumberOfTheirFrames) {
    start();
    auto engine = makeEngine();
    for (int64 frame = 0; frame < 5; ++frame)
        fetch(*engine, frame);
    engine.reset();
    const TraceDocument trace = stopAndRead();
    ASSERT_THAT(trace.spans("evict"), SizeIs(1)) << "four framebuffers, five frames";
    EXPECT_EQ(trace.spans("evict").front().number("evicted"), 1);
    EXPECT_EQ(around(trace.spans("produce"), trace.spans("evict").front()).number("frame"), 4);
}

TEST_F(PlayerTrace, tellsPlayersApart) {
    start();
    auto first = makeEngine();
    auto second = makeEngine();
    fetch(*first, 1);
    fetch(*second, 2);
    first.reset();
    second.reset();
    const TraceDocument trace = stopAndRead();
    const auto renders = trace.spans("render");
    ASSERT_THAT(renders, SizeIs(2));
    EXPECT_EQ(renders[0].number("player") + 1, renders[1].number("player"));
    for (Event const& render : renders) {
        EXPECT_THAT(trace.threads("QRT-PLAYER " + std::to_string(render.number("player"))), ElementsAre(render.thread));
    }
}

TEST_F(PlayerTrace, hasWhatFailsWithItsStatus) {
    auto engine = makeEngine();
    start();
    FakeGraphEngine::answer("renderFrame", 777);
    fetch(*engine, 1, 777);
    FakeGraphEngine::answer("renderFrame", 0);
    FakeGraphEngine::callBeforeRender([](int64) { throw std::runtime_error("as a host might"); });
    fetch(*engine, 2, Status::general_failure);
    const TraceDocument trace = stopAndRead();
    EXPECT_THAT(numbersOf(trace.spans("wait"), "status"), ElementsAre(777, Status::general_failure));
    EXPECT_EQ(numbersOf(trace.spans("renderFrame"), "frame"), (Numbers{1, 2})) << "what throws ends, too";
    EXPECT_EQ(trace.spans("produce").front().number("status"), 777);
}

TEST_F(PlayerTrace, isOnDiskWhenThePlayerThreadWaits) {
    start();
    auto engine = makeEngine();
    fetch(*engine, 1);
    // Nothing else happens that would have it written.
    while (TraceDocument::textOf(path).find("\"name\":\"render\"") == std::string::npos)
        std::this_thread::yield();
    engine.reset();
    EXPECT_THAT(stopAndRead().spans("render"), SizeIs(1));
}

TEST_F(PlayerTrace, thatCannotGoOnDisturbsNothing) {
    const LogCapture log;
    const FileSizeLimit limit(4096);
    start();
    auto engine = makeEngine();
    for (int round = 0; round < 20; ++round)
        for (int64 frame = 0; frame < 10; ++frame)
            fetch(*engine, frame);
    engine.reset();
    EXPECT_FALSE(Trace::isOn());
    EXPECT_EQ(log.count("QRT_TRACE_PLAYER: the trace ends here: File too large"), 1u);
    (void)TraceDocument(TraceDocument::textOf(path) + "]");
}

TEST_F(PlayerTrace, hasTheSoundThatIsAskedFor) {
    auto engine = makeEngine();
    start();
    char samples[64] = {};
    (void)engine->fillAudioBuffer(samples, sizeof samples, 5);
    const TraceDocument trace = stopAndRead();
    EXPECT_EQ(numbersOf(trace.spans("fillAudioBuffer"), "bytes"), Numbers{64});
}

TEST_F(PlayerTrace, isOfAllThatThreadsAskFor) {
    start();
    auto engine = makeEngine();
    std::vector<std::thread> hosts;
    for (int64 i = 0; i < 4; ++i) {
        hosts.emplace_back([&engine, i] {
            for (int64 round = 0; round < 25; ++round)
                fetch(*engine, (round * 7 + i) % 100);
        });
    }
    for (std::thread& thread : hosts)
        thread.join();
    const TraceDocument trace = stopAndRead();
    EXPECT_THAT(trace.spans("getVideoBuffer"), SizeIs(100));
    EXPECT_EQ(trace.spans("render").size(), FakeGraphEngine::renderedFrames().size());
}

using SegmentTrace = ExternalSegmentWrapperFixture;

TEST_F(SegmentTrace, hasWhatHostsRenderAndWhatIsCached) {
    const QTemporaryDir folder;
    const std::string path = folder.filePath("trace.json").toStdString();
    switchOn();
    wrap(textureTraits);
    ASSERT_TRUE(Trace::start(path.c_str()));
    EXPECT_EQ(renderToTexture(5), Status::ok);
    EXPECT_EQ(renderToTexture(5), Status::ok);
    Trace::stop();
    const TraceDocument trace(TraceDocument::textOf(path));
    EXPECT_EQ(numbersOf(trace.spans("external segment"), "frame"), (Numbers{5, 5}));
    EXPECT_EQ(numbersOf(trace.spans("external segment"), "cached"), (Numbers{INT64_MIN, 1}));
}

}  // namespace QRT_0_81
