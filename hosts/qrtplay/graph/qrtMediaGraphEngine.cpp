#include "graph/qrtMediaGraphEngine.h"

#include <QOpenGLContext>
#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <utility>

#include "foundation/core/qrtPlatform.h"
#include "graph/qrtLayerProvider.h"
#include "graph/qrtTimelinePictures.h"
#include "sound/qrtHostAudioFormat.h"

namespace qrtplay {

namespace {

constexpr size_t bytesPerMiB = size_t{1} << 20;

constexpr int lastConversion = static_cast<int>(ConversionChoice::gpu);

/// What the environment says of a preference, at least 0.
int initialPref(String const& name, int usual) {
    const char* const fixed = Platform::getenv(("QRT_PREF_" + name).c_str());
    return fixed ? static_cast<int>(std::clamp(std::strtol(fixed, nullptr, 10), 0L, long{INT_MAX})) : usual;
}

}  // namespace

/// The leaves of one frame.
class MediaGraphEngine::Layers final : public LayerProvider {
public:
    Layers(QOpenGLExtraFunctions& gl, Source const& source, SegmentRenderer& segments)
        : m_gl(gl), m_source(source), m_segments(segments) {}

    Outcome mediaPicture(FrameNode const& node, LayerPicture& picture) override {
        PictureStore::Answer answer;
        if (Outcome outcome = m_source.pictures->picture({node.source, node.time}, answer); outcome.failed())
            return outcome;
        picture = {std::move(answer.picture), std::move(answer.facts), std::move(answer.path)};
        return Outcome();
    }

