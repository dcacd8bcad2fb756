#pragma once

#include <QColor>

namespace qrtplay {

/// A channel of a colour, from 0 to 1, as Qt takes it: a double of Qt 5, a float of Qt 6.
using ColourValue = decltype(QColor().redF());

}  // namespace qrtplay
