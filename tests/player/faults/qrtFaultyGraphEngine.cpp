#include "faults/qrtFaultyGraphEngine.h"

#include <map>
#include <mutex>
#include <utility>

namespace QRT_0_81 {

namespace {

struct Hooks {
    std::mutex mutex;
    std::map<std::string, FaultyGraphEngine::Hook> before;  // under mutex
    std::map<std::string, FaultyGraphEngine::Hook> after;   // under mutex
};

Hooks& hooks() {
    static Hooks instance;
    return instance;
}

void run(std::map<std::string, FaultyGraphEngine::Hook> const& which, char const* operation) {
    FaultyGraphEngine::Hook hook;
    {
        const std::lock_guard lock(hooks().mutex);
        const auto found = which.find(operation);
        if (found != which.end()) hook = found->second;
    }
    if (hook) hook();
}

/// Does an operation between its two hooks.
template <class Work>
auto between(char const* operation, Work const& work) {
    run(hooks().before, operation);
    auto result = work();
    run(hooks().after, operation);
    return result;
}

}  // namespace

SharedPtr<GraphEngineInterface> FaultyGraphEngine::create() {
    return between("create", [] { return SharedPtr<GraphEngineInterface>(new FaultyGraphEngine); });
}

void FaultyGraphEngine::before(std::string const& operation, Hook hook) {
    const std::lock_guard lock(hooks().mutex);
    hooks().before[operation] = std::move(hook);
}

void FaultyGraphEngine::after(std::string const& operation, Hook hook) {
    const std::lock_guard lock(hooks().mutex);
    hooks().after[operation] = std::move(hook);
}

void FaultyGraphEngine::behave() {
    const std::lock_guard lock(hooks().mutex);
    hooks().before.clear();
    hooks().after.clear();
}

Status FaultyGraphEngine::setPref(String const& name, int value) {
    return between("setPref", [&] { return m_base.setPref(name, value); });
}

Status FaultyGraphEngine::getPref(String const& name, int& value) const {
    return between("getPref", [&] { return m_base.getPref(name, value); });
}

Status FaultyGraphEngine::getPrefs(Vector<String>& names) const {
    return between("getPrefs", [&] { return m_base.getPrefs(names); });
}

Status FaultyGraphEngine::setGLContext(QOpenGLContext* context) {
    return between("setGLContext", [&] { return m_base.setGLContext(context); });
}

Status FaultyGraphEngine::setComposition(SharedPtr<Composition> const& composition,
                                         List<SharedPtr<ExternalSegment>> const& segments,
                                         VideoBufferResolution const& resolution,
                                         Rational const& defaultSourceVideoFrameRate) {
    return between("setComposition", [&] {
        return m_base.setComposition(composition, segments, resolution, defaultSourceVideoFrameRate);
    });
}

Status FaultyGraphEngine::updateComposition(SharedPtr<Composition> const& composition, String const& description) {
    return between("updateComposition", [&] { return m_base.updateComposition(composition, description); });
}

Status FaultyGraphEngine::renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    return between("renderFrame", [&] { return m_base.renderFrame(resolution, frame, texture); });
}

Status FaultyGraphEngine::fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                                    size_t position) {
    return between("fillAudio", [&] { return m_base.fillAudio(format, buffer, bytes, position); });
}

Status FaultyGraphEngine::setVideoFrameRate(Rational const& rate) {
    return between("setVideoFrameRate", [&] { return m_base.setVideoFrameRate(rate); });
}

Rational FaultyGraphEngine::getVideoFrameRate() const {
    return between("getVideoFrameRate", [&] { return m_base.getVideoFrameRate(); });
}

SharedPtr<TokenResolver> FaultyGraphEngine::getTokenResolver() const {
    return between("getTokenResolver", [&] { return m_base.getTokenResolver(); });
}

Status FaultyGraphEngine::clearCache() {
    return between("clearCache", [&] { return m_base.clearCache(); });
}

Status FaultyGraphEngine::getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const {
    return between("getCacheStats", [&] { return m_base.getCacheStats(type, stats); });
}

Status FaultyGraphEngine::setStep(int32 step) {
    return between("setStep", [&] { return m_base.setStep(step); });
}

int32 FaultyGraphEngine::getStep() const {
    return between("getStep", [&] { return m_base.getStep(); });
}

}  // namespace QRT_0_81
