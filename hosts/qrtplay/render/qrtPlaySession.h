#pragma once

#include <QSize>
#include <memory>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"
#include "graph/qrtTimelineComposition.h"
#include "input/qrtPlayInput.h"
#include "media/qrtVideoFacts.h"
#include "player/qrtPlayer.h"
#include "render/qrtFrameRange.h"
#include "render/qrtFrameReader.h"
#include "render/qrtFrameSource.h"
#include "render/qrtHostContext.h"
#include "render/qrtPlaySettings.h"

namespace qrtplay {

/// Why nothing can be played, as far as a program's exit status tells.
enum class OpenFailure {
    input_missing,  ///< what is to be played is not there
    refused,        ///< it is there and cannot be played
    no_opengl,      ///< there is no OpenGL, or not one that a player can work with
    failed,         ///< something else, such as a setting that cannot be had
};

/// A timeline in a `Player` that delivers its frames by number and its sound by position, the way any host would use
/// one.
///
/// Threading: the thread of the application object.
/// OpenGL: a context of its own, current from opening on; one session at a time.
class PlaySession final : public FrameSource {
public:
    static constexpr int32 soundRate = 48000;  ///< samples per second
    static constexpr int soundChannels = 2;

    /// Opens the input and starts the player. Failures name what is wrong (the file, the resolution, the display) and
    /// say in `why` of which kind they are.
    static Outcome open(PlayInput const& input, PlaySettings const& settings, std::unique_ptr<PlaySession>& session,
                        OpenFailure& why);
    ~PlaySession() override;
    Q_DISABLE_COPY(PlaySession)

    [[nodiscard]] Timeline const& timeline() const { return *m_composition->timeline(); }
    /// Samples of every channel, at `soundRate`.
    [[nodiscard]] int64 sampleCount() const;

    [[nodiscard]] int64 frameCount() const override { return m_composition->frameCount(); }
    [[nodiscard]] Rational rate() const override { return m_composition->rate(); }
    [[nodiscard]] QSize resolution() const override { return m_resolution; }
    [[nodiscard]] ExactTime clockStart() const override { return timeline().clockStart(); }
    [[nodiscard]] bool hasSound() const override;
    [[nodiscard]] Counts counts() const override { return m_counts; }
    Outcome start(FrameRange const& range) override;
    void stop() override;
    Outcome fetch(int64 frame, PixelBlock& block) override;
    Outcome readSound(int64 firstSample, int64 count, std::vector<float>& samples) override;
    /// What playing has gone on without: what the timeline's reader left out, media that is missing. New ones only.
    [[nodiscard]] std::vector<std::string> takeWarnings() override;

private:
    explicit PlaySession(std::string name) : m_name(std::move(name)) {}

    Outcome compose(PlayInput const& input, PlaySettings const& settings, OpenFailure& why);
    Outcome chooseResolution(QSize own, PlaySettings const& settings);
    Outcome checkMemory(PlaySettings const& settings) const;
    Outcome startPlayer(PlaySettings const& settings, OpenFailure& why);
    Outcome preparePlayer(PlaySettings const& settings);
    Outcome setComposition();

    const std::string m_name;  // what messages call the input
    SharedPtr<TimelineComposition> m_composition;
    std::vector<std::string> m_warnings;  // not yet taken
    QSize m_ownResolution;
    QSize m_resolution;
    HostContext m_context;
    std::unique_ptr<FrameReader> m_reader;
    SharedPtr<Player> m_player;
    Counts m_counts;
};

/// The size at which a clip is as wide and high as it is meant to be when it stands upright in square pixels, without
/// losing any.
[[nodiscard]] QSize squarePixelSize(VideoFacts const& facts);

}  // namespace qrtplay
