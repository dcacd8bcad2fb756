#pragma once

#include <QString>

namespace qrtplay {

/// All actions with their keys, and what the mouse does, as a page of HTML.
[[nodiscard]] QString keyboardHelp();

}  // namespace qrtplay
