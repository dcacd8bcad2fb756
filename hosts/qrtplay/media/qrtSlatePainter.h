#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include "media/qrtAv.h"

namespace qrtplay {

// Pictures that stand for others that are not there, as RGBA. Text needs a QGuiApplication; without one they have none.
// Null when memory does not suffice. Any thread may paint.

/// A title over lines of text; what is too long for the width is shortened in its middle.
[[nodiscard]] FramePtr paintSlate(QSize size, QString const& title, QStringList const& lines);

/// A red frame and cross, with a line of text. Its colours are such that they are the same whatever the numbers of a
/// picture stand for: each part of them is all or nothing.
[[nodiscard]] FramePtr paintHole(QSize size, QString const& text);

}  // namespace qrtplay
