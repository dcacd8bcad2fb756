#pragma once

#include <string>
#include <vector>

namespace qrtplay {

/// A command line that a shell reads back as these words.
[[nodiscard]] std::string shellCommand(std::vector<std::string> const& words);

}  // namespace qrtplay
