#include "render/qrtPlaySession.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "generators/qrtGeneratorSegments.h"
#include "graph/qrtColourManagement.h"
#include "graph/qrtMediaGraphEngine.h"
#include "media/qrtOpenPictures.h"
#include "sound/qrtHostAudioFormat.h"

namespace qrtplay {

namespace {

std::string textOf(QSize size) {
    return std::to_string(size.width()) + "x" + std::to_string(size.height());
}

Outcome toOutcome(Status status, std::string const& what) {
    if (status.success()) return Outcome();
    return Outcome::failure(what + ": " + status.toString().c_str());
}

/// The size of the first media that has pictures; that of HD when the timeline has none but what the host draws.
QSize ownSize(OpenedInput const& input) {
    for (MediaReference const& reference : input.timeline->media()) {
        if (const auto file = input.probe.pictures(reference.path)) return squarePixelSize(file->facts());
        std::unique_ptr<PictureSource> source;
        if (openPictures(reference, source).success() && source) return squarePixelSize(source->facts());
    }
    return {1920, 1080};
}

bool isWanted(OcioSettings const& ocio) {
    return !ocio.config.empty() || !ocio.display.empty() || !ocio.view.empty() || !qEnvironmentVariableIsEmpty("OCIO");
}

TimelineComposition::Files openedFiles(OpenedInput const& input) {
    TimelineComposition::Files files;
    for (MediaReference const& reference : input.timeline->media())
        files.push_back(input.probe.pictures(reference.path));
    return files;
}

}  // namespace

QSize squarePixelSize(VideoFacts const& facts) {
    const double aspect = facts.sampleAspect.getValue();
    QSize size(facts.width, facts.height);
    if (aspect > 1) size.setWidth(static_cast<int>(std::lround(facts.width * aspect)));
    if (aspect > 0 && aspect < 1) size.setHeight(static_cast<int>(std::lround(facts.height / aspect)));
    return facts.clockwiseQuarterTurns % 2 == 0 ? size : size.transposed();
}

Outcome PlaySession::open(PlayInput const& input, PlaySettings const& settings, std::unique_ptr<PlaySession>& session,
                          OpenFailure& why) {
    std::unique_ptr<PlaySession> opened(new PlaySession(input.files.empty() ? std::string() : input.files.front()));
    if (Outcome outcome = opened->compose(input, settings, why); outcome.failed()) return outcome;
    why = OpenFailure::no_opengl;
    if (Outcome outcome = opened->m_context.create(); outcome.failed()) return outcome;
    why = OpenFailure::failed;
    if (Outcome outcome = opened->chooseResolution(opened->m_ownResolution, settings); outcome.failed()) return outcome;
    if (Outcome outcome = opened->checkMemory(settings); outcome.failed()) return outcome;
    if (Outcome outcome = opened->startPlayer(settings, why); outcome.failed()) return outcome;
    session = std::move(opened);
    return Outcome();
}

PlaySession::~PlaySession() {
    if (m_player) (void)m_player->uninitialize();
    m_player.reset();
    m_reader.reset();
}

Outcome PlaySession::compose(PlayInput const& input, PlaySettings const& settings, OpenFailure& why) {
    OpenedInput opened;
    InputFailure failure = InputFailure::refused;
    if (Outcome outcome = openInput(input, opened, failure); outcome.failed()) {
        why = failure == InputFailure::missing ? OpenFailure::input_missing : OpenFailure::refused;
        return outcome;
    }
    Presentation presentation;
    presentation.scaling = settings.scaling;
    presentation.rate = settings.outputRate;
    why = OpenFailure::failed;
    if (isWanted(settings.ocio)) {
        OcioSettings const& ocio = settings.ocio;
        Outcome outcome = ColourManagement::create(ocio.config, ocio.display, ocio.view, presentation.colours);
        if (outcome.failed()) return outcome;
    }
    m_warnings = opened.timeline->warnings();
    m_ownResolution = ownSize(opened);
    m_composition = TimelineComposition::create(opened.timeline, openedFiles(opened), std::move(presentation));
    return Outcome();
}

Outcome PlaySession::chooseResolution(QSize own, PlaySettings const& settings) {
    m_resolution = settings.resolution.value_or(own);
    const int most = m_context.largestFrameSide();
    if (m_resolution.width() < 1 || m_resolution.height() < 1 || m_resolution.width() > most ||
        m_resolution.height() > most)
        return Outcome::failure("resolution " + textOf(m_resolution) + ": width and height have to lie between 1 and " +
                                std::to_string(most) + " here");
    return Outcome();
}

// The player takes the memory for all its frames at once; a machine that has not got it would end this process without
// a word.
Outcome PlaySession::checkMemory(PlaySettings const& settings) const {
    constexpr int64 framesBeside = 4;  // the current one, the one in the making, and two on their way to a file
    constexpr int usualHead = 2;
    const int64 frames =
        int64{settings.headFrames.value_or(usualHead)} + settings.tailFrames.value_or(0) + framesBeside;
    const VideoBufferResolution format = outputFormat(m_resolution.width(), m_resolution.height(), settings.depth);
    const double needed = static_cast<double>(format.getBufferSize()) * static_cast<double>(frames);
    const double present = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
    constexpr double largestShare = 0.8;
    if (needed <= present * largestShare) return Outcome();
    constexpr double bytesPerGiB = 1 << 30;
    return Outcome::failure("resolution " + textOf(m_resolution) + ": " + std::to_string(frames) + " frames need " +
                            std::to_string(std::lround(needed / bytesPerGiB)) + " GiB of memory and there are " +
                            std::to_string(std::lround(present / bytesPerGiB)));
}

Outcome PlaySession::startPlayer(PlaySettings const& settings, OpenFailure& why) {
    m_reader = std::make_unique<FrameReader>(m_context.gl());
    m_player = Player::create(outputFormat(m_resolution.width(), m_resolution.height(), settings.depth),
                              &MediaGraphEngine::create);
    if (Outcome outcome = preparePlayer(settings); outcome.failed()) return outcome;
    why = OpenFailure::no_opengl;
    const Status started = m_player->initialize(m_context.nativeContext(), m_context.nativeWindow());
    if (Outcome outcome = toOutcome(started, "the player cannot be started at " + textOf(m_resolution));
        outcome.failed())
        return outcome;
    why = OpenFailure::failed;
    return setComposition();
}

// Before the player runs its pools are not there yet and need no second set-up.
Outcome PlaySession::preparePlayer(PlaySettings const& settings) {
    const auto setPref = [this](String const& name, std::optional<int> value, const char* what) {
        return value ? toOutcome(m_player->setPref(name, *value), what) : Outcome();
    };
    Outcome outcome = setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, settings.headFrames, "frames ahead");
    if (outcome.success())
        outcome = setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, settings.tailFrames, "frames behind");
    if (outcome.success())
        outcome = setPref(MediaGraphEngine::DECODE_CACHE_MIB, settings.decodeCacheInMiB, "cache of decoded pictures");
    if (outcome.success()) outcome = toOutcome(m_player->setRamOutputs(settings.ramOutputs), "output in memory");
    for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram}) {
        // Always succeeds; whether segments are cached is decided when the composition is set.
        (void)m_player->setExternalSegmentCacheConstraint(type, ResourceConstraint::ResizeMode::fixed,
                                                          settings.segmentCacheInMiB, settings.segmentCacheInMiB);
    }
    return outcome;
}

