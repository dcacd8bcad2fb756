// A host's graph engine that throws, waits, calls the player back and leaves OpenGL's state behind.
#include <QGuiApplication>
#include <functional>
#include <latch>
#include <stdexcept>
#include <thread>

#include "faults/qrtFaultsFixture.h"
#include "harness/qrtFakeSegment.h"
#include "harness/qrtRecordingObserver.h"

namespace QRT_0_81 {

namespace {

constexpr char thrown[] = "the codec has gone";

/// Calls an operation of the player that reaches one of the graph engine, and answers with its result.
struct Reach {
    char const* operation;  ///< of the graph engine
    std::function<Status(Player&)> call;
};

Status orFailure(bool isThere) {
    return isThere ? Status() : Status(Status::general_failure);
}

std::vector<Reach> const& reaches() {
    static const SharedPtr<Composition> composition = FakeComposition::create(0, 100);
    static const std::vector<Reach> all{
        {"setComposition", [](Player& player) { return player.setComposition(composition, {}); }},
        {"getVideoFrameRate", [](Player& player) { return player.setComposition(composition, {}); }},
        {"updateComposition", [](Player& player) { return player.updateComposition(composition, "moved"); }},
        {"renderFrame",
         [](Player& player) {
             SharedPtr<VideoBuffer> buffer;
             const Status status = player.getVideoBuffer(7, buffer);
             EXPECT_EQ(bool(buffer), status.success());
             return status;
         }},
        {"fillAudio",
         [](Player& player) {
             char samples[8] = {};
             return player.fillAudioBuffer(samples, sizeof samples, 0);
         }},
        {"setVideoFrameRate", [](Player& player) { return player.setVideoFrameRate(Rational(25, 1)); }},
        {"getTokenResolver", [](Player& player) { return orFailure(bool(player.getTokenResolver())); }},
        {"getCacheStats",
         [](Player& player) {
             ConstSharedPtr<CacheStats> stats;
             return player.getCacheStats(CacheStats::CacheType::graph_engine, stats);
         }},
        {"setPref", [](Player& player) { return player.setPref("FAKE_QUALITY", 4); }},
        {"getPref",
         [](Player& player) {
             int value = 0;
             return player.getPref("FAKE_QUALITY", value);
         }},
        {"getPrefs",
         [](Player& player) {
             Vector<String> names;
             return player.getPrefs(names);
         }},
        {"setStep", [](Player& player) { return player.startProducing(playParams(0, 0, 99)); }},
        {"getStep",
         [](Player& player) {
             EXPECT_EQ(player.startProducing(playParams(0, 0, 99)).get(), Status::ok);
             SharedPtr<VideoBuffer> buffer;
             const Status status = player.getVideoBuffer(50, buffer);
             EXPECT_TRUE(buffer) << "a failure to move the current frame leaves the frame";
             return status;
         }},
    };
    return all;
}

}  // namespace

class GraphEngineThrows : public FaultsFixture, public ::testing::WithParamInterface<Reach> {};

TEST_P(GraphEngineThrows, theCallerGetsAFailureAndThePlayerGoesOnAndEnds) {
    start();
    const auto failWith = [&](char const* message) {
        log.clear();
        EXPECT_EQ(GetParam().call(*player).get(), Status::general_failure);
        EXPECT_TRUE(isToldOf(std::string("failed: ") + message));
        FaultyGraphEngine::behave();
        expectWorking();
    };
    FaultyGraphEngine::before(GetParam().operation, [] { throw std::runtime_error(thrown); });
    failWith(thrown);
    FaultyGraphEngine::before(GetParam().operation, [] { throw 81; });
    failWith("an exception that is no std::exception");
    FaultyGraphEngine::after(GetParam().operation, [] { throw std::runtime_error(thrown); });
    failWith(thrown);

    FaultyGraphEngine::before(GetParam().operation, [] { throw std::runtime_error(thrown); });
    (void)GetParam().call(*player);
    EXPECT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::script().numDestroyed, FakeGraphEngine::script().numCreated);
}

