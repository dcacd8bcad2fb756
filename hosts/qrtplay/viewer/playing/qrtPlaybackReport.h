#pragma once

#include <QString>
#include <QStringList>

#include "viewer/playing/qrtFrameNumbering.h"
#include "viewer/playing/qrtPlayback.h"

namespace qrtplay {

/// How playing goes, for the overlay over the picture: both timecodes, frame, wanted and real rate, what was skipped
/// and late, how frames were had, and the size and kind of the last one.
[[nodiscard]] QStringList overlayLines(Playback const& playback, FrameNumbering const& numbering,
                                       FetchedFrame const& shown);

/// The same in one line, for the status bar.
[[nodiscard]] QString statusText(Playback const& playback);

/// "2x", "-1x loop"; empty while nothing plays.
[[nodiscard]] QString speedText(Playback const& playback);

/// "Plays once", "Loop", "Ping-pong"
[[nodiscard]] QString modeText(PlayParams::PlayMode mode);

}  // namespace qrtplay
