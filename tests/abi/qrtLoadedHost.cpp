// A plug-in that brings a player with it: lives one life from front to back, for whoever has loaded it.
#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtHostContext.h"
#include "player/qrtPlayer.h"

using namespace QRT_0_81;

namespace {

bool isPlaying() {
    const HostContext host;
    const SharedPtr<Player> player = Player::create(VideoBufferResolution(16, 8, 4, 8, false), FakeGraphEngine::create);
    if (!player || player->initialize(host.nativeContext(), host.nativeWindow()).failure()) return false;
    const Rational rate(24, 1);
    const auto params = PlayParams::create(Time(0, rate), Time(0, rate), Time(100, rate), rate, 1, PlayParams::loop,
                                           PlayParams::video_only);
    if (player->setComposition(FakeComposition::create(0, 100), {}).failure()) return false;
    if (player->startProducing(params).failure()) return false;
    for (const bool isInMemory : {false, true}) {
        SharedPtr<VideoBuffer> buffer;
        if (player->getVideoBuffer(42, buffer).failure()) return false;
        buffer.reset();
        if (player->stopProducing().failure() || player->setRamOutputs(!isInMemory).failure()) return false;
        if (player->startProducing(params).failure()) return false;
    }
    return player->uninitialize().success();
}

}  // namespace

extern "C" [[gnu::visibility("default")]] bool qrtLoadedHostPlays() {
    FakeGraphEngine::resetScript();
    return isPlaying();
}
