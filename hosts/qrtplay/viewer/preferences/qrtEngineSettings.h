#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "foundation/core/qrtPrefs.h"
#include "graph/qrtPresentation.h"
#include "playback/qrtPlaySettings.h"
#include "playback/qrtTimelinePlayer.h"

namespace qrtplay {

class Playback;

/// What a player can be set to and what it is set to, whether or not there is one: without a timeline the settings are
/// for the next one, and what can be checked is.
///
/// Threading: the GUI thread.
class EngineSettings final {
public:
    /// What became of a change.
    struct Result {
        QString refusal;              ///< a sentence for people; empty when the change was carried out
        bool needsReopening = false;  ///< the player has lost what it had and the input has to be opened again
        [[nodiscard]] bool success() const { return refusal.isEmpty(); }
    };

    /// `playback` has to last longer than this.
    explicit EngineSettings(Playback& playback);
    ~EngineSettings();

    /// Carries out that in which `wanted` differs from `present`. After a refusal all is as it was before.
    Result change(PlaySettings const& present, PlaySettings const& wanted);
    Result setPreference(String const& name, int value);

    /// What the player uses: `settings` corrected by what it answers; unchanged without a timeline.
    [[nodiscard]] PlaySettings inUse(PlaySettings settings) const;
    /// What the player uses, or the next one will when nothing else is set.
    [[nodiscard]] int preference(String const& name) const;
    [[nodiscard]] int defaultPreference(String const& name) const;
    /// The engine's preferences for which `PlaySettings` has no member.
    [[nodiscard]] QStringList furtherPreferences() const;
    [[nodiscard]] static QStringList furtherPreferencesOf(Prefs const& prefs);

    /// The colour management that is in use, or that these settings ask for; null without.
    [[nodiscard]] std::shared_ptr<ColourManagement const> colours(PlaySettings const& settings) const;
    /// The resolution of the input's own pictures; invalid without a timeline.
    [[nodiscard]] QSize ownResolution() const;

    /// The environment variable that fixes a preference; empty when none does.
    [[nodiscard]] static QString fixedBy(String const& name);

private:
    struct Change;

    [[nodiscard]] Outcome check(PlaySettings const& present, PlaySettings const& wanted) const;
    [[nodiscard]] int largestFrameSide() const;
    [[nodiscard]] Prefs const& prefs() const;
    Result carryOut(std::function<Status(TimelinePlayer&)> const& change, bool mayLose);

    Playback& m_playback;
    const SharedPtr<Player> m_idle;  // never started: knows the defaults
    mutable int m_largestFrameSide = 0;
};

/// "Sentence." of a message that begins in lower case and has no full stop.
[[nodiscard]] QString sentenceOf(std::string const& message);

}  // namespace qrtplay
