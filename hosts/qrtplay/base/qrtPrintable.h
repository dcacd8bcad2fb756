#pragma once

#include <string>

namespace qrtplay {

/// Text of a user or a file as it may stand in a line on a terminal: what would control the terminal, end the line or
/// is no UTF-8 is replaced by question marks. That is the control characters of ASCII and of Unicode (U+0080 to
/// U+009F), U+2028 and U+2029, and every byte that belongs to no character.
[[nodiscard]] std::string printable(std::string const& text);

}  // namespace qrtplay
