#include "harness/qrtFakeSegment.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <utility>

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

namespace {

std::string text(VideoBufferResolution const& resolution) {
    return std::to_string(resolution.getWidth()) + "x" + std::to_string(resolution.getHeight());
}

GLenum targetOf(unsigned int rectangle) {
    return rectangle != 0 ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D;
}

unsigned int makeTexture(GLenum target, VideoBufferResolution const& resolution) {
    auto& gl = *QOpenGLContext::currentContext()->extraFunctions();
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(target, texture);
    gl.glTexImage2D(target, 0, GL_RGBA8, resolution.getWidth(), resolution.getHeight(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                    nullptr);
    return texture;
}

void fill(unsigned int texture, GLenum target, FakeSegment::Pixel const& pixel) {
    auto& gl = *QOpenGLContext::currentContext()->extraFunctions();
    GLint bound = 0;
    gl.glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound);
    GLuint framebuffer = 0;
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, target, texture, 0);
    const auto channel = [&](size_t i) { return static_cast<float>(pixel[i]) / 255.0f; };
    const bool isScissored = gl.glIsEnabled(GL_SCISSOR_TEST) == GL_TRUE;
    gl.glDisable(GL_SCISSOR_TEST);
    gl.glClearColor(channel(0), channel(1), channel(2), channel(3));
    gl.glClear(GL_COLOR_BUFFER_BIT);
    if (isScissored) gl.glEnable(GL_SCISSOR_TEST);
    gl.glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(bound));
    gl.glDeleteFramebuffers(1, &framebuffer);
}

}  // namespace

FakeSegment::FakeSegment(char const* id, Traits const& traits) : m_id(id), m_traits(traits) {}

FakeSegment::~FakeSegment() {
    QOpenGLContext* const context = QOpenGLContext::currentContext();
    if (m_ownTexture != 0 && context) context->functions()->glDeleteTextures(1, &m_ownTexture);
}

FakeSegment::Pixel FakeSegment::pixelOf(int64 frame) const {
    return {static_cast<int>(frame & 255), m_traits.tag, revision & 255, 255};
}

std::vector<std::string> FakeSegment::journal() const {
    const std::lock_guard lock(m_mutex);
    return m_journal;
}

void FakeSegment::clearJournal() {
    const std::lock_guard lock(m_mutex);
    m_journal.clear();
}

std::vector<int64> FakeSegment::renderedFrames() const {
    const std::lock_guard lock(m_mutex);
    return m_renderedFrames;
}

void FakeSegment::callBeforeRender(std::function<void(int64)> hook) {
    const std::lock_guard lock(m_mutex);
    m_beforeRender = std::move(hook);
}

void FakeSegment::note(std::string const& entry) const {
    const std::lock_guard lock(m_mutex);
    m_journal.push_back(entry);
}

Status FakeSegment::beginRender(std::string const& entry, int64 frame) {
    note(entry);
    std::function<void(int64)> hook;
    {
        const std::lock_guard lock(m_mutex);
        m_renderedFrames.push_back(frame);
        hook = m_beforeRender;
    }
    if (hook) hook(frame);
    return static_cast<Status::Type>(renderStatus.load());
}

String const& FakeSegment::getId() const {
    ++numIdCalls;
    return m_id;
}

Subject* FakeSegment::getSubject() {
    return m_traits.hasSubject ? &subject : nullptr;
}

bool FakeSegment::isRamSegment() const {
    return m_traits.isRam;
}

bool FakeSegment::hasOwnBuffers() const {
    note("hasOwnBuffers");
    return m_traits.hasOwnBuffers;
}

void* FakeSegment::getOwnRamBuffer(VideoBufferResolution const& resolution) {
    note("getOwnRamBuffer " + text(resolution));
    return m_ownMemory.data();
}

unsigned int FakeSegment::getOwnTexture(unsigned int rectangle) {
    note("getOwnTexture " + std::to_string(rectangle));
    return m_ownTexture;
}

Status FakeSegment::renderToTexture(unsigned int texture, unsigned int rectangle,
                                    VideoBufferResolution const& resolution, Time const& time) {
    const Status status = beginRender("renderToTexture " + std::to_string(texture) + " " + std::to_string(rectangle) +
                                          " " + text(resolution) + " frame " + std::to_string(time.getNbTicks()),
                                      time.getNbTicks());
    if (status.failure()) return status;
    if (m_traits.hasOwnBuffers && m_ownTexture == 0) m_ownTexture = makeTexture(targetOf(rectangle), resolution);
    fill(m_traits.hasOwnBuffers ? m_ownTexture : texture, targetOf(rectangle), pixelOf(time.getNbTicks()));
    return status;
}

Status FakeSegment::renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                                Time const& time) {
    const Status status = beginRender(
        "renderToRam " + std::to_string(size) + " " + text(resolution) + " frame " + std::to_string(time.getNbTicks()),
        time.getNbTicks());
    if (status.failure()) return status;
    if (m_traits.hasOwnBuffers) m_ownMemory.resize(size);
    auto* const bytes = m_traits.hasOwnBuffers ? m_ownMemory.data() : static_cast<unsigned char*>(buffer);
    const Pixel pixel = pixelOf(time.getNbTicks());
    for (unsigned int i = 0; i < size; ++i)
        bytes[i] = static_cast<unsigned char>(pixel[i % 4]);
    return status;
}

}  // namespace QRT_0_81
