#include "qrtBenchmarkGraphEngine.h"

#include <pthread.h>

#include <utility>

#include "qrtBenchmarkSupport.h"

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

using Script = BenchmarkScript;

namespace {

long allocations() {
    return Script::allocationsOfThisThread ? Script::allocationsOfThisThread() : 0;
}

}  // namespace

SharedPtr<GraphEngineInterface> BenchmarkGraphEngine::create() {
    return SharedPtr<GraphEngineInterface>(new BenchmarkGraphEngine);
}

Status BenchmarkGraphEngine::setComposition(SharedPtr<Composition> const& composition,
                                            List<SharedPtr<ExternalSegment>> const& segments,
                                            VideoBufferResolution const& resolution, Rational const& sourceRate) {
    const Stopwatch watch;
    const Status status = IdleGraphEngine::setComposition(composition, segments, resolution, sourceRate);
    clockid_t clock{};
    pthread_getcpuclockid(pthread_self(), &clock);
    Script::playerClock = clock;
    Script::setCompositionSeconds = watch.seconds();
    return status;
}

Status BenchmarkGraphEngine::renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    if (const int numFrames = Script::numBareFrames.exchange(0)) runBareLoop(resolution, numFrames);
    if (const auto work = std::exchange(Script::withBareFrame, nullptr)) work([&] { runBareLoop(resolution, 1); });
    draw(resolution, frame, texture);
    if (Script::lastFrame.exchange(frame) < frame) {
        ++Script::numNewFrames;
        const double now = steadySeconds();
        Script::longestGapSeconds = std::max<double>(Script::longestGapSeconds, now - Script::newFrameAt.exchange(now));
    }
    return Status();
}

void BenchmarkGraphEngine::runBareLoop(VideoBufferResolution const& resolution, int numFrames) {
    if (!m_bareLoop) m_bareLoop = std::make_unique<BareLoop>(resolution, Script::readsBack);
    const auto render = [&](int frame, GLuint texture) { draw(resolution, frame, texture); };
    const long allocationsBefore = allocations();
    const double cpuBefore = secondsOf(CLOCK_THREAD_CPUTIME_ID);
    const Stopwatch watch;
    m_bareLoop->run(numFrames, render);
    Script::bareSecondsPerFrame = watch.seconds() / numFrames;
    Script::bareCpuSecondsPerFrame = (secondsOf(CLOCK_THREAD_CPUTIME_ID) - cpuBefore) / numFrames;
    Script::bareAllocationsPerLoop = allocations() - allocationsBefore;
}

void BenchmarkGraphEngine::draw(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    if (!Script::drawsQuad) return;
    if (!m_quad) m_quad = std::make_unique<QuadRenderer>();
    auto& gl = *QOpenGLContext::currentContext()->extraFunctions();
    GLuint framebuffer = 0;
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    m_quad->draw(resolution.getWidth(), resolution.getHeight(), static_cast<float>(frame % 100) / 100.0f);
    gl.glDeleteFramebuffers(1, &framebuffer);
}

}  // namespace QRT_0_81
