#pragma once

#include <functional>
#include <string>

#include "base/qrtKit.h"

namespace qrtplay {

/// Names the frames that failed. Frames that follow each other and fail for the same reason share a line: a clip that
/// is cut off would bury the user in lines otherwise.
///
/// Threading: one thread.
class FailureReport final {
public:
    using WriteLine = std::function<void(std::string const&)>;

    explicit FailureReport(WriteLine writeLine) : m_writeLine(std::move(writeLine)) {}

    /// `text` says what is wrong and names the frame as "frame N".
    void add(int64 frame, std::string const& text);
    /// Writes what has been held back because more frames might have joined it.
    void flush();

    /// How many frames have been added.
    [[nodiscard]] int64 count() const noexcept { return m_count; }

private:
    const WriteLine m_writeLine;
    int64 m_count = 0;
    // The line that is being collected; none when m_frames is 0.
    int64 m_frames = 0;
    int64 m_first = 0;
    int64 m_last = 0;
    int64 m_step = 0;
    std::string m_reason;  // with a mark in the place of "frame N"
};

}  // namespace qrtplay
