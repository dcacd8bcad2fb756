#include "harness/qrtFakeGraphEngine.h"

#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <cmath>
#include <cstring>

#ifndef GL_TEXTURE_RECTANGLE
#define GL_TEXTURE_RECTANGLE 0x84F5
#endif

namespace QRT_0_81 {

namespace {

constexpr char renderPrefix[] = "renderFrame ";

std::string text(Rational const& rate) {
    return std::to_string(rate.getNumerator()) + "/" + std::to_string(rate.getDenominator());
}

}  // namespace

FakeGraphEngine::Script& FakeGraphEngine::script() {
    static Script instance;
    return instance;
}

void FakeGraphEngine::resetScript() {
    Script& current = script();
    const std::lock_guard lock(current.mutex);
    current.journal.clear();
    current.results.clear();
    current.beforeRender = {};
    current.prefs = {{"FAKE_QUALITY", 3}};
    current.frameRateToReport = Rational(24, 1);
    current.draws = true;
    current.numCreated = 0;
    current.numDestroyed = 0;
}

SharedPtr<GraphEngineInterface> FakeGraphEngine::create() {
    return SharedPtr<GraphEngineInterface>(new FakeGraphEngine);
}

std::vector<std::string> FakeGraphEngine::journal() {
    const std::lock_guard lock(script().mutex);
    return script().journal;
}

std::vector<int64> FakeGraphEngine::renderedFrames() {
    std::vector<int64> frames;
    for (std::string const& entry : journal()) {
        if (entry.rfind(renderPrefix, 0) == 0) frames.push_back(std::stoll(entry.substr(std::strlen(renderPrefix))));
    }
    return frames;
}

int FakeGraphEngine::countOf(std::string const& entry) {
    int count = 0;
    for (std::string const& known : journal())
        count += known == entry ? 1 : 0;
    return count;
}

void FakeGraphEngine::clearJournal() {
    const std::lock_guard lock(script().mutex);
    script().journal.clear();
}

void FakeGraphEngine::answer(std::string const& operation, int statusType) {
    const std::lock_guard lock(script().mutex);
    script().results[operation] = statusType;
}

void FakeGraphEngine::callBeforeRender(std::function<void(int64)> hook) {
    const std::lock_guard lock(script().mutex);
    script().beforeRender = std::move(hook);
}

Status FakeGraphEngine::note(std::string const& operation, std::string const& details) {
    const std::lock_guard lock(script().mutex);
    script().journal.push_back(details.empty() ? operation : operation + " " + details);
    const auto result = script().results.find(operation);
    return result == script().results.end() ? Status() : Status(static_cast<Status::Type>(result->second));
}

FakeGraphEngine::FakeGraphEngine() : m_tokenResolver(new TokenResolver) {
    ++script().numCreated;
}

FakeGraphEngine::~FakeGraphEngine() {
    const bool isItsContextCurrent = m_context && QOpenGLContext::currentContext() == m_context;
    (void)note(isItsContextCurrent ? "destroyed with its context" : "destroyed without its context");
    ++script().numDestroyed;
}

Status FakeGraphEngine::setPref(String const& name, int value) {
    const Status status = note("setPref", std::string(name.c_str()) + " " + std::to_string(value));
    if (status.failure()) return status;
    const std::lock_guard lock(script().mutex);
    const auto known = script().prefs.find(name.c_str());
    if (known == script().prefs.end()) return Status::invalid_argument;
    known->second = value;
    return status;
}

Status FakeGraphEngine::getPref(String const& name, int& value) const {
    const std::lock_guard lock(script().mutex);
    const auto known = script().prefs.find(name.c_str());
    if (known == script().prefs.end()) return Status::invalid_argument;
    value = known->second;
    return Status();
}

Status FakeGraphEngine::getPrefs(Vector<String>& names) const {
    const Status status = note("getPrefs");
    if (status.failure()) return status;
    const std::lock_guard lock(script().mutex);
    for (auto const& [name, value] : script().prefs)
        names.push_back(name.c_str());
    return status;
}

Status FakeGraphEngine::setGLContext(QOpenGLContext* context) {
    m_context = context;
    return note("setGLContext", context ? "some" : "none");
}

Status FakeGraphEngine::setComposition(SharedPtr<Composition> const& composition,
                                       List<SharedPtr<ExternalSegment>> const& segments,
                                       VideoBufferResolution const& resolution,
                                       Rational const& defaultSourceVideoFrameRate) {
    m_composition = composition;
    m_segments = segments;
    return note("setComposition", std::to_string(segments.size()) + " segments " +
                                      std::to_string(resolution.getWidth()) + "x" +
                                      std::to_string(resolution.getHeight()) + " " + text(defaultSourceVideoFrameRate));
}

Status FakeGraphEngine::updateComposition(SharedPtr<Composition> const&, String const& description) {
    return note("updateComposition", description.c_str());
}

Status FakeGraphEngine::renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    std::function<void(int64)> hook;
    {
        const std::lock_guard lock(script().mutex);
        hook = script().beforeRender;
    }
    if (hook) hook(frame);
    const Status status = note("renderFrame", std::to_string(frame));
    if (status.failure() || !script().draws) return status;

