#pragma once

#include <QImage>
#include <QSize>
#include <memory>
#include <optional>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "player/qrtPlayer.h"
#include "render/qrtFrameRange.h"
#include "render/qrtFrameReader.h"
#include "render/qrtHostContext.h"
#include "timeline/qrtMediaComposition.h"

namespace qrtplay {

/// How a clip is to be played.
struct PlaySettings {
    std::optional<QSize> resolution;  ///< of the frames; without one the clip's own, in square pixels
    bool ramOutputs = false;          ///< frames come as memory instead of textures
    std::optional<int> headFrames;    ///< kept rendered ahead and ...
    std::optional<int> tailFrames;    ///< ... behind; without a number what the player thinks best
};

/// A clip in a `Player` that delivers its frames by number, the way any host would use one.
///
/// Threading: the thread of the application object.
class PlaySession final {
public:
    struct Counts {
        int64 delivered = 0;
        int64 cacheHits = 0;  ///< were rendered ahead when they were asked for
        int64 onDemand = 0;   ///< had to be waited for
    };

    /// Opens the clip and starts the player. Failures name what is wrong: the clip, the resolution, the display.
    static Outcome open(std::string const& clip, PlaySettings const& settings, std::unique_ptr<PlaySession>& session);
    ~PlaySession();
    Q_DISABLE_COPY(PlaySession)

    [[nodiscard]] VideoFacts const& facts() const { return m_composition->file()->facts(); }
    [[nodiscard]] QSize resolution() const noexcept { return m_resolution; }
    [[nodiscard]] Counts const& counts() const noexcept { return m_counts; }

    /// Has the frames of `range` rendered ahead, in its order; it has to lie inside the clip.
    Outcome start(FrameRange const& range);
    void stop();
    /// Fetches a frame. Failures name it.
    Outcome fetch(int64 frame, QImage& image);

private:
    PlaySession() = default;
    PlaySession(PlaySession&&) = delete;

    Outcome chooseResolution(PlaySettings const& settings);
    Outcome checkMemory(PlaySettings const& settings) const;
    Outcome startPlayer(PlaySettings const& settings);

    SharedPtr<MediaComposition> m_composition;
    QSize m_resolution;
    HostContext m_context;
    std::unique_ptr<FrameReader> m_reader;
    SharedPtr<Player> m_player;
    Counts m_counts;
};

/// The size at which a clip of pixels that are not square is as wide and high as it is meant to be, without losing any.
[[nodiscard]] QSize squarePixelSize(VideoFacts const& facts);

}  // namespace qrtplay
