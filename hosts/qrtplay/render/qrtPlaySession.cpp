#include "render/qrtPlaySession.h"

#include <algorithm>
#include <utility>

namespace qrtplay {

Outcome PlaySession::open(PlayInput const& input, PlaySettings const& settings, std::unique_ptr<PlaySession>& session,
                          OpenFailure& why) {
    PreparedInput prepared;
    if (Outcome outcome = prepareInput(input, settings, prepared, why); outcome.failed()) return outcome;
    std::unique_ptr<PlaySession> opened(new PlaySession());
    why = OpenFailure::no_opengl;
    if (Outcome outcome = opened->m_context.create(); outcome.failed()) return outcome;
    Outcome outcome = TimelinePlayer::open(prepared, settings, opened->m_context.native(), opened->m_player, why);
    if (outcome.failed()) return outcome;
    opened->m_puller = std::make_unique<FramePuller>(*opened->m_player);
    opened->m_reader = std::make_unique<FrameReader>(opened->m_context.gl());
    session = std::move(opened);
    return Outcome();
}

PlaySession::~PlaySession() {
    m_player.reset();
    m_reader.reset();
}

QSize PlaySession::resolution() const {
    const VideoBufferResolution format = m_player->player().getVideoResolution();
    return {format.getWidth(), format.getHeight()};
}

Outcome PlaySession::start(FrameRange const& range) {
    const int64 first = std::min(range.first, range.last);
    const int64 last = std::max(range.first, range.last);
    const auto params = m_player->parameters(first, last, range.first, range.step, PlayParams::single);
    return outcomeOf(m_puller->produce(params),
                     "frames " + std::to_string(range.first) + "-" + std::to_string(range.last) + " cannot be played");
}

void PlaySession::stop() {
    m_puller->stop();
}

Outcome PlaySession::fetch(int64 frame, PixelBlock& block) {
    SharedPtr<VideoBuffer> buffer;
    bool wasReady = false;
    const Status status = m_puller->fetch(frame, buffer, wasReady);
    if (status.failure() || !buffer) return Outcome::failure(m_player->failureText(frame, status));
    if (Outcome outcome = m_reader->read(*buffer, block); outcome.failed())
        return Outcome::failure(m_player->name() + ": frame " + std::to_string(frame) + ": " + outcome.message());
    ++m_counts.delivered;
    ++(wasReady ? m_counts.cacheHits : m_counts.onDemand);
    return Outcome();
}

Outcome PlaySession::readSound(int64 firstSample, int64 count, std::vector<float>& samples) {
    samples.assign(static_cast<size_t>(count) * soundChannels, 0.0f);
    return m_player->readSound(firstSample, count, samples.data());
}

}  // namespace qrtplay