INSTANTIATE_TEST_SUITE_P(In, GraphEngineThrows, ::testing::ValuesIn(reaches()),
                         [](auto const& reach) { return reach.param.operation; });

class GraphEngineFaults : public FaultsFixture {};

TEST_F(GraphEngineFaults, aCompositionInWhichItThrowsIsNone) {
    start();
    FaultyGraphEngine::before("setComposition", [] { throw std::runtime_error(thrown); });
    ASSERT_EQ(setComposition(FakeComposition::create(0, 50)).get(), Status::general_failure);
    EXPECT_EQ(fetch(3).get(), Status::no_composition);
}

TEST_F(GraphEngineFaults, aFactoryThatThrowsMakesNoPlayer) {
    FaultyGraphEngine::before("create", [] { throw std::runtime_error(thrown); });
    EXPECT_FALSE(Player::create(smallRgba8, FaultyGraphEngine::create));
    EXPECT_TRUE(isToldOf(thrown));
}

TEST_F(GraphEngineFaults, aFactoryThatThrowsInALaterLifeFailsItsBeginningAndTheNextAttemptWorks) {
    start();
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    FaultyGraphEngine::before("create", [] { throw std::runtime_error(thrown); });
    EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::general_failure);
    EXPECT_EQ(player->uninitialize().get(), Status::not_initialized);
    FaultyGraphEngine::behave();
    start();
    expectWorking();
}

TEST_F(GraphEngineFaults, oneThatThrowsWhenItGetsItsContextLeavesAPlayerThatAnswersAndEnds) {
    FaultyGraphEngine::before("setGLContext", [] { throw std::runtime_error(thrown); });
    EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::general_failure);
    EXPECT_TRUE(isToldOf(thrown));
    EXPECT_EQ(fetch(0).get(), Status::no_composition);
    EXPECT_EQ(player->uninitialize().get(), Status::ok);
    FaultyGraphEngine::behave();
    start();
    expectWorking();
}

TEST_F(GraphEngineFaults, oneThatThrowsAheadOfTheHostPausesTheRunAndTheNextFetchResumesIt) {
    start();
    FaultyGraphEngine::before("renderFrame", [] { throw std::runtime_error(thrown); });
    ASSERT_EQ(player->startProducing(playParams(10, 0, 99)).get(), Status::ok);
    log.waitFor("Stop producing because status failure = 1");
    drain();
    EXPECT_EQ(log.count("Stop producing because status failure = 1"), 1u) << "one failed step is not tried for ever";
    FaultyGraphEngine::behave();
    ASSERT_EQ(fetch(10).get(), Status::ok);
    waitUntilReady(12);
}

TEST_F(GraphEngineFaults, oneThatThrowsWhenSoundIsPositionedDoesNotKeepTheRunFromGoingOn) {
    start();
    ASSERT_EQ(player->setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new StereoFloat)).get(), Status::ok);
    FaultyGraphEngine::before("fillAudio", [] { throw std::runtime_error(thrown); });
    const auto params = playParams(10, 0, 99, 1, PlayParams::single, PlayParams::all);
    ASSERT_EQ(player->startProducing(params).get(), Status::ok);
    waitUntilReady(12);
    EXPECT_TRUE(isToldOf(thrown));
}

TEST_F(GraphEngineFaults, aHundredThrowsCostNoFramebuffer) {
    start();
    FaultyGraphEngine::before("renderFrame", [] { throw std::runtime_error(thrown); });
    for (int64 frame = 0; frame < 100; ++frame)
        ASSERT_EQ(fetch(frame).get(), Status::general_failure);
    FaultyGraphEngine::behave();
    const SharedPtr<Composition> composition = FakeComposition::create(0, 100);
    std::vector<SharedPtr<VideoBuffer>> held(4);  // two ahead, the current one and one in reserve
    for (size_t i = 0; i < held.size(); ++i)
        ASSERT_EQ(fetch(static_cast<int64>(i), held[i]).get(), Status::ok);
}

