#include "qrtBenchmarkGraphEngine.h"

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

Status BenchmarkComposition::getStartTime(Time& start) const {
    start = Time(0, Rational(24, 1));
    return Status();
}

Status BenchmarkComposition::getDuration(Time& duration) const {
    duration = Time(m_numFrames, Rational(24, 1));
    return Status();
}

SharedPtr<GraphEngineInterface> BenchmarkGraphEngine::create() {
    return SharedPtr<GraphEngineInterface>(new BenchmarkGraphEngine);
}

Status BenchmarkGraphEngine::renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    if (frame != bareLoopFrame) {
        drawQuad(resolution, frame, texture);
        return Status();
    }
    if (!m_bareLoop || !(m_bareLoopResolution == resolution)) {
        m_bareLoop = std::make_unique<BareLoop>(resolution);
        m_bareLoopResolution = resolution;
    }
    const double seconds = m_bareLoop->run(
        bareLoopLength, [&](int bareFrame, GLuint bareTexture) { drawQuad(resolution, bareFrame, bareTexture); });
    bareSecondsPerFrame = seconds / bareLoopLength;
    return Status();
}

void BenchmarkGraphEngine::drawQuad(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    if (!m_quad) m_quad = std::make_unique<QuadRenderer>();
    auto& gl = *QOpenGLContext::currentContext()->extraFunctions();
    GLuint framebuffer = 0;
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    m_quad->draw(resolution.getWidth(), resolution.getHeight(), static_cast<float>(frame % 100) / 100.0f);
    gl.glDeleteFramebuffers(1, &framebuffer);
}

Status BenchmarkGraphEngine::setStep(int32 step) {
    m_step = step;
    return Status();
}

}  // namespace QRT_0_81
