#pragma once

#include <QSize>
#include <memory>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"
#include "options/qrtFrameRange.h"
#include "playback/qrtFramePuller.h"
#include "playback/qrtFrameReader.h"
#include "playback/qrtTimelinePlayer.h"
#include "render/qrtFrameSource.h"
#include "render/qrtHostContext.h"

namespace qrtplay {

/// A timeline in a player, read frame by frame into memory.
///
/// Threading: the thread of the application object.
/// OpenGL: a context of its own, current from opening on; one session at a time.
class PlaySession final : public FrameSource {
public:
    static constexpr int32 soundRate = TimelinePlayer::soundRate;
    static constexpr int soundChannels = TimelinePlayer::soundChannels;

    /// Opens the input and starts the player. Failures name what is wrong (the file, the resolution, the display) and
    /// say in `why` of which kind they are.
    static Outcome open(PlayInput const& input, PlaySettings const& settings, std::unique_ptr<PlaySession>& session,
                        OpenFailure& why);
    ~PlaySession() override;
    Q_DISABLE_COPY(PlaySession)

    [[nodiscard]] Timeline const& timeline() const { return m_player->timeline(); }
    /// Samples of every channel, at `soundRate`.
    [[nodiscard]] int64 sampleCount() const { return m_player->sampleCount(); }

    [[nodiscard]] int64 frameCount() const override { return m_player->frameCount(); }
    [[nodiscard]] Rational rate() const override { return m_player->rate(); }
    [[nodiscard]] QSize resolution() const override;
    [[nodiscard]] ExactTime clockStart() const override { return timeline().clockStart(); }
    [[nodiscard]] bool hasSound() const override { return m_player->hasSound(); }
    [[nodiscard]] Counts counts() const override { return m_counts; }
    Outcome start(FrameRange const& range) override;
    void stop() override;
    Outcome fetch(int64 frame, PixelBlock& block) override;
    Outcome readSound(int64 firstSample, int64 count, std::vector<float>& samples) override;
    /// What playing has gone on without: what the timeline's reader left out, media that is missing. New ones only.
    [[nodiscard]] std::vector<std::string> takeWarnings() override { return m_player->composition().takeWarnings(); }

private:
    PlaySession() = default;

    HostContext m_context;
    std::unique_ptr<FrameReader> m_reader;
    std::unique_ptr<TimelinePlayer> m_player;
    std::unique_ptr<FramePuller> m_puller;
    Counts m_counts;
};

}  // namespace qrtplay
