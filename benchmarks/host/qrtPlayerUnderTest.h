#pragma once

#include <memory>
#include <string>

#include "playback/qrtFramePuller.h"
#include "playback/qrtTimelinePlayer.h"
#include "qrtClipPlayer.h"
#include "render/qrtHostContext.h"

namespace qrtplay {

/// The clip in the player, as `qrtplay render` plays it: through the graph engine's textures, read back into memory.
///
/// Threading: the thread of the application object. OpenGL: a context of its own, current from construction on.
class PlayerUnderTest final : public ClipPlayer {
public:
    PlayerUnderTest(std::string const& path, PlaySettings settings);
    ~PlayerUnderTest() override;

    void play(int64 first, int64 last, Way way) override;
    void stop() override;
    FrameView frame(int64 number) override;

private:
    HostContext m_context;
    std::unique_ptr<TimelinePlayer> m_player;
    std::unique_ptr<FramePuller> m_puller;
    SharedPtr<VideoBuffer> m_lent;
};

}  // namespace qrtplay
