#pragma once

#include <algorithm>
#include <string>

namespace qrtplay {

/// Text of a user or a file as it may stand in a line for people: control characters, line ends among them, are
/// replaced.
[[nodiscard]] inline std::string printable(std::string text) {
    const auto isControl = [](char sign) { return static_cast<unsigned char>(sign) < ' ' || sign == '\x7f'; };
    std::replace_if(text.begin(), text.end(), isControl, '?');
    return text;
}

}  // namespace qrtplay
