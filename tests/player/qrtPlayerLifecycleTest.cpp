// How a player comes up and goes down.
#include <filesystem>
#include <fstream>
#include <thread>

#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

class PlayerLifecycle : public PlayerFixture {};

namespace {

/// Whether this process has a thread of that name, as the system knows it.
bool isThreadRunning(std::string const& name) {
    std::error_code ignored;
    for (auto const& task : std::filesystem::directory_iterator("/proc/self/task", ignored)) {
        std::ifstream file(task.path() / "comm");
        std::string found;
        if (std::getline(file, found) && found == name) return true;
    }
    return false;
}

int numFactoryCalls = 0;

/// Makes a graph engine from its second call on, respectively from its third.
SharedPtr<GraphEngineInterface> makesOneAtTheSecondCall() {
    return ++numFactoryCalls < 2 ? nullptr : FakeGraphEngine::create();
}
SharedPtr<GraphEngineInterface> makesOneAtTheThirdCall() {
    return ++numFactoryCalls < 3 ? nullptr : FakeGraphEngine::create();
}

/// The system keeps a thread listed for a moment after it has left its last function.
void waitUntilThreadIsGone(std::string const& name) {
    while (isThreadRunning(name))
        std::this_thread::yield();
}

}  // namespace

TEST_F(PlayerLifecycle, createdAndDroppedItStartsNoThread) {
    waitUntilThreadIsGone("QRT-PLAYER");  // of an earlier test
    player = Player::create(smallRgba8, FakeGraphEngine::create);
    EXPECT_FALSE(isThreadRunning("QRT-PLAYER"));
    player.reset();
    EXPECT_FALSE(isThreadRunning("QRT-PLAYER"));
    EXPECT_EQ(FakeGraphEngine::script().numDestroyed, 2);
}

TEST_F(PlayerLifecycle, createHandsOverTheOnlyReference) {
    EXPECT_EQ(player->refcount(), 1u);
}

TEST_F(PlayerLifecycle, createCallsTheFactoryOnce) {
    EXPECT_EQ(FakeGraphEngine::script().numCreated, 1);
}

TEST_F(PlayerLifecycle, createAsksAFactoryThatMadeNoneASecondTime) {
    numFactoryCalls = 0;
    player = Player::create(smallRgba8, makesOneAtTheSecondCall);
    EXPECT_EQ(numFactoryCalls, 2);
    EXPECT_TRUE(player->getTokenResolver());
}

TEST_F(PlayerLifecycle, initializeAsksTheFactoryOnlyWhenThereIsNoGraphEngine) {
    numFactoryCalls = 0;
    player = Player::create(smallRgba8, makesOneAtTheThirdCall);
    EXPECT_EQ(numFactoryCalls, 2);
    EXPECT_FALSE(player->getTokenResolver());
    start();
    EXPECT_EQ(numFactoryCalls, 3);
    EXPECT_TRUE(player->getTokenResolver());
    player = Player::create(smallRgba8, makesOneAtTheThirdCall);
    EXPECT_EQ(numFactoryCalls, 4);
    start();
    EXPECT_EQ(numFactoryCalls, 4);
}

TEST_F(PlayerLifecycle, initializeStartsAThreadNamedQrtPlayer) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_TRUE(isThreadRunning("QRT-PLAYER"));
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    waitUntilThreadIsGone("QRT-PLAYER");  // or the test's time-out tells
}

TEST_F(PlayerLifecycle, initializeTwiceAnswersAlreadyInitialized) {
    start();
    EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), 272);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(3, buffer).get(), Status::ok);
    EXPECT_EQ(frameIn(buffer), 3);
}

TEST_F(PlayerLifecycle, uninitializeBeforeInitializeAnswersNotInitialized) {
    EXPECT_EQ(player->uninitialize().get(), 256);
}

TEST_F(PlayerLifecycle, aSecondUninitializeAnswersNotInitialized) {
    start();
    EXPECT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(player->uninitialize().get(), 256);
}

TEST_F(PlayerLifecycle, withoutANativeContextItRendersWithoutSharing) {
    ASSERT_EQ(player->initialize(nullptr, nullptr).get(), Status::ok);
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 10)).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(7, buffer).get(), Status::ok);
    EXPECT_EQ(frameIn(buffer), 7);
    EXPECT_EQ(host.countTextures(), 0);
}

