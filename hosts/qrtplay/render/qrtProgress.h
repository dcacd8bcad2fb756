#pragma once

#include <functional>
#include <ostream>

#include "base/qrtKit.h"

namespace qrtplay {

/// Tells a user how far a job is: a bar that redraws itself on a terminal, a line about every tenth otherwise.
///
/// Threading: one thread.
class Progress final {
public:
    /// Seconds since some fixed moment.
    using Clock = std::function<double()>;
    [[nodiscard]] static double steadySeconds();

    Progress(std::ostream& stream, bool isTerminal, int64 totalFrames, Clock clock = steadySeconds);

    /// `done` frames are through.
    void update(int64 done);
    /// Wipes the bar, so that a line can be written; the next `update` draws it again.
    void clear();

    [[nodiscard]] double elapsedSeconds() const { return m_clock() - m_begin; }

private:
    void drawBar(int64 done);
    void writeLine(int64 done);

    std::ostream& m_stream;
    const bool m_isTerminal;
    const int64 m_total;
    const Clock m_clock;
    const double m_begin;
    double m_lastDrawn = -1;
    bool m_barIsVisible = false;
    int64 m_tenthsWritten = 0;
};

}  // namespace qrtplay
