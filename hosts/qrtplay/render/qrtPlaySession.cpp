#include "render/qrtPlaySession.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "graph/qrtMediaGraphEngine.h"

namespace qrtplay {

namespace {

constexpr int channels = 4;
constexpr int bitsPerChannel = 8;

std::string textOf(QSize size) {
    return std::to_string(size.width()) + "x" + std::to_string(size.height());
}

Outcome toOutcome(Status status, std::string const& what) {
    if (status.success()) return Outcome();
    return Outcome::failure(what + ": " + status.toString().c_str());
}

}  // namespace

QSize squarePixelSize(VideoFacts const& facts) {
    const double aspect = facts.sampleAspect.getValue();
    QSize size(facts.width, facts.height);
    if (aspect > 1) size.setWidth(static_cast<int>(std::lround(facts.width * aspect)));
    if (aspect > 0 && aspect < 1) size.setHeight(static_cast<int>(std::lround(facts.height / aspect)));
    return size;
}

Outcome PlaySession::open(std::string const& clip, PlaySettings const& settings, std::unique_ptr<PlaySession>& session) {
    std::unique_ptr<PlaySession> opened(new PlaySession());
    if (Outcome outcome = MediaComposition::open(clip, opened->m_composition); outcome.failed()) return outcome;
    if (Outcome outcome = opened->m_context.create(); outcome.failed()) return outcome;
    if (Outcome outcome = opened->chooseResolution(settings); outcome.failed()) return outcome;
    if (Outcome outcome = opened->checkMemory(settings); outcome.failed()) return outcome;
    if (Outcome outcome = opened->startPlayer(settings); outcome.failed()) return outcome;
    session = std::move(opened);
    return Outcome();
}

PlaySession::~PlaySession() {
    if (m_player) (void)m_player->uninitialize();
    m_player.reset();
    m_reader.reset();
}

Outcome PlaySession::chooseResolution(PlaySettings const& settings) {
    m_resolution = settings.resolution.value_or(squarePixelSize(facts()));
    const int most = m_context.largestFrameSide();
    if (m_resolution.width() < 1 || m_resolution.height() < 1 || m_resolution.width() > most ||
        m_resolution.height() > most)
        return Outcome::failure("resolution " + textOf(m_resolution) + ": width and height have to lie between 1 and " +
                                std::to_string(most) + " here");
    return Outcome();
}

// The player takes the memory for all its frames at once; a machine that has not got it would end this process without a
// word.
Outcome PlaySession::checkMemory(PlaySettings const& settings) const {
    constexpr int64 framesBeside = 4;  // the current one, the one in the making, and two on their way to a file
    constexpr int usualHead = 2;
    const int64 frames = int64{settings.headFrames.value_or(usualHead)} + settings.tailFrames.value_or(0) + framesBeside;
    const VideoBufferResolution format(m_resolution.width(), m_resolution.height(), channels, bitsPerChannel, false);
    const double needed = static_cast<double>(format.getBufferSize()) * static_cast<double>(frames);
    const double present = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
    constexpr double largestShare = 0.8;
    if (needed <= present * largestShare) return Outcome();
    constexpr double bytesPerGiB = 1 << 30;
    return Outcome::failure("resolution " + textOf(m_resolution) + ": " + std::to_string(frames) + " frames need " +
                            std::to_string(std::lround(needed / bytesPerGiB)) + " GiB of memory and there are " +
                            std::to_string(std::lround(present / bytesPerGiB)));
}

Outcome PlaySession::startPlayer(PlaySettings const& settings) {
    m_reader = std::make_unique<FrameReader>(m_context.gl());
    const VideoBufferResolution format(m_resolution.width(), m_resolution.height(), channels, bitsPerChannel, false);
    m_player = Player::create(format, &MediaGraphEngine::create);
    // Before the player runs its pools are not there yet and need no second set-up.
    if (settings.headFrames) {
        const Status status = m_player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, *settings.headFrames);
        if (Outcome outcome = toOutcome(status, "frames ahead"); outcome.failed()) return outcome;
    }
    if (settings.tailFrames) {
        const Status status = m_player->setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, *settings.tailFrames);
        if (Outcome outcome = toOutcome(status, "frames behind"); outcome.failed()) return outcome;
    }
    if (Outcome outcome = toOutcome(m_player->setRamOutputs(settings.ramOutputs), "output in memory"); outcome.failed())
        return outcome;
    const Status started = m_player->initialize(m_context.nativeContext(), m_context.nativeWindow());
    if (Outcome outcome = toOutcome(started, "the player cannot be started at " + textOf(m_resolution)); outcome.failed())
        return outcome;
    return toOutcome(m_player->setComposition(m_composition, {}), m_composition->file()->path());
}

Outcome PlaySession::start(FrameRange const& range) {
    const Rational rate = m_player->getVideoFrameRate();
    const SharedPtr<PlayParams> params = PlayParams::create(Time(0, rate), Time(0, rate), Time(1, rate), rate, range.step,
                                                            PlayParams::single, PlayParams::video_only);
    // Set by number: a way through times would have to round.
    params->setStartFrame(std::min(range.first, range.last));
    params->setEndFrame(std::max(range.first, range.last));
    params->setCurrentFrame(range.first);
    return toOutcome(m_player->startProducing(params), "frames " + std::to_string(range.first) + "-" +
                                                           std::to_string(range.last) + " cannot be played");
}

void PlaySession::stop() {
    (void)m_player->stopProducing();
}

Outcome PlaySession::fetch(int64 frame, QImage& image) {
    const bool wasReady = m_player->isVideoBufferReady(frame);
    SharedPtr<VideoBuffer> buffer;
    const Status status = m_player->getVideoBuffer(frame, buffer);
    const std::string name = m_composition->file()->path() + ": frame " + std::to_string(frame);
    if (status.failure() || !buffer) {
        const std::string known = m_composition->failureOf(frame);
        return Outcome::failure(known.empty() ? name + ": " + status.toString().c_str() : known);
    }
    if (Outcome outcome = m_reader->read(*buffer, image); outcome.failed())
        return Outcome::failure(name + ": " + outcome.message());
    ++m_counts.delivered;
    ++(wasReady ? m_counts.cacheHits : m_counts.onDemand);
    return Outcome();
}

}  // namespace qrtplay
