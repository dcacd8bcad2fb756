#pragma once

#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// Where frames are written: a path whose file name may hold one place for the frame number, a run of '#' ("####": at
/// least four digits) or "%04d".
class OutputPattern final {
public:
    /// Failures name the path: it has no file name, two places for the number, or an ending that no file kind has.
    static Outcome parse(std::string const& path, OutputPattern& pattern);

    [[nodiscard]] bool hasNumber() const noexcept { return m_hasNumber; }
    [[nodiscard]] std::string pathOf(int64 frame) const;
    /// The folder, "." for the current one.
    [[nodiscard]] std::string folder() const;
    /// As the user has written it.
    [[nodiscard]] std::string const& text() const noexcept { return m_text; }

private:
    std::string m_text;
    std::string m_before;
    std::string m_after;
    size_t m_digits = 0;
    bool m_hasNumber = false;
};

}  // namespace qrtplay
