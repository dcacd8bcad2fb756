#include "graph/qrtMediaGraphEngine.h"

#include <QOpenGLContext>
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "foundation/core/qrtPlatform.h"
#include "timeline/qrtRetiming.h"

namespace qrtplay {

namespace {

constexpr size_t bytesPerMiB = size_t{1} << 20;

int initialCacheInMiB() {
    constexpr int usual = static_cast<int>(DecodedFrameCache::defaultBudgetInBytes / bytesPerMiB);
    const char* const fixed = Platform::getenv(("QRT_PREF_" + MediaGraphEngine::DECODE_CACHE_MIB).c_str());
    return fixed ? std::max(0, std::atoi(fixed)) : usual;
}

}  // namespace

const String MediaGraphEngine::DECODE_CACHE_MIB("QRTPLAY_DECODE_CACHE_MIB");

MediaGraphEngine::MediaGraphEngine() : m_cacheInMiB(initialCacheInMiB()) {}

SharedPtr<GraphEngineInterface> MediaGraphEngine::create() {
    return SharedPtr<GraphEngineInterface>(new MediaGraphEngine());
}

// Without its context what was made cannot be deleted; with another it would be somebody else's that is.
MediaGraphEngine::~MediaGraphEngine() {
    if (m_context && QOpenGLContext::currentContext() == m_context) m_painter.release(*m_context->extraFunctions());
}

Status MediaGraphEngine::setPref(String const& name, int value) {
    if (!(name == DECODE_CACHE_MIB) || value < 0) return Status::invalid_argument;
    std::shared_ptr<VideoDecoder> decoder;
    {
        const std::lock_guard lock(m_mutex);
        m_cacheInMiB = value;
        decoder = m_source.decoder;
    }
    if (decoder) decoder->cache().setBudget(static_cast<size_t>(value) * bytesPerMiB);
    return Status();
}

Status MediaGraphEngine::getPref(String const& name, int& value) const {
    if (!(name == DECODE_CACHE_MIB)) return Status::invalid_argument;
    const std::lock_guard lock(m_mutex);
    value = m_cacheInMiB;
    return Status();
}

Status MediaGraphEngine::getPrefs(Vector<String>& names) const {
    names.push_back(DECODE_CACHE_MIB);
    return Status();
}

Status MediaGraphEngine::setGLContext(QOpenGLContext* context) {
    m_context = context;
    return Status();
}

Status MediaGraphEngine::setComposition(SharedPtr<Composition> const& composition,
                                        List<SharedPtr<ExternalSegment>> const& segments, VideoBufferResolution const&,
                                        Rational const&) {
    // Every clip has a rate of its own here: the demuxer finds one where the file states none.
    const Status status = adopt(composition, false);
    if (status.success() && !segments.empty()) return Status::composition_incomplete;
    return status;
}

Status MediaGraphEngine::updateComposition(SharedPtr<Composition> const& composition, String const&) {
    return adopt(composition, true);
}

Status MediaGraphEngine::adopt(SharedPtr<Composition> const& composition, bool keepRate) {
    Source adopted;
    Status status;
    adopted.composition = dynamicPtrCast<MediaComposition>(composition);
    if (!composition) {
        status = Status::no_composition;
    } else if (!adopted.composition) {
        status = Status::invalid_argument;
    } else {
        std::unique_ptr<VideoDecoder> decoder;
        if (VideoDecoder::open(adopted.composition->file(), decoder).failed()) status = Status::general_failure;
        adopted.decoder = std::move(decoder);
    }
    if (status.failure()) adopted = Source();

    const std::lock_guard lock(m_mutex);
    if (adopted.decoder) adopted.decoder->cache().setBudget(static_cast<size_t>(m_cacheInMiB) * bytesPerMiB);
    if (adopted.composition && !keepRate) m_rate = adopted.composition->file()->facts().frameRate;
    std::swap(m_source, adopted);  // the old one ends after the lock does
    return status;
}

MediaGraphEngine::Source MediaGraphEngine::source() const {
    const std::lock_guard lock(m_mutex);
    return m_source;
}

Status MediaGraphEngine::renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) {
    if (!resolution.isValid() || texture == 0) return Status::invalid_argument;
    if (!m_context || QOpenGLContext::currentContext() != m_context) return Status::general_failure;
    const Source current = source();
    if (!current.composition) return Status::no_composition;

    const int64 sourceFrame =
        sourceFrameOf(frame, getVideoFrameRate(), current.composition->file()->facts().frameRate);
    const Outcome outcome = draw(current, sourceFrame, {texture, resolution.getWidth(), resolution.getHeight()});
    if (outcome.success()) return Status();
    current.composition->noteFailure(frame, outcome.message());
    return Status::general_failure;
}

Outcome MediaGraphEngine::draw(Source const& source, int64 sourceFrame, PicturePainter::Target const& target) {
    QOpenGLExtraFunctions& gl = *m_context->extraFunctions();
    VideoFacts const& facts = source.composition->file()->facts();
    if (sourceFrame < 0 || sourceFrame >= facts.frameCount) return m_painter.paintBlack(gl, target);

    FramePtr picture;
    if (Outcome outcome = source.decoder->frame(sourceFrame, picture); outcome.failed()) return outcome;
    const Outcome painted = m_painter.paint(gl, *picture, facts, target);
    if (painted.success()) return Outcome();
    return Outcome::failure(source.composition->file()->path() + ": frame " + std::to_string(sourceFrame) + ": " +
                            painted.message());
}

Status MediaGraphEngine::fillAudio(ConstSharedPtr<AudioFormatInterface> const&, char*, size_t, size_t) {
    return Status::general_failure;
}

Status MediaGraphEngine::setVideoFrameRate(Rational const& rate) {
    if (rate.getNumerator() <= 0 || rate.getDenominator() == 0) return Status::invalid_argument;
    const std::lock_guard lock(m_mutex);
    m_rate = rate;
    return Status();
}

Rational MediaGraphEngine::getVideoFrameRate() const {
    const std::lock_guard lock(m_mutex);
    return m_rate;
}

SharedPtr<TokenResolver> MediaGraphEngine::getTokenResolver() const {
    return {};
}

Status MediaGraphEngine::clearCache() {
    if (const Source current = source(); current.decoder) current.decoder->cache().clear();
    return Status();
}

Status MediaGraphEngine::getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const {
    if (type != CacheStats::CacheType::graph_engine) return Status::invalid_query;
    const SharedPtr<CacheStats> collected = CacheStats::create();
    if (const Source current = source(); current.decoder) {
        const Rational outputRate = getVideoFrameRate();
        const Rational sourceRate = current.composition->file()->facts().frameRate;
        auto& ranges = collected->getFrameRanges();
        for (const int64 decoded : current.decoder->cache().frames()) {
            const int64 first = firstOutputFrameOf(decoded, outputRate, sourceRate);
            const int64 last = firstOutputFrameOf(decoded + 1, outputRate, sourceRate) - 1;
            if (last < first) continue;  // at this rate the frame is left out
            if (!ranges.empty() && ranges.back().last == first - 1)
                ranges.back().last = last;
            else
                ranges.push_back({first, last});
        }
    }
    stats = collected;
    return Status();
}

Status MediaGraphEngine::setStep(int32 step) {
    const std::lock_guard lock(m_mutex);
    m_step = step;
    return Status();
}

int32 MediaGraphEngine::getStep() const {
    const std::lock_guard lock(m_mutex);
    return m_step;
}

}  // namespace qrtplay
