#pragma once

#include <string>

#include "base/qrtKit.h"

namespace qrtplay {

/// What became of a frame that was to be written.
struct WriteResult {
    int64 frame = 0;
    std::string path;
    std::string failure;  ///< empty after a success; names the path otherwise

    [[nodiscard]] bool failed() const noexcept { return !failure.empty(); }
};

}  // namespace qrtplay
