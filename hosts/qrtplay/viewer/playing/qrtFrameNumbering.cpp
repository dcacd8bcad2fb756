#include "viewer/playing/qrtFrameNumbering.h"

#include <algorithm>
#include <cmath>

#include "playback/qrtTimecode.h"

namespace qrtplay {

namespace {

constexpr int64 clockHours = 24;
constexpr int64 clockSecondsPerHour = 3600;

/// SMPTE ST 12-1: the first numbers of every minute are left out, but for every tenth minute, so that the clock keeps
/// up with pictures that come a thousandth too slowly.
struct DropRule {
    int64 perSecond;  // numbers, of which 2 of 30 or 4 of 60 are left out

    [[nodiscard]] int64 dropped() const { return perSecond / 15; }
    [[nodiscard]] int64 perMinute() const { return 60 * perSecond - dropped(); }
    [[nodiscard]] int64 perTenMinutes() const { return 10 * perMinute() + dropped(); }
    [[nodiscard]] int64 perDay() const { return clockHours * 6 * perTenMinutes(); }

    /// The number that `frame`, counted from midnight, would have if none were left out.
    [[nodiscard]] int64 numberOf(int64 frame) const {
        const int64 tens = frame / perTenMinutes();
        const int64 rest = frame % perTenMinutes();
        // The first of ten minutes is longer by what the others leave out.
        const int64 shortMinutes = std::max<int64>(0, rest - dropped()) / perMinute();
        return frame + dropped() * (9 * tens + shortMinutes);
    }
};

int64 frameOfDay(int64 frame, int64 perDay) {
    const int64 rest = frame % perDay;
    return rest < 0 ? rest + perDay : rest;
}

/// The frame of the day that the clock shows.
int64 clockFrame(int64 frame, int64 start, int64 perDay) {
    return frameOfDay(frameOfDay(frame, perDay) + frameOfDay(start, perDay), perDay);
}

int64 numbersPerSecond(Rational const& rate) {
    return std::max<int64>(1, std::llround(rate.getValue()));
}

}  // namespace

QString FrameNumbering::text(int64 frame, Numbering numbering, bool dropFrame) const {
    switch (numbering) {
        case Numbering::timecode: return timecode(frame, dropFrame);
        case Numbering::frames: return QString::number(frame);
        case Numbering::seconds: break;
    }
    constexpr int32 perSecond = 1000;
    const int64 milliseconds = ExactTime::ofFrame(frame, m_rate).nearestFrame(Rational(perSecond, 1));
    const QString fraction = QString::number(std::abs(milliseconds % perSecond)).rightJustified(3, '0');
    return QString("%1%2.%3 s").arg(milliseconds < 0 ? "-" : "").arg(std::abs(milliseconds / perSecond)).arg(fraction);
}

QString FrameNumbering::timecode(int64 frame, bool dropFrame) const {
    const int64 perSecond = numbersPerSecond(m_rate);
    const int64 start = m_clockStart.nearestFrame(m_rate);
    if (!dropFrame || !hasDropFrame()) {
        const int64 perDay = clockHours * clockSecondsPerHour * perSecond;
        return QString::fromStdString(qrtplay::timecode(clockFrame(frame, start, perDay), m_rate));
    }
    const DropRule rule{perSecond};
    const int64 number = rule.numberOf(clockFrame(frame, start, rule.perDay()));
    QString text = QString::fromStdString(qrtplay::timecode(number, m_rate));
    text[text.lastIndexOf(':')] = ';';
    return text;
}

bool FrameNumbering::hasDropFrame() const noexcept {
    const int64 numerator = m_rate.getNumerator();
    const int64 denominator = m_rate.getDenominator();
    constexpr int64 slowed = 1001;
    return denominator > 0 && (numerator * slowed == 30000 * denominator || numerator * slowed == 60000 * denominator);
}

}  // namespace qrtplay