    Outcome generatorPicture(FrameNode const& node, GLuint texture, int width, int height) override {
        Generator const& generator = m_source.composition->timeline()->generators()[node.source];
        return m_segments.render(m_gl, generator.id, node.time.frameAt(generator.rate), generator.rate, texture, width,
                                 height);
    }

private:
    QOpenGLExtraFunctions& m_gl;
    Source const& m_source;
    SegmentRenderer& m_segments;
};

const String MediaGraphEngine::DECODE_CACHE_MIB("QRTPLAY_DECODE_CACHE_MIB");
const String MediaGraphEngine::CONVERSION("QRTPLAY_CONVERSION");

MediaGraphEngine::MediaGraphEngine()
    : m_cacheInMiB(initialPref(DECODE_CACHE_MIB, static_cast<int>(PictureStore::defaultBudgetInBytes / bytesPerMiB))),
      m_conversion(static_cast<ConversionChoice>(std::min(initialPref(CONVERSION, 0), lastConversion))) {}

SharedPtr<GraphEngineInterface> MediaGraphEngine::create() {
    return SharedPtr<GraphEngineInterface>(new MediaGraphEngine());
}

// Without its context what was made cannot be deleted; with another it would be somebody else's that is.
MediaGraphEngine::~MediaGraphEngine() {
    if (m_context && QOpenGLContext::currentContext() == m_context) m_composer.release(*m_context->extraFunctions());
}

Status MediaGraphEngine::setPref(String const& name, int value) {
    const bool isConversion = name == CONVERSION;
    if ((!isConversion && !(name == DECODE_CACHE_MIB)) || value < 0) return Status::invalid_argument;
    if (isConversion && value > lastConversion) return Status::invalid_argument;
    std::shared_ptr<PictureStore> pictures;
    {
        const std::lock_guard lock(m_mutex);
        if (isConversion) {
            m_conversion = static_cast<ConversionChoice>(value);
            return Status();
        }
        m_cacheInMiB = value;
        m_readyBytes = 0;
        pictures = m_source.pictures;
    }
    if (pictures) pictures->setBudget(static_cast<size_t>(value) * bytesPerMiB);
    return Status();
}

Status MediaGraphEngine::getPref(String const& name, int& value) const {
    if (!(name == DECODE_CACHE_MIB) && !(name == CONVERSION)) return Status::invalid_argument;
    const std::lock_guard lock(m_mutex);
    value = name == CONVERSION ? static_cast<int>(m_conversion) : m_cacheInMiB;
    return Status();
}

Status MediaGraphEngine::getPrefs(Vector<String>& names) const {
    names.push_back(DECODE_CACHE_MIB);
    names.push_back(CONVERSION);
    return Status();
}

Status MediaGraphEngine::setGLContext(QOpenGLContext* context) {
    m_context = context;
    return Status();
}

Status MediaGraphEngine::setComposition(SharedPtr<Composition> const& composition,
                                        List<SharedPtr<ExternalSegment>> const& segments, VideoBufferResolution const&,
                                        Rational const&) {
    // Every media has a rate of its own here: the demuxer finds one where the file states none.
    m_segments.setSegments(segments);
    return adopt(composition, false);
}

Status MediaGraphEngine::updateComposition(SharedPtr<Composition> const& composition, String const&) {
    return adopt(composition, true);
}

Status MediaGraphEngine::adopt(SharedPtr<Composition> const& composition, bool isUpdate) {
    Source adopted;
    adopted.composition = dynamicPtrCast<TimelineComposition>(composition);
    Status status;
    if (!composition)
        status = Status::no_composition;
    else if (!adopted.composition)
        status = Status::invalid_argument;

    const Source before = source();
    size_t budget = 0;
    {
        const std::lock_guard lock(m_mutex);
        budget = static_cast<size_t>(m_cacheInMiB) * bytesPerMiB;
    }
    if (adopted.composition) {
        const bool sameTimeline =
            isUpdate && before.composition && before.composition->timeline() == adopted.composition->timeline();
        adopted.pictures = sameTimeline ? before.pictures : openPictureStore(adopted.composition, budget);
        adopted.sound = sameTimeline ? before.sound : std::make_shared<TimelineSound>(adopted.composition);
        m_composer.setScaling(adopted.composition->presentation().scaling);
        m_composer.setColourManagement(adopted.composition->presentation().colours);
    }

    const std::lock_guard lock(m_mutex);
    if (adopted.composition && !isUpdate) m_rate = adopted.composition->rate();
    if (adopted.pictures != m_source.pictures) {
        m_planned.clear();
        m_readyBytes = 0;
        if (m_ready) m_ready->clear();
    }
    m_source = std::move(adopted);  // `before` ends after the lock does, and what it alone holds with it
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

    const auto start = std::chrono::steady_clock::now();
    prepareAhead(current, frame);
    QOpenGLExtraFunctions& gl = *m_context->extraFunctions();
    const std::shared_ptr<ReadyPictures> ready = readyPictures(gl, resolution);
    if (ready) convertAhead(current, frame, resolution, *ready);
    m_composer.setReadyPictures(ready.get());
    Layers layers(gl, current, m_segments);
    const FrameNode plan = current.composition->timeline()->pictureAt(frame, getVideoFrameRate());
    const Outcome outcome =
        m_composer.compose(gl, plan, layers, {texture, resolution.getWidth(), resolution.getHeight()});
    const std::chrono::nanoseconds took = std::chrono::steady_clock::now() - start;
    current.composition->noteRenderTime(took.count());
    if (outcome.success()) return Status();
    current.composition->noteFailure(frame, outcome.message());
    return Status::general_failure;
}

// Tells the decoding threads what this frame and those after it need, so that the layers of a frame are decoded side by
// side and the next frames while this one is drawn.
void MediaGraphEngine::prepareAhead(Source const& source, int64 frame) {
    Timeline const& timeline = *source.composition->timeline();
    const std::lock_guard lock(m_mutex);
    m_course.note(frame, m_step == 0 ? 1 : m_step);
    std::vector<PictureStore::Wish> wishes;
    constexpr int64 mostFrames = int64{1} << 62;  // so that a step beyond the end does not overflow
    const int64 frameCount = std::min(timeline.duration().frameFrom(m_rate), mostFrames);
    int64 planned = frame;
    for (int64 ahead = m_course.framesAhead(); ahead > 0 && planned >= 0 && planned < frameCount; --ahead) {
        if (m_planned.contains(planned))
            m_planned.expect(planned);
        else
            m_planned.add(planned, picturesOf(timeline.pictureAt(planned, m_rate)));
        auto const& pictures = m_planned.pictures(planned);
        wishes.insert(wishes.end(), pictures.begin(), pictures.end());
        planned = m_course.next(planned);
    }
    source.pictures->prepare(std::move(wishes));
}

/// Null when shaders are to do it all, as they do for frames with more than 8 bits.
std::shared_ptr<ReadyPictures> MediaGraphEngine::readyPictures(QOpenGLExtraFunctions& gl,
                                                               VideoBufferResolution const& resolution) {
    constexpr int mostBits = 8;
    std::shared_ptr<ReadyPictures> unused;  // ends after the lock
    const std::lock_guard lock(m_mutex);
    const bool isOnCpu = resolution.getBitsPerChannel() <= mostBits && convertsOnCpu(m_conversion, gl);
    if (!isOnCpu)
        unused.swap(m_ready);
    else if (!m_ready)
        m_ready = std::make_shared<ReadyPictures>();
    return m_ready;
}

// Of what is decoded already: what is not will be converted when it is drawn.
void MediaGraphEngine::convertAhead(Source const& source, int64 frame, VideoBufferResolution const& resolution,
                                    ReadyPictures& ready) {
    Presentation const& presentation = source.composition->presentation();
    std::vector<ReadyPictures::Order> orders;
    for (PictureStore::Wish const& wish : nextPictures(frame)) {
        PictureStore::Answer answer;
        if (!source.pictures->keptPicture(wish, answer)) continue;
        const LayerPicture layer{std::move(answer.picture), std::move(answer.facts), std::move(answer.path)};
        const PixelRect place = placeOf(layer, presentation.scaling, resolution.getWidth(), resolution.getHeight());
        if (const auto form = cpuForm(layer, place, presentation.colours != nullptr))
            orders.push_back({layer.picture, *form});
        if (orders.size() > ReadyPictures::mostAhead) break;
    }
    ready.prepare(std::move(orders));
    shareBudget(*source.pictures, ready.sizeInBytes());
}

/// The pictures of a frame and those after it, as planned.
std::vector<PictureStore::Wish> MediaGraphEngine::nextPictures(int64 frame) const {
    const std::lock_guard lock(m_mutex);
    const int64 step = m_step == 0 ? 1 : m_step;
    std::vector<PictureStore::Wish> wishes;
    int64 planned = frame;
    for (size_t ahead = 0; ahead <= ReadyPictures::mostAhead && m_planned.contains(planned); ++ahead, planned += step) {
        auto const& pictures = m_planned.pictures(planned);
        wishes.insert(wishes.end(), pictures.begin(), pictures.end());
    }
    return wishes;
}

// Converted pictures are part of what decoding may take up.
void MediaGraphEngine::shareBudget(PictureStore& pictures, size_t readyBytes) {
    size_t budget = 0;
    {
        const std::lock_guard lock(m_mutex);
        if (std::exchange(m_readyBytes, readyBytes) == readyBytes) return;
        budget = static_cast<size_t>(m_cacheInMiB) * bytesPerMiB;
    }
    pictures.setBudget(budget - std::min(budget, readyBytes));
}

Status MediaGraphEngine::fillAudio(ConstSharedPtr<AudioFormatInterface> const& format, char* buffer, size_t bytes,
                                   size_t position) {
    const auto known = dynamicPtrCast<HostAudioFormat const>(format);
    if (!known || (!buffer && bytes > 0)) return Status::invalid_argument;
    const Source current = source();
    if (!current.composition) return Status::no_composition;
    const size_t sampleSize = known->getSizeInBytes(1);
    if (bytes % sampleSize != 0) return Status::invalid_argument;
    constexpr size_t farthest = size_t{1} << 60;  // years beyond any timeline
    if (position > farthest) {
        std::fill_n(buffer, bytes, '\0');
        return Status();
    }
    current.sound->fill(*known, static_cast<int64>(position), static_cast<int64>(bytes / sampleSize), buffer);
    return Status();
}

Status MediaGraphEngine::setVideoFrameRate(Rational const& rate) {
    if (rate.getNumerator() <= 0 || rate.getDenominator() == 0) return Status::invalid_argument;
    const std::lock_guard lock(m_mutex);
    m_rate = rate;
    m_planned.clear();
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
    const Source current = source();
    if (current.pictures) current.pictures->clear();
    const std::lock_guard lock(m_mutex);
    if (m_ready) m_ready->clear();
    return Status();
}

Status MediaGraphEngine::getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const {
    if (type != CacheStats::CacheType::graph_engine) return Status::invalid_query;
    const SharedPtr<CacheStats> collected = CacheStats::create();
    {
        const std::lock_guard lock(m_mutex);
        if (m_source.pictures) m_planned.collect(*m_source.pictures, *collected);
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