TEST_F(PlayerLifecycle, theHostsContextIsStillCurrentAfterInitializeAndUninitialize) {
    GLuint framebuffer = 0;
    host.gl().glGenFramebuffers(1, &framebuffer);
    const auto isUsable = [&] {
        host.gl().glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        GLint bound = 0;
        host.gl().glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
        host.gl().glBindFramebuffer(GL_FRAMEBUFFER, 0);  // needs the host's drawable, which an adoption could lose
        host.gl().glClear(GL_COLOR_BUFFER_BIT);
        return bound == static_cast<GLint>(framebuffer) && host.gl().glGetError() == GLenum{GL_NO_ERROR};
    };
    ASSERT_TRUE(isUsable());
    start();
    EXPECT_TRUE(isUsable());
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_TRUE(isUsable());
    EXPECT_EQ(QOpenGLContext::currentContext(), &host.context());
}

TEST_F(PlayerLifecycle, initializedAgainItMakesANewGraphEngineAndPlays) {
    start();
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::script().numDestroyed, 1);
    start();
    EXPECT_EQ(FakeGraphEngine::script().numCreated, 2);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(5, buffer).get(), Status::ok);
    EXPECT_EQ(frameIn(buffer), 5);
}

TEST_F(PlayerLifecycle, aRunEndsWithItsThreadSoThatTheNextLifeStartsFresh) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    start();
    EXPECT_EQ(player->stopProducing().get(), 271);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 50)).get(), Status::ok);
}

TEST_F(PlayerLifecycle, uninitializeForgetsTheComposition) {
    start();
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), 265);
}

TEST_F(PlayerLifecycle, uninitializeDropsTheCachedFramesAndTheComposition) {
    start();
    const auto composition = FakeComposition::create(0, 10);
    ASSERT_EQ(setComposition(composition).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(3, buffer).get(), Status::ok);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_FALSE(player->isVideoBufferReady(3));
    EXPECT_EQ(buffer->refcount(), 1u);
    EXPECT_EQ(composition->refcount(), 1u);
}

TEST_F(PlayerLifecycle, theGraphEngineGetsThePlayersContextFirstAndIsReleasedWhileItIsCurrent) {
    start();
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    const auto journal = FakeGraphEngine::journal();
    ASSERT_FALSE(journal.empty());
    EXPECT_EQ(journal.front(), "setGLContext some");
    EXPECT_EQ(journal.back(), "destroyed with its context");
}

TEST_F(PlayerLifecycle, droppingARunningPlayerStopsItsThread) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99, 1, PlayParams::loop)).get(), Status::ok);
    player.reset();
    waitUntilThreadIsGone("QRT-PLAYER");
    EXPECT_EQ(FakeGraphEngine::script().numDestroyed, FakeGraphEngine::script().numCreated);
}

TEST_F(PlayerLifecycle, droppingARunningPlayerLeavesNoTextureAndNoFramebufferBehind) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99, 1, PlayParams::loop)).get(), Status::ok);
    waitUntilReady(2);
    ASSERT_EQ(host.countTextures(), 4);
    player.reset();
    EXPECT_EQ(host.countTextures(), 0);
    EXPECT_EQ(host.countFramebuffers(), 0);
}

TEST_F(PlayerLifecycle, commandsPostedBeforeUninitializeAreStillExecuted) {
    start();
    std::latch rendering(1);
    std::latch proceed(1);
    FakeGraphEngine::callBeforeRender([&](int64 frame) {
        if (frame != 1) return;
        rendering.count_down();
        proceed.wait();
    });
    SharedPtr<VideoBuffer> first;
    std::thread waitingHost([&] { (void)player->getVideoBuffer(1, first); });
    rendering.wait();
    Status updated = Status::general_failure;
    std::thread secondHost([&] { updated = player->setVideoFrameRate(Rational(25, 1)); });
    proceed.count_down();
    waitingHost.join();
    secondHost.join();
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(updated.get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::countOf("setVideoFrameRate 25/1"), 1);
}

TEST_F(PlayerLifecycle, aPoolThatCannotBeSetUpIsReportedAndThePlayerStillRuns) {
    player = Player::create(VideoBufferResolution(16, 8, 2, 8, false), FakeGraphEngine::create);
    EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), 262);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 10)).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), 260);
    EXPECT_FALSE(buffer);
    EXPECT_EQ(player->uninitialize().get(), Status::ok);
}

