#pragma once

#include <QSize>
#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "playback/qrtNativeContext.h"
#include "playback/qrtPlaySettings.h"
#include "playback/qrtPreparedInput.h"
#include "player/qrtPlayer.h"

namespace qrtplay {

/// A timeline in a `Player`, ready to deliver its frames by number and its sound by position, the way any host would
/// use one.
///
/// Threading: opened and destroyed on the thread of the application object; what is const may be called on any thread.
/// OpenGL: the native context given at opening has to last as long as this.
class TimelinePlayer final {
public:
    static constexpr int32 soundRate = 48000;  ///< samples per second
    static constexpr int soundChannels = 2;    ///< interleaved 32-bit floats

    /// Starts a player on the prepared input. Failures name what is wrong (the resolution, the memory, the player) and
    /// say in `why` of which kind they are.
    static Outcome open(PreparedInput const& input, PlaySettings const& settings, NativeContext const& native,
                        std::unique_ptr<TimelinePlayer>& opened, OpenFailure& why);
    ~TimelinePlayer();
    TimelinePlayer(TimelinePlayer const&) = delete;
    TimelinePlayer& operator=(TimelinePlayer const&) = delete;

    [[nodiscard]] std::string const& name() const noexcept { return m_name; }
    [[nodiscard]] Player& player() const noexcept { return *m_player; }
    [[nodiscard]] TimelineComposition& composition() const noexcept { return *m_composition; }
    [[nodiscard]] Timeline const& timeline() const noexcept { return *m_composition->timeline(); }
    [[nodiscard]] int64 frameCount() const noexcept { return m_composition->frameCount(); }
    [[nodiscard]] Rational const& rate() const noexcept { return m_composition->rate(); }
    /// That of the input's first pictures: what frames have when no other resolution is wanted.
    [[nodiscard]] QSize ownResolution() const noexcept { return m_ownResolution; }
    [[nodiscard]] bool hasSound() const;
    /// Samples of every channel, at `soundRate`.
    [[nodiscard]] int64 sampleCount() const;

    /// Play parameters for the frames from `first` to `last`, both included, beginning at `current`.
    [[nodiscard]] SharedPtr<PlayParams> parameters(int64 first, int64 last, int64 current, int step,
                                                   PlayParams::PlayMode mode) const;

    /// Why a frame could not be had, naming input and frame: what the graph engine has noted, else the status in words.
    [[nodiscard]] std::string failureText(int64 frame, Status const& status) const;

    /// Sound from sample `first` on into `samples`, which holds `count` samples of every channel.
    Outcome readSound(int64 first, int64 count, float* samples) const;

    /// Shows the same timeline in another way. Not while the player renders ahead. Not on the player's other callers'
    /// time: nobody may be fetching. `Status::not_while_producing` while it does render ahead.
    [[nodiscard]] Status present(Presentation presentation);
    /// Gives the player the same timeline once more, as it decides then whether it keeps what the host draws. What has
    /// been decoded is dropped. On the same conditions as `present`; after another failure than
    /// `Status::not_while_producing` the player has no timeline.
    [[nodiscard]] Status resetComposition();

private:
    explicit TimelinePlayer(PreparedInput const& input)
        : m_name(input.name), m_ownResolution(input.ownResolution), m_composition(input.composition) {}

    Outcome start(QSize resolution, PlaySettings const& settings, NativeContext const& native, OpenFailure& why);
    Outcome applySettings(PlaySettings const& settings);
    Outcome setComposition();

    const std::string m_name;
    const QSize m_ownResolution;
    SharedPtr<TimelineComposition> m_composition;
    SharedPtr<Player> m_player;
};

/// Whether a player can deliver such frames with these settings here: their width and height fit a texture of
/// `largestFrameSide`, and those that it keeps fit the memory of this machine, which would end the program without a
/// word otherwise. The failure says in words what is too large.
Outcome checkFrames(QSize resolution, PlaySettings const& settings, int largestFrameSide);

/// Whether `mebibytes` for a cache fit the memory of this machine; the failure says so in words.
Outcome checkBudget(int64 mebibytes);

/// A failure that says what was wanted and, in words, what the engine answered; success when it succeeded.
Outcome outcomeOf(Status const& status, std::string const& what);

/// "1920x1080"
[[nodiscard]] std::string sizeText(QSize size);

}  // namespace qrtplay
