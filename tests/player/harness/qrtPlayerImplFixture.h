#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtHostContext.h"
#include "harness/qrtPlayerImplInspector.h"

namespace QRT_0_81 {

/// An engine without a thread: the test's own thread, with the host's context current, takes the player thread's place
/// and sees every command that is posted.
class PlayerImplFixture : public ::testing::Test {
protected:
    using Inspector = PlayerImplInspector;
    using SizeUnit = ResourcePool::SizeUnit;
    using Frames = std::vector<int64>;
    using CmdTypes = std::vector<CmdType>;

    PlayerImplFixture() {
        FakeGraphEngine::resetScript();
        makeEngine(VideoBufferResolution(16, 8, 4, 8, false));
    }
    ~PlayerImplFixture() override {
        host.makeCurrent();
        engine.reset();
        FakeGraphEngine::resetScript();
    }

    /// An engine with four framebuffers and frames -100 to 199.
    void makeEngine(VideoBufferResolution const& format) {
        engine = std::make_unique<PlayerImpl>(format, FakeGraphEngine::create);
        setFramebuffers(4);
        ASSERT_EQ(Inspector::setComposition(*engine, FakeComposition::create(-100, 300)).get(), Status::ok);
    }
    void setFramebuffers(uint64 count) {
        const VideoBufferResolution format = engine->getVideoResolution();
        ASSERT_EQ(Inspector::fboPool(*engine).setup(count, SizeUnit::buffers, format).get(), Status::ok);
    }
    /// Switches to frames in memory.
    void setBlocks(uint64 count) {
        const VideoBufferResolution format = engine->getVideoResolution();
        ASSERT_EQ(engine->setRamOutputs(true).get(), Status::ok);
        ASSERT_EQ(Inspector::ramPool(*engine).setup(count, SizeUnit::buffers, format).get(), Status::ok);
    }

    static SharedPtr<PlayParams> params(int64 current, int64 start, int64 end,
                                        PlayParams::PlayMode mode = PlayParams::single) {
        const Rational rate(24, 1);
        return PlayParams::create(Time(current, rate), Time(start, rate), Time(end - start + 1, rate), rate, 1, mode,
                                  PlayParams::video_only);
    }
    /// Starts a run and forgets what that posts.
    void startRun(SharedPtr<PlayParams> const& playParams) {
        ASSERT_EQ(Inspector::startProducing(*engine, playParams).get(), Status::ok);
        queue().discardAll();
        FakeGraphEngine::clearJournal();
    }

    CommandQueue& queue() { return Inspector::queue(*engine); }
    /// Takes all that is posted.
    CmdTypes posted() {
        CmdTypes types;
        while (queue().size() != 0)
            types.push_back(queue().take()->type());
        return types;
    }
    int64 currentFrame() { return Inspector::playParams(*engine).getCurrentFrame(); }
    bool isCached(int64 frame) { return Inspector::cacheContains(*engine, frame); }
    SharedPtr<VideoBuffer> produce(int64 frame, bool onDemand = true) {
        SharedPtr<VideoBuffer> buffer;
        EXPECT_EQ(Inspector::produceVideoBuffer(*engine, frame, onDemand, buffer).get(), Status::ok);
        return buffer;
    }
    size_t numFreeFramebuffers() {
        ResourcePoolFBO& pool = Inspector::fboPool(*engine);
        std::vector<QOpenGLFramebufferObject*> all;
        while (QOpenGLFramebufferObject* const fbo = pool.lock(true))
            all.push_back(fbo);
        for (QOpenGLFramebufferObject* const fbo : all)
            pool.release(fbo);
        return all.size();
    }

    HostContext host;
    std::unique_ptr<PlayerImpl> engine;
};

}  // namespace QRT_0_81
