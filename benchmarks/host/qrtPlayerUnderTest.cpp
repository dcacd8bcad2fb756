#include "qrtPlayerUnderTest.h"

#include <algorithm>
#include <stdexcept>

namespace qrtplay {

namespace {

void check(Outcome const& outcome) {
    if (outcome.failed()) throw std::runtime_error(outcome.message());
}

PlayParams::PlayMode modeOf(ClipPlayer::Way way) {
    switch (way) {
        case ClipPlayer::Way::over_and_over: return PlayParams::loop;
        case ClipPlayer::Way::to_and_fro: return PlayParams::ping_pong;
        case ClipPlayer::Way::once: break;
    }
    return PlayParams::single;
}

}  // namespace

PlayerUnderTest::PlayerUnderTest(std::string const& path, PlaySettings settings) {
    settings.ramOutputs = true;
    PlayInput input;
    input.files = {path};
    PreparedInput prepared;
    OpenFailure why = OpenFailure::failed;
    check(prepareInput(input, settings, prepared, why));
    check(m_context.create());
    check(TimelinePlayer::open(prepared, settings, m_context.native(), m_player, why));
    m_puller = std::make_unique<FramePuller>(*m_player);
}

PlayerUnderTest::~PlayerUnderTest() {
    m_lent.reset();
    m_player.reset();
}

void PlayerUnderTest::play(int64 first, int64 last, Way way) {
    const auto mode = modeOf(way);
    const auto params =
        m_player->parameters(std::min(first, last), std::max(first, last), first, first <= last ? 1 : -1, mode);
    check(outcomeOf(m_puller->produce(params), "playing"));
}

void PlayerUnderTest::stop() {
    m_puller->stop();
}

FrameView PlayerUnderTest::frame(int64 number) {
    m_lent.reset();
    bool wasReady = false;
    const Status status = m_puller->fetch(number, m_lent, wasReady);
    void* data = nullptr;
    if (status.failure() || !m_lent || m_lent->getData(data).failure() || !data)
        throw std::runtime_error(m_player->failureText(number, status));
    const VideoBufferResolution resolution = m_lent->getResolution();
    return {static_cast<std::uint8_t const*>(data), resolution.getWidth(), resolution.getHeight(), true};
}

}  // namespace qrtplay
