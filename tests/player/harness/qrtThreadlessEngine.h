#pragma once

#include <stdexcept>
#include <vector>

#include "harness/qrtFakeComposition.h"
#include "harness/qrtIdleGraphEngine.h"
#include "harness/qrtPlayerImplInspector.h"

namespace QRT_0_81 {

/// An engine without a thread and without OpenGL, for measurements of single steps: the caller's own thread takes the
/// player thread's place, and frames are small blocks of memory that nobody renders.
class ThreadlessEngine final {
public:
    using Inspector = PlayerImplInspector;

    /// Looks `numHeadFrames` ahead and holds at most `numFrames` frames.
    ThreadlessEngine(int32 numHeadFrames, uint64 numFrames) : m_engine(resolution, IdleGraphEngine::create) {
        check(m_pool->setup(numFrames, ResourcePool::SizeUnit::buffers, resolution));
        check(m_engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, numHeadFrames));
        check(Inspector::setComposition(m_engine, FakeComposition::create(0, numCompositionFrames)));
        Inspector::setInitialized(m_engine, true);
    }
    ~ThreadlessEngine() {
        if (Inspector::isProducing(m_engine)) (void)Inspector::stopProducing(m_engine);
        discardCommands();
        Inspector::setInitialized(m_engine, false);  // there is no thread to be ended
    }
    ThreadlessEngine(ThreadlessEngine const&) = delete;
    ThreadlessEngine& operator=(ThreadlessEngine const&) = delete;

    [[nodiscard]] PlayerImpl& engine() { return m_engine; }

    void startProducing(int64 currentFrame) {
        const Rational rate(24, 1);
        check(Inspector::startProducing(
            m_engine, PlayParams::create(Time(currentFrame, rate), Time(0, rate), Time(numCompositionFrames, rate),
                                         rate, 1, PlayParams::single, PlayParams::video_only)));
        discardCommands();
    }
    [[nodiscard]] SharedPtr<VideoBuffer> newBuffer() { return VideoBufferPrivate::create(m_pool, true); }
    void put(int64 frame) { check(Inspector::cachePut(m_engine, frame, newBuffer())); }
    void put(int64 first, int64 last) {
        for (int64 frame = first; frame <= last; ++frame)
            put(frame);
    }
    /// Makes a cached frame the most recently used one.
    void touch(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        check(Inspector::cacheGet(m_engine, frame, buffer));
    }
    void discardCommands() { Inspector::queue(m_engine).discardAll(); }

    static void check(Status const& status) {
        if (status.failure()) throw std::runtime_error(status.toString().c_str());
    }

private:
    static constexpr int64 numCompositionFrames = 1'000'000;
    static constexpr VideoBufferResolution resolution{16, 16, 4, 8, false};

    const SharedPtr<ResourcePoolRAM> m_pool = ResourcePoolRAM::create();
    PlayerImpl m_engine;
};

}  // namespace QRT_0_81
