#include "render/qrtProgress.h"

#include <QString>
#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

#include "playback/qrtTimecode.h"

namespace qrtplay {

namespace {

std::string speedAndRest(int64 done, int64 total, double seconds) {
    if (done <= 0 || seconds <= 0) return "";
    const double perSecond = static_cast<double>(done) / seconds;
    std::string speed = QString::number(perSecond, 'f', 1).toStdString() + " frames/s";
    if (done >= total) return speed;
    return speed + ", " + durationText(static_cast<double>(total - done) / perSecond) + " left";
}

}  // namespace

double Progress::steadySeconds() {
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

Progress::Progress(std::ostream& stream, bool isTerminal, int64 totalFrames, Clock clock)
    : m_stream(stream),
      m_isTerminal(isTerminal),
      m_total(std::max<int64>(1, totalFrames)),
      m_clock(std::move(clock)),
      m_begin(m_clock()) {}

void Progress::update(int64 done) {
    if (m_isTerminal)
        drawBar(done);
    else
        writeLine(done);
}

void Progress::drawBar(int64 done) {
    constexpr double redrawInterval = 0.1;  // faster than that nobody reads
    const double now = elapsedSeconds();
    if (m_barIsVisible && done < m_total && now - m_lastDrawn < redrawInterval) return;
    m_lastDrawn = now;
    m_barIsVisible = true;

    constexpr int64 barWidth = 30;
    const int64 filled = std::clamp<int64>(done * barWidth / m_total, 0, barWidth);
    m_stream << "\r\033[K[" << std::string(static_cast<size_t>(filled), '#')
             << std::string(static_cast<size_t>(barWidth - filled), '.') << "] " << done << "/" << m_total << "  "
             << speedAndRest(done, m_total, now) << std::flush;
}

void Progress::writeLine(int64 done) {
    constexpr int64 parts = 10;
    const int64 tenths = done * parts / m_total;
    if (tenths <= m_tenthsWritten) return;
    m_tenthsWritten = tenths;
    m_stream << "qrtplay: " << done << " of " << m_total << " frames, " << speedAndRest(done, m_total, elapsedSeconds())
             << std::endl;
}

void Progress::clear() {
    if (m_barIsVisible) m_stream << "\r\033[K" << std::flush;
    m_barIsVisible = false;
}

}  // namespace qrtplay