TEST_F(GraphEngineFaults, whileOneRendersForEverWhatNeedsNoPlayerThreadAnswersAndTheRestOnceItIsDone) {
    start();
    ASSERT_EQ(fetch(1).get(), Status::ok);
    std::latch rendering(1);
    std::latch released(1);
    FaultyGraphEngine::before("renderFrame", [&] {
        rendering.count_down();
        released.wait();
    });
    std::vector<Status> results(3, Status(Status::no_resource));
    std::vector<std::jthread> callers;
    callers.emplace_back([&] { results[0] = fetch(50); });
    rendering.wait();
    callers.emplace_back([&] { results[1] = player->setPref("FAKE_QUALITY", 5); });
    callers.emplace_back([&] { results[2] = player->updateComposition(FakeComposition::create(0, 100), "moved"); });

    EXPECT_EQ(fetch(1).get(), Status::ok);
    EXPECT_TRUE(player->isVideoBufferReady(1));
    EXPECT_FALSE(player->isVideoBufferReady(50));
    char samples[8] = {};
    EXPECT_EQ(player->fillAudioBuffer(samples, sizeof samples, 0).get(), Status::ok);
    ConstSharedPtr<CacheStats> stats;
    EXPECT_EQ(player->getCacheStats(CacheStats::CacheType::producer, stats).get(), Status::ok);
    EXPECT_EQ(player->getVideoFrameRate(), Rational(24, 1));
    EXPECT_TRUE(player->getTokenResolver());

    FaultyGraphEngine::before("renderFrame", {});
    released.count_down();
    callers.clear();
    for (Status const& result : results)
        EXPECT_EQ(result.get(), Status::ok);
    expectWorking();
}

// ---- Calling back

namespace {

/// Calls everything that a player offers, and says what those answered that wait for the player thread.
std::vector<Status::Type> callEverything(Player& player) {
    const SharedPtr<Composition> composition = FakeComposition::create(0, 10);
    SharedPtr<VideoBuffer> buffer;
    int value = 0;
    char samples[8] = {};
    ConstSharedPtr<CacheStats> stats;
    Vector<String> names;
    (void)player.isVideoBufferReady(3);
    (void)player.fillAudioBuffer(samples, sizeof samples, 0);
    (void)player.getPrefs(names);
    (void)player.getCacheStats(CacheStats::CacheType::graph_engine, stats);
    (void)player.getVideoResolution();
    (void)player.getTokenResolver();
    (void)player.setDefaultSourceVideoFrameRate(Rational(30, 1));
    (void)player.setExternalSegmentCacheConstraint(Resource::Type::vram, ResourceConstraint::ResizeMode::automatic, 1,
                                                   1);
    return {player.setPref("FAKE_QUALITY", 1).get(),
            player.getPref("FAKE_QUALITY", value).get(),
            player.setComposition(composition, {}).get(),
            player.updateComposition(composition, "moved").get(),
            player.getVideoBuffer(90, buffer).get(),
            player.startProducing(playParams(0, 0, 9)).get(),
            player.setVideoResolution(VideoBufferResolution(32, 16, 4, 8, false)).get(),
            player.setVideoFrameRate(Rational(25, 1)).get(),
            player.setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new StereoFloat)).get(),
            player.setRamOutputs(true).get(),
            player.uninitialize().get()};
}

}  // namespace

class GraphEngineCallsBack : public FaultsFixture, public ::testing::WithParamInterface<Reach> {};

