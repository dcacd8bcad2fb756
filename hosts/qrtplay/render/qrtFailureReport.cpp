#include "render/qrtFailureReport.h"

namespace qrtplay {

namespace {

const std::string mark(1, '\x01');

}  // namespace

void FailureReport::add(int64 frame, std::string const& text) {
    const std::string name = "frame " + std::to_string(frame);
    std::string reason = text;
    const size_t place = reason.rfind(name);
    if (place == std::string::npos)
        reason = mark + ": " + text;
    else
        reason.replace(place, name.size(), mark);

    ++m_count;
    const bool continues = m_frames > 0 && reason == m_reason && (m_frames == 1 || frame - m_last == m_step);
    if (!continues) {
        flush();
        m_first = frame;
        m_reason = reason;
    }
    m_step = frame - m_last;
    m_last = frame;
    ++m_frames;
}

void FailureReport::flush() {
    if (m_frames == 0) return;
    std::string name = "frame " + std::to_string(m_first);
    if (m_frames > 1) name = "frames " + std::to_string(m_first) + "-" + std::to_string(m_last);
    if (m_frames > 1 && m_step != 1 && m_step != -1) name += "x" + std::to_string(m_step);
    std::string line = m_reason;
    line.replace(line.find(mark), mark.size(), name);
    m_frames = 0;
    m_writeLine(line);
}

}  // namespace qrtplay
