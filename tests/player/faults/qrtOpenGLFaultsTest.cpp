// An OpenGL that fails, native contexts that are none, and no thread to be had.
#include "faults/qrtFaultsFixture.h"
#include "faults/qrtOpenGLFaults.h"

namespace QRT_0_81 {

using Operation = OpenGLFault::Operation;

/// One of the steps in which `initialize` gets at its contexts.
struct ContextStep {
    char const* name;
    Operation operation;
    int skip;
};

class ContextFaults : public FaultsFixture, public ::testing::WithParamInterface<ContextStep> {};

TEST_P(ContextFaults, areAFailureWithAMessageAndThePlayerEndsAndBeginsAnew) {
    {
        const OpenGLFault fault(GetParam().operation, GetParam().skip);
        EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::general_failure);
        EXPECT_GT(fault.count(), 0);
    }
    EXPECT_TRUE(isToldOf("initialize() failed: "));
    (void)setComposition(FakeComposition::create(0, 100));
    EXPECT_NE(fetch(1).get(), Status::ok);
    EXPECT_NE(player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 5).get(), Status::ok);
    EXPECT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    EXPECT_EQ(player->uninitialize().get(), Status::ok);
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    expectWorking();
}

// The first context only tells whether Qt works through GLX or EGL, the second is the host's, the third the player's.
INSTANTIATE_TEST_SUITE_P(In, ContextFaults,
                         ::testing::Values(ContextStep{"creatingTheProbe", Operation::createContext, 0},
                                           ContextStep{"adoptingTheHostsContext", Operation::createContext, 1},
                                           ContextStep{"creatingThePlayersContext", Operation::createContext, 2},
                                           ContextStep{"makingTheProbeCurrent", Operation::makeCurrent, 0},
                                           ContextStep{"makingThePlayersContextCurrent", Operation::makeCurrent, 1}),
                         [](auto const& step) { return step.param.name; });

class OpenGLFaults : public FaultsFixture {};

TEST_F(OpenGLFaults, aThreadThatCannotBeStartedIsAFailureAndNobodyWaitsForIt) {
    {
        const OpenGLFault fault(Operation::startThread);
        EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::general_failure);
    }
    EXPECT_TRUE(isToldOf("initialize() failed: the player thread cannot be started"));
    EXPECT_EQ(player->uninitialize().get(), Status::not_initialized);
    start();
    expectWorking();
}

TEST_F(OpenGLFaults, aContextThatIsLostForGoodFailsTheFramesAndThePlayerEnds) {
    start();
    FaultyGraphEngine::after("renderFrame", [] { QOpenGLContext::currentContext()->doneCurrent(); });
    {
        const OpenGLFault fault(Operation::makeCurrent);
        EXPECT_EQ(fetch(1).get(), Status::graphics_failure);
        FaultyGraphEngine::behave();
        EXPECT_EQ(fetch(2).get(), Status::graphics_failure) << "nothing is called without a context";
    }
    EXPECT_TRUE(isToldOf("the OpenGL context cannot be made current again"));
    expectWorking();
}

class PixelBuffersThatFail : public FaultsFixture, public ::testing::WithParamInterface<ContextStep> {};

TEST_P(PixelBuffersThatFail, failTheFrameWithAMessageAndTheNextOneIsRead) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    for (int64 frame = 0; frame < 6; ++frame) {  // more than there are resources
        const OpenGLFault fault(GetParam().operation, GetParam().skip);
        EXPECT_EQ(fetch(frame).get(), Status::graphics_failure);
        EXPECT_EQ(fault.count(), 1);
        EXPECT_FALSE(player->isVideoBufferReady(frame));
    }
    EXPECT_TRUE(isToldOf("PlayerImpl::_copyVideoBuffer()"));
    expectWorking();
}

TEST_P(PixelBuffersThatFail, pauseARunThatANewFetchResumes) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    {
        const OpenGLFault fault(GetParam().operation, GetParam().skip);
        ASSERT_EQ(player->startProducing(playParams(10, 0, 99)).get(), Status::ok);
        log.waitFor("Stop producing because status failure = 274");
    }
    ASSERT_EQ(fetch(10).get(), Status::ok);
    waitUntilReady(12);
}

INSTANTIATE_TEST_SUITE_P(In, PixelBuffersThatFail,
                         ::testing::Values(ContextStep{"creating", Operation::createBuffer, 0},
                                           ContextStep{"binding", Operation::bindBuffer, 0},
                                           ContextStep{"mapping", Operation::mapBuffer, 0}),
                         [](auto const& step) { return step.param.name; });

// ---- Framebuffers that the driver does not complete

TEST_F(OpenGLFaults, incompleteFramebuffersGiveFramesWithoutATextureAndAnotherFormatWorks) {
    start();
    ASSERT_EQ(player->setVideoResolution(VideoBufferResolution(16, 8, 4, 12, false)).get(), Status::ok);
    FakeGraphEngine::script().draws = false;  // there is nothing to draw into
    for (int64 frame = 0; frame < 6; ++frame) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(fetch(frame, buffer).get(), Status::ok);
        unsigned int texture = 1;
        EXPECT_EQ(buffer->getTexture(texture).get(), Status::ok);
        EXPECT_EQ(texture, 0u);
    }
    FakeGraphEngine::script().draws = true;
    ASSERT_EQ(player->setVideoResolution(smallRgba8).get(), Status::ok);
    expectWorking();
}

// ---- Native contexts

TEST_F(OpenGLFaults, noNativeContextSharesWithNobodyAndWorks) {
    ASSERT_EQ(player->initialize(nullptr, nullptr).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    EXPECT_EQ(fetch(1).get(), Status::ok);
}

TEST_F(OpenGLFaults, aWindowWithoutAContextIsNoNativeContext) {
    ASSERT_EQ(player->initialize(nullptr, host.nativeWindow()).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    EXPECT_EQ(fetch(1).get(), Status::ok);
}

}  // namespace QRT_0_81