TEST_P(GraphEngineCallsBack, onThePlayerThreadAndIsRefusedInsteadOfWaitingForItself) {
    start();
    std::vector<Status::Type> answers;
    Status::Type initialized = Status::ok;
    std::atomic<bool> isInside{false};
    FaultyGraphEngine::before(GetParam().operation, [&] {
        if (isInside.exchange(true)) return;  // what it calls reaches it again
        answers = callEverything(*player);
        initialized = player->initialize(nullptr, nullptr).get();
    });
    (void)GetParam().call(*player);
    FaultyGraphEngine::behave();
    ASSERT_FALSE(answers.empty());
    EXPECT_THAT(answers, ::testing::Each(Status::general_failure));
    EXPECT_EQ(initialized, Status::already_initialized);
    expectWorking();
}

INSTANTIATE_TEST_SUITE_P(In, GraphEngineCallsBack, ::testing::ValuesIn([] {
                             std::vector<Reach> onPlayerThread;
                             for (Reach const& reach : reaches()) {
                                 const std::string name = reach.operation;
                                 if (name != "fillAudio" && name != "getTokenResolver" && name != "getCacheStats" &&
                                     name != "getPrefs") {
                                     onPlayerThread.push_back(reach);
                                 }
                             }
                             return onPlayerThread;
                         }()),
                         [](auto const& reach) { return reach.param.operation; });

TEST_F(GraphEngineFaults, oneThatCallsBackWhenItGetsItsContextIsRefused) {
    Status::Type initialized = Status::ok;
    Status::Type uninitialized = Status::ok;
    FaultyGraphEngine::before("setGLContext", [&] {
        initialized = player->initialize(nullptr, nullptr).get();
        uninitialized = player->uninitialize().get();
    });
    start();
    EXPECT_EQ(initialized, Status::general_failure);
    EXPECT_EQ(uninitialized, Status::not_initialized);
    EXPECT_TRUE(isToldOf("initialize() failed: it was called on the player thread"));
    expectWorking();
}

TEST_F(GraphEngineFaults, oneThatHoldsTheLastReferenceOfThePlayerEndsItOnTheGuiThread) {
    start();
    std::latch dropped(1);
    FaultyGraphEngine::before("renderFrame", [&] {
        FaultyGraphEngine::before("renderFrame", {});
        player.reset();
        dropped.count_down();
    });
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    dropped.wait();
    while (FakeGraphEngine::script().numDestroyed == 0)
        QCoreApplication::processEvents();
    EXPECT_EQ(FakeGraphEngine::countOf("destroyed with its context"), 1);
}

// ---- What it leaves behind

namespace {

/// Something that a graph engine leaves behind on the player thread after it has drawn.
struct Mess {
    char const* name;
    void (*leave)(QOpenGLExtraFunctions& gl);
};

GLuint madeBuffer(QOpenGLExtraFunctions& gl, GLenum target) {
    GLuint buffer = 0;
    gl.glGenBuffers(1, &buffer);
    gl.glBindBuffer(target, buffer);
    gl.glBufferData(target, 4, nullptr, GL_STREAM_READ);
    return buffer;
}

constexpr Mess messes[] = {
    {"errors",
     [](QOpenGLExtraFunctions& gl) {
         gl.glEnable(0xBAD);
         gl.glBindTexture(0xBAD, 1);
     }},
    {"aScissor",
     [](QOpenGLExtraFunctions& gl) {
         gl.glEnable(GL_SCISSOR_TEST);
         gl.glScissor(0, 0, 1, 1);
     }},
    {"aColourMask", [](QOpenGLExtraFunctions& gl) { gl.glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE); }},
    {"discardedDrawing", [](QOpenGLExtraFunctions& gl) { gl.glEnable(GL_RASTERIZER_DISCARD); }},
    {"anotherFramebuffer",
     [](QOpenGLExtraFunctions& gl) {
         GLuint framebuffer = 0;
         gl.glGenFramebuffers(1, &framebuffer);
         gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
     }},
    {"anotherPixelBuffer", [](QOpenGLExtraFunctions& gl) { (void)madeBuffer(gl, GL_PIXEL_PACK_BUFFER); }},
    {"aLongRow", [](QOpenGLExtraFunctions& gl) { gl.glPixelStorei(GL_PACK_ROW_LENGTH, 3); }},
    {"skippedPixels",
     [](QOpenGLExtraFunctions& gl) {
         gl.glPixelStorei(GL_PACK_SKIP_PIXELS, 2);
         gl.glPixelStorei(GL_PACK_SKIP_ROWS, 1);
     }},
    {"anotherViewport", [](QOpenGLExtraFunctions& gl) { gl.glViewport(3, 3, 1, 1); }},
    {"noContext", [](QOpenGLExtraFunctions&) { QOpenGLContext::currentContext()->doneCurrent(); }},
};

}  // namespace

