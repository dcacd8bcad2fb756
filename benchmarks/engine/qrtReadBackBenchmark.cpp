// The engine's read-back of one frame against a bare pixel-buffer read and copy.
#include "harness/qrtHostContext.h"
#include "harness/qrtIdleGraphEngine.h"
#include "harness/qrtPlayerImplInspector.h"
#include "qrtBareLoop.h"
#include "qrtBenchmarkSupport.h"

namespace QRT_0_81 {

namespace {

using Inspector = PlayerImplInspector;

/// Frames of 1920 x 1080, on this thread, with the framebuffer bound as the engine finds it.
void readBack(benchmark::State& state, int bits, bool isFloat, int numChannels) {
    const HostContext host;
    const VideoBufferResolution resolution(1920, 1080, numChannels, bits, isFloat);
    PlayerImpl engine(resolution, IdleGraphEngine::create);
    const auto framebuffers = ResourcePoolFBO::create(nullptr);
    const auto blocks = ResourcePoolRAM::create();
    check(framebuffers->setup(1, ResourcePool::SizeUnit::buffers, resolution));
    check(blocks->setup(1, ResourcePool::SizeUnit::buffers, resolution));
    {
        const SharedPtr<VideoBufferPrivate> rendered = VideoBufferPrivate::create(framebuffers, true);
        const SharedPtr<VideoBufferPrivate> destination = VideoBufferPrivate::create(blocks, true);
        QOpenGLFramebufferObject* framebuffer = nullptr;
        check(rendered->getFBO(framebuffer));
        framebuffer->bind();
        void* data = nullptr;
        check(destination->getData(data));
        BareReadBack bare(resolution);
        const auto readByEngine = [&] {
            const Stopwatch watch;
            check(Inspector::copyVideoBuffer(engine, rendered, destination));
            return watch.seconds();
        };
        const auto readBare = [&] {
            const Stopwatch watch;
            bare.read(data);
            return watch.seconds();
        };
        readByEngine();
        readBare();
        Pairs pairs;
        for ([[maybe_unused]] auto _ : state)
            pairs.takeTurn(readByEngine, readBare);
        pairs.report(state);
        Inspector::deletePixelBuffer(engine);
    }
    check(framebuffers->uninitialize());
}

#define QRT_READ_BACK(name, bits, isFloat, numChannels)           \
    BENCHMARK_CAPTURE(readBack, name, bits, isFloat, numChannels) \
        ->Unit(benchmark::kMillisecond)                           \
        ->Iterations(numTurns(200))

QRT_READ_BACK(rgb8, 8, false, 3);
QRT_READ_BACK(rgba8, 8, false, 4);
QRT_READ_BACK(rgb16F, 16, true, 3);
QRT_READ_BACK(rgba16F, 16, true, 4);
QRT_READ_BACK(rgb32F, 32, true, 3);
QRT_READ_BACK(rgba32F, 32, true, 4);

}  // namespace

}  // namespace QRT_0_81
