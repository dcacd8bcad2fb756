#include "qrtStressGraphEngine.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <cstring>
#include <stdexcept>

#include "player/qrtPlayer.h"
#include "qrtStressTags.h"

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

namespace {

std::atomic<int> numEngines{0};

QOpenGLExtraFunctions& gl() {
    return *QOpenGLContext::currentContext()->extraFunctions();
}

bool happens(StressFault fault, unsigned odds) {
    return stressWorld()->happens(fault, odds);
}

Status failing(StressFault fault, unsigned odds) {
    return happens(fault, odds) ? injectedFailure : Status::ok;
}

/// A texture as what is drawn into and read from, for one scope.
class Canvas final {
public:
    explicit Canvas(GLuint texture) {
        gl().glGenFramebuffers(1, &m_framebuffer);
        gl().glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        gl().glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    }
    ~Canvas() {
        gl().glBindFramebuffer(GL_FRAMEBUFFER, 0);
        gl().glDeleteFramebuffers(1, &m_framebuffer);
    }
    Canvas(Canvas const&) = delete;
    Canvas& operator=(Canvas const&) = delete;

private:
    GLuint m_framebuffer = 0;
};

void paint(uint32 texture, int64 frame, uint32 generation) {
    const auto byte = [](int64 value) { return static_cast<float>(value & 255) / 255.0f; };
    const Canvas canvas(texture);
    gl().glClearColor(byte(frame), byte(frame >> 8), byte(generation), byte(generation >> 8));
    gl().glClear(GL_COLOR_BUFFER_BIT);
}

/// What a careless graph engine leaves behind.
void leaveState() {
    gl().glEnable(GL_SCISSOR_TEST);
    gl().glScissor(0, 0, 1, 1);
    gl().glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    gl().glEnable(0xFFFF);  // an error
}

/// A scratch texture of the frame's format, for one scope.
class Scratch final {
public:
    Scratch(VideoBufferResolution const& resolution, void const* pixels) {
        gl().glGenTextures(1, &m_name);
        gl().glBindTexture(GL_TEXTURE_RECTANGLE, m_name);
        gl().glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_RGBA8, resolution.getWidth(), resolution.getHeight(), 0, GL_RGBA,
                          GL_UNSIGNED_BYTE, pixels);
    }
    ~Scratch() { gl().glDeleteTextures(1, &m_name); }
    Scratch(Scratch const&) = delete;
    Scratch& operator=(Scratch const&) = delete;

    [[nodiscard]] GLuint name() const { return m_name; }

private:
    GLuint m_name = 0;
};

void copyColumns(GLuint from, GLuint to, int column, VideoBufferResolution const& resolution) {
    const Canvas source(from);
    gl().glBindTexture(GL_TEXTURE_RECTANGLE, to);
    gl().glCopyTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, column, 0, column, 0, StressGraphEngine::segmentWidth,
                             resolution.getHeight());
}

}  // namespace

SharedPtr<GraphEngineInterface> StressGraphEngine::create() {
    return SharedPtr<GraphEngineInterface>(new StressGraphEngine);
}

int StressGraphEngine::numAlive() {
    return numEngines;
}

StressGraphEngine::StressGraphEngine() {
    ++numEngines;
}

StressGraphEngine::~StressGraphEngine() {
    --numEngines;
}

Status StressGraphEngine::setPref(String const&, int) {
    return failing(StressFault::pref_fails, 4);
}

void StressGraphEngine::adopt(SharedPtr<Composition> const& composition) {
    auto const* const known = dynamic_cast<StressComposition const*>(composition.get());
    if (known) m_generation = known->generation;
}

Status StressGraphEngine::setComposition(SharedPtr<Composition> const& composition,
                                         List<SharedPtr<ExternalSegment>> const& segments, VideoBufferResolution const&,
                                         Rational const&) {
    adopt(composition);
    m_segments = segments;
    if (happens(StressFault::composition_throws, 32)) throw std::runtime_error("a composition's fault");
    if (happens(StressFault::composition_is_incomplete, 16)) return Status::composition_incomplete;
    return failing(StressFault::composition_fails, 16);
}

Status StressGraphEngine::updateComposition(SharedPtr<Composition> const& composition, String const&) {
    adopt(composition);
    return failing(StressFault::update_fails, 8);
}

Status StressGraphEngine::renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    if (happens(StressFault::render_calls_back, 64)) {
        // What would wait for this thread must not; what waits for nobody may be asked.
        Player* const player = stressWorld()->player;
        int value = 0;
        const Status status = player->getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, value);
        stressWorld()->require(status == Status::general_failure, "a call that would wait for its own thread fails");
        (void)player->isVideoBufferReady(frame);
    }
    if (happens(StressFault::render_throws, 128)) throw std::runtime_error("a graph engine's fault");
    if (happens(StressFault::render_fails, 64)) return injectedFailure;
    if (happens(StressFault::render_draws_nothing, 128)) {
        stressWorld()->isUndrawn(frame) = true;
        return Status();
    }
    paint(texture, frame, m_generation);
    const Status status = showsStressSegments(m_generation) ? drawSegments(resolution, frame, texture) : Status();
    if (happens(StressFault::render_leaves_state, 32)) leaveState();
    return status;
}

Status StressGraphEngine::drawSegments(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    const Time time(frame, getVideoFrameRate());
    int column = 0;
    for (auto const& segment : m_segments) {
        std::vector<unsigned char> memory(segment->isRamSegment() ? resolution.getBufferSize() : 0);
        if (segment->isRamSegment()) {
            const auto size = static_cast<unsigned int>(memory.size());
            const Status status = segment->renderToRam(memory.data(), size, resolution, time);
            if (status.failure()) return status;
        }
        const Scratch scratch(resolution, memory.empty() ? nullptr : memory.data());
        if (!segment->isRamSegment()) {
            const Status status = segment->renderToTexture(scratch.name(), 1, resolution, time);
            if (status.failure()) return status;
        }
        copyColumns(scratch.name(), texture, column, resolution);
        column += segmentWidth;
    }
    return Status();
}

Status StressGraphEngine::fillAudio(ConstSharedPtr<AudioFormatInterface> const&, char* buffer, size_t bytes, size_t) {
    if (buffer) std::memset(buffer, 0x5A, bytes);
    return failing(StressFault::audio_fails, 8);
}

Status StressGraphEngine::setVideoFrameRate(Rational const& rate) {
    const Status status = failing(StressFault::rate_fails, 8);
    if (status.success()) m_framesPerSecond = rate.getNumerator();
    return status;
}

Rational StressGraphEngine::getVideoFrameRate() const {
    return {m_framesPerSecond, 1};
}

Status StressGraphEngine::setStep(int32 step) {
    if (const Status status = failing(StressFault::step_fails, 16); status.failure()) return status;
    return IdleGraphEngine::setStep(step);
}

}  // namespace QRT_0_81