class GraphEngineLeaves : public FaultsFixture, public ::testing::WithParamInterface<Mess> {};

TEST_P(GraphEngineLeaves, behindWhatSpoilsNoFrameThatFollows) {
    start();
    for (const bool isInMemory : {false, true}) {
        ASSERT_EQ(player->setRamOutputs(isInMemory).get(), Status::ok);
        FaultyGraphEngine::after("renderFrame",
                                 [] { GetParam().leave(*QOpenGLContext::currentContext()->extraFunctions()); });
        SharedPtr<VideoBuffer> buffer;
        for (int64 frame = 20; frame < 23; ++frame) {
            ASSERT_EQ(fetch(frame, buffer).get(), Status::ok);
            EXPECT_EQ(frameIn(buffer), frame) << (isInMemory ? "in memory" : "as a texture");
        }
        // A frame that is left undrawn is green even so.
        FakeGraphEngine::script().draws = false;
        ASSERT_EQ(fetch(30, buffer).get(), Status::ok);
        EXPECT_EQ(frameIn(buffer), 255 * 256) << "green";
        FakeGraphEngine::script().draws = true;
    }
}

INSTANTIATE_TEST_SUITE_P(Behind, GraphEngineLeaves, ::testing::ValuesIn(messes),
                         [](auto const& mess) { return mess.param.name; });

TEST_F(GraphEngineFaults, oneThatThrowsInSetCompositionLeavesTheOldSegmentsAlone) {
    start();
    const auto segment = FakeSegment::create("insert", {});
    List<SharedPtr<ExternalSegment>> segments;
    segments.append(segment);
    ASSERT_EQ(player->setComposition(FakeComposition::create(0, 100), segments).get(), Status::ok);
    FaultyGraphEngine::before("setComposition", [] { throw std::runtime_error("no plug-in"); });
    EXPECT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::general_failure);
    FaultyGraphEngine::behave();
    RecordingObserver observer;
    player->addObserver(&observer);
    segment->subject.notify(InvalidationHint(0, 9));
    EXPECT_EQ(observer.count(), 0u) << "a composition that is none has no segments";
    expectWorking();
}

TEST_F(GraphEngineFaults, aLayoutInWhichThePictureDoesNotFitIsToldOf) {
    start();
    ASSERT_EQ(player->setVideoResolution(VideoBufferResolution(15, 8, 4, 8, false)).get(), Status::ok);
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    ASSERT_EQ(fetch(1).get(), Status::ok);
    const auto alignTo = [](GLint bytes) {
        FaultyGraphEngine::after("renderFrame", [bytes] {
            QOpenGLContext::currentContext()->functions()->glPixelStorei(GL_PACK_ALIGNMENT, bytes);
        });
    };
    alignTo(8);
    EXPECT_EQ(fetch(2).get(), Status::ok);
    EXPECT_TRUE(isToldOf("reading the pixels failed: OpenGL error 1282"));
    alignTo(4);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(fetch(3, buffer).get(), Status::ok);
    EXPECT_EQ(frameIn(buffer), 3);
}

}  // namespace QRT_0_81