    auto& gl = *QOpenGLContext::currentContext()->extraFunctions();
    GLuint framebuffer = 0;
    gl.glGenFramebuffers(1, &framebuffer);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    gl.glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_RECTANGLE, texture, 0);
    auto const* const fake = dynamic_cast<FakeComposition const*>(m_composition.get());
    const auto byte = [](int64 value) { return static_cast<float>(value & 255) / 255.0f; };
    gl.glClearColor(byte(frame), byte(frame >> 8), byte(fake ? fake->identity : 0), 1.0f);
    gl.glClear(GL_COLOR_BUFFER_BIT);
    gl.glEnable(GL_SCISSOR_TEST);
    gl.glScissor(0, 0, 1, 1);
    gl.glClearColor(1.0f, 1.0f, 1.0f, 1.0f);
    gl.glClear(GL_COLOR_BUFFER_BIT);
    gl.glDisable(GL_SCISSOR_TEST);
    gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);  // as careless as a graph engine may be
    gl.glDeleteFramebuffers(1, &framebuffer);
    (void)resolution;
    return status;
}

Status FakeGraphEngine::fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                                  size_t position) {
    if (buffer) std::memset(buffer, 0x5A, bytes);
    return note("fillAudio", std::string(format ? "format" : "no format") + " " + std::to_string(bytes) + " at " +
                                 std::to_string(position));
}

Status FakeGraphEngine::setVideoFrameRate(Rational const& rate) {
    const Status status = note("setVideoFrameRate", text(rate));
    if (status.failure()) return status;
    const std::lock_guard lock(script().mutex);
    script().frameRateToReport = rate;
    return status;
}

Rational FakeGraphEngine::getVideoFrameRate() const {
    const std::lock_guard lock(script().mutex);
    return script().frameRateToReport;
}

SharedPtr<TokenResolver> FakeGraphEngine::getTokenResolver() const {
    return m_tokenResolver;
}

Status FakeGraphEngine::clearCache() {
    return note("clearCache");
}

Status FakeGraphEngine::getCacheStats(CacheStats::CacheType, ConstSharedPtr<CacheStats>& stats) const {
    const Status status = note("getCacheStats");
    const SharedPtr<CacheStats> record = CacheStats::create();
    record->getFrameRanges().push_back({100, 200});
    stats = record;
    return status;
}

Status FakeGraphEngine::setStep(int32 step) {
    const Status status = note("setStep", std::to_string(step));
    if (status.success()) m_step = step;
    return status;
}

int32 FakeGraphEngine::getStep() const {
    return m_step;
}

int64 paintedFrame(float const* pixel) {
    return std::lround(pixel[0] * 255.0f) + 256 * std::lround(pixel[1] * 255.0f);
}

int paintedIdentity(float const* pixel) {
    return static_cast<int>(std::lround(pixel[2] * 255.0f));
}

}  // namespace QRT_0_81