TEST_F(PlayerLifecycle, aFactoryThatMakesNoneLeavesAPlayerThatAnswersEveryCall) {
    for (auto const factory :
         {&FakeGraphEngine::createNone, static_cast<SharedPtr<GraphEngineInterface> (*)()>(nullptr)}) {
        player = Player::create(smallRgba8, factory);
        ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        EXPECT_EQ(setComposition(FakeComposition::create(0, 10)).get(), Status::general_failure);
        SharedPtr<VideoBuffer> buffer;
        EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), 265);
        EXPECT_EQ(player->startProducing(playParams(0, 0, 5)).get(), 265);
        Vector<String> names;
        EXPECT_EQ(player->getPrefs(names).get(), Status::general_failure);
        EXPECT_EQ(player->setPref("FAKE_QUALITY", 1).get(), Status::general_failure);
        EXPECT_FALSE(player->getTokenResolver());
        EXPECT_EQ(player->fillAudioBuffer(nullptr, 0, 0).get(), Status::general_failure);
        EXPECT_EQ(player->uninitialize().get(), Status::ok);
    }
}

TEST_F(PlayerLifecycle, anInvalidFormatLeavesThePlayerRunningWithoutBuffers) {
    player = Player::create(VideoBufferResolution(), FakeGraphEngine::create);
    EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 10)).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), 260);
    // A valid format later on repairs it: a head count changes the pools' size and sets them up.
    EXPECT_EQ(player->setVideoResolution(smallRgba8).get(), Status::ok);
    EXPECT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 3).get(), Status::ok);
    EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), Status::ok);
}

// ---- OpenGL objects

TEST_F(PlayerLifecycle, uninitializeLeavesNoTextureAndNoFramebufferInTheHostsShareGroup) {
    start();
    EXPECT_EQ(host.countTextures(), 4);  // head + tail + 2
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(5, buffer).get(), Status::ok);
    buffer.reset();
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(host.countTextures(), 0);
    EXPECT_EQ(host.countFramebuffers(), 0);
}

TEST_F(PlayerLifecycle, aFrameHeldBeyondUninitializeStaysValidAndLeavesNoTextureBehind) {
    start();
    SharedPtr<VideoBuffer> held;
    ASSERT_EQ(player->getVideoBuffer(5, held).get(), Status::ok);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(host.countTextures(), 0);
    unsigned int texture = 77;
    EXPECT_EQ(held->getTexture(texture).get(), Status::ok);
    EXPECT_EQ(texture, 0u);
    EXPECT_EQ(held->getResolution(), smallRgba8);
    player.reset();
    held.reset();
    EXPECT_EQ(host.countTextures(), 0);
}

TEST_F(PlayerLifecycle, aFrameInMemoryHeldBeyondThePlayerKeepsItsPixels) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    SharedPtr<VideoBuffer> held;
    ASSERT_EQ(player->getVideoBuffer(77, held).get(), Status::ok);
    ASSERT_EQ(player->setVideoResolution(VideoBufferResolution(64, 64, 4, 8, false)).get(), Status::ok);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    player.reset();
    EXPECT_EQ(frameIn(held), 77);
}

TEST_F(PlayerLifecycle, aFrameOfAnOldResolutionDroppedOnAHostThreadLeavesNoTextureBehind) {
    start();
    SharedPtr<VideoBuffer> held;
    ASSERT_EQ(player->getVideoBuffer(5, held).get(), Status::ok);
    ASSERT_EQ(player->setVideoResolution(VideoBufferResolution(32, 32, 4, 8, false)).get(), Status::ok);
    EXPECT_EQ(frameIn(held), 5) << "a held frame survives a change of resolution";
    std::thread([&] { held.reset(); }).join();  // no context is current there
    drain();
    EXPECT_EQ(host.countTextures(), 4);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(host.countTextures(), 0);
}

TEST_F(PlayerLifecycle, aFrameDroppedWhileTheHostsContextIsCurrentSparesTheHostsFramebuffers) {
    // Framebuffer names are not shared: the host's may be the same as the player's.
    GLuint own[16] = {};
    host.gl().glGenFramebuffers(16, own);
    for (const GLuint name : own)
        host.gl().glBindFramebuffer(GL_FRAMEBUFFER, name);
    start();
    SharedPtr<VideoBuffer> held;
    ASSERT_EQ(player->getVideoBuffer(5, held).get(), Status::ok);
    ASSERT_EQ(player->setVideoResolution(VideoBufferResolution(32, 32, 4, 8, false)).get(), Status::ok);
    held.reset();
    drain();
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    for (const GLuint name : own)
        EXPECT_TRUE(host.gl().glIsFramebuffer(name)) << name;
}

}  // namespace QRT_0_81