Outcome PlaySession::setComposition() {
    const ConstSharedPtr<AudioFormatInterface> sound(
        new HostAudioFormat(soundRate, soundChannels, SampleKind::float32));
    if (Outcome outcome = toOutcome(m_player->setAudioFormat(sound), "sound"); outcome.failed()) return outcome;
    const Status status = m_player->setComposition(m_composition, makeGeneratorSegments(timeline().generators()));
    return toOutcome(status, m_name);
}

int64 PlaySession::sampleCount() const {
    return timeline().duration().frameFrom(Rational(soundRate, 1));
}

bool PlaySession::hasSound() const {
    auto const& tracks = timeline().tracks();
    return std::any_of(tracks.begin(), tracks.end(), [](TrackView const& track) {
        return track.kind == TrackView::Kind::audio &&
               std::any_of(track.items.begin(), track.items.end(), [](TrackItem const& item) {
                   return item.kind == TrackItem::Kind::clip || item.kind == TrackItem::Kind::stack;
               });
    });
}

std::vector<std::string> PlaySession::takeWarnings() {
    std::vector<std::string> taken = std::exchange(m_warnings, {});
    for (std::string& warning : m_composition->takeWarnings())
        taken.push_back(std::move(warning));
    return taken;
}

Outcome PlaySession::start(FrameRange const& range) {
    const auto mode = hasSound() ? PlayParams::all : PlayParams::video_only;
    const Rational rate = m_composition->rate();
    const SharedPtr<PlayParams> params =
        PlayParams::create(Time(0, rate), Time(0, rate), Time(1, rate), rate, range.step, PlayParams::single, mode);
    // Set by number: a way through times would have to round.
    params->setStartFrame(std::min(range.first, range.last));
    params->setEndFrame(std::max(range.first, range.last));
    params->setCurrentFrame(range.first);
    return toOutcome(m_player->startProducing(params),
                     "frames " + std::to_string(range.first) + "-" + std::to_string(range.last) + " cannot be played");
}

void PlaySession::stop() {
    (void)m_player->stopProducing();
}

Outcome PlaySession::fetch(int64 frame, PixelBlock& block) {
    const bool wasReady = m_player->isVideoBufferReady(frame);
    SharedPtr<VideoBuffer> buffer;
    const Status status = m_player->getVideoBuffer(frame, buffer);
    const std::string name = m_name + ": frame " + std::to_string(frame);
    if (status.failure() || !buffer) {
        const std::string known = m_composition->failureOf(frame);
        return Outcome::failure(known.empty() ? name + ": " + status.toString().c_str() : known);
    }
    if (Outcome outcome = m_reader->read(*buffer, block); outcome.failed())
        return Outcome::failure(name + ": " + outcome.message());
    ++m_counts.delivered;
    ++(wasReady ? m_counts.cacheHits : m_counts.onDemand);
    return Outcome();
}

Outcome PlaySession::readSound(int64 firstSample, int64 count, std::vector<float>& samples) {
    samples.assign(static_cast<size_t>(count) * soundChannels, 0.0f);
    const Status status = m_player->fillAudioBuffer(reinterpret_cast<char*>(samples.data()),
                                                    samples.size() * sizeof(float), static_cast<uint64>(firstSample));
    return toOutcome(status, m_name + ": sound from sample " + std::to_string(firstSample) + " on");
}

}  // namespace qrtplay
