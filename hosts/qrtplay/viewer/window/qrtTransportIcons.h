#pragma once

#include <QColor>
#include <QIcon>

namespace qrtplay {

enum class TransportShape { to_start, frame_back, backwards, play, pause, forwards, frame_on, to_end };

/// Drawn in `colour`, so that it can be seen on a light palette and on a dark one.
[[nodiscard]] QIcon transportIcon(TransportShape shape, QColor const& colour);

}  // namespace qrtplay
