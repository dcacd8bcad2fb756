#include "viewer/timeline/qrtTimelineRuler.h"

#include <algorithm>
#include <cmath>

namespace qrtplay {

namespace {

int64 flooredQuotient(int64 dividend, int64 divisor) {  // divisor > 0
    const int64 quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

int64 flooredRemainder(int64 dividend, int64 divisor) {
    return dividend - flooredQuotient(dividend, divisor) * divisor;
}

int64 roundedUpTo(int64 value, int64 step) {
    return -flooredQuotient(-value, step) * step;
}

/// The text with each digit as wide as any.
QString widestForm(QString text, TimelineRuler::TextWidth const& widthOf) {
    QChar widest('0');
    for (char digit = '1'; digit <= '9'; ++digit) {
        if (widthOf(QChar(digit)) > widthOf(widest)) widest = QChar(digit);
    }
    for (QChar& letter : text) {
        if (letter.isDigit()) letter = widest;
    }
    return text;
}

}  // namespace

TimelineRuler::TimelineRuler(FrameNumbering const& numbering, ExactTime const& clockStart, Numbering shown,
                             bool dropFrame)
    : m_numbering(numbering),
      m_shown(shown),
      m_dropFrame(dropFrame && shown == Numbering::timecode && numbering.hasDropFrame()),
      m_perSecond(std::max<int64>(1, std::llround(numbering.rate().getValue()))),
      m_dropped(m_dropFrame ? m_perSecond / 15 : 0),
      m_start(shown == Numbering::timecode ? clockStart.nearestFrame(numbering.rate()) : 0) {}

std::vector<RulerTick> TimelineRuler::ticks(TimelineScale const& scale, TextWidth const& widthOf) const {
    std::vector<RulerTick> ticks;
    if (scale.frameCount() < 1 || !(m_numbering.rate().getValue() > 0)) return ticks;
    const Step labels = labelStep(scale, widthOf);
    const Step small = tickStep(labels, scale);
    // Leftwards for as long as a label may be.
    const int64 first = scale.frameAt(-2 * gapOf(labels) * scale.pixelsPerFrame());
    const int64 last = scale.frameAt(scale.width());
    forEachTick(labels, first, last, [&](int64 frame, int64 second) {
        ticks.push_back({frame, label(frame, second, labels)});
    });
    if (ticks.empty()) ticks.push_back({first, label(first, secondOf(first), labels)});
    const size_t labelled = ticks.size();
    forEachTick(small, first, last, [&](int64 frame, int64) { ticks.push_back({frame, QString()}); });
    const auto isEarlier = [](RulerTick const& a, RulerTick const& b) { return a.frame < b.frame; };
    const auto isSame = [](RulerTick const& a, RulerTick const& b) { return a.frame == b.frame; };
    std::inplace_merge(ticks.begin(), ticks.begin() + static_cast<std::ptrdiff_t>(labelled), ticks.end(), isEarlier);
    ticks.erase(std::unique(ticks.begin(), ticks.end(), isSame), ticks.end());
    return ticks;
}

std::vector<TimelineRuler::Step> TimelineRuler::steps() const {
    std::vector<Step> all;
    constexpr int64 longest = int64{1} << 52;  // no timeline shows two such ticks
    if (m_shown == Numbering::frames) {
        for (int64 decade = 1; decade < longest; decade *= 10) {
            for (const int64 factor : {1, 2, 5})
                all.push_back({decade * factor, false});
        }
        return all;
    }
    std::vector<int64> frames{1, 2, 5, 10};
    for (const int64 part : {4, 2}) {
        if (m_perSecond / part > frames.back()) frames.push_back(m_perSecond / part);
    }
    for (const int64 count : frames) {
        if (count == 1 || (count < m_perSecond && m_perSecond % count == 0)) all.push_back({count, false});
    }
    constexpr int64 minute = 60;
    constexpr int64 hour = 3600;
    for (const int64 unit : {int64{1}, minute}) {
        for (const int64 factor : {1, 2, 5, 10, 15, 30})
            all.push_back({unit * factor, true});
    }
    for (const int64 factor : {1, 2, 6, 12})
        all.push_back({hour * factor, true});
    for (int64 days = 24 * hour; days < longest; days *= 10) {
        for (const int64 factor : {1, 2, 5})
            all.push_back({days * factor, true});
    }
    return all;
}

double TimelineRuler::gapOf(Step const& step) const {
    const bool isWhole = m_shown != Numbering::seconds || m_numbering.rate().getDenominator() == 1;
    const auto count = static_cast<double>(step.count);
    if (!step.isOfSeconds) return step.count > 1 && !isWhole ? count - 1 : count;
    if (m_shown == Numbering::seconds) return std::floor(count * m_numbering.rate().getValue());
    return count * static_cast<double>(m_perSecond) - static_cast<double>(m_dropped);
}

bool TimelineRuler::divides(Step const& small, Step const& large) const {
    return small.isOfSeconds != large.isOfSeconds || large.count % small.count == 0;
}

TimelineRuler::Step TimelineRuler::labelStep(TimelineScale const& scale, TextWidth const& widthOf) const {
    const std::vector<Step> all = steps();
    for (Step const& step : all) {
        double widest = 0;
        for (const int64 frame : {scale.frameAt(0), scale.frameAt(scale.width())}) {
            const QString text = label(frame, secondOf(frame), step);
            widest = std::max(widest, widthOf(widestForm(text, widthOf)));
        }
        if (gapOf(step) * scale.pixelsPerFrame() >= labelIndent + widest + labelSpace) return step;
    }
    return all.back();
}

TimelineRuler::Step TimelineRuler::tickStep(Step const& labels, TimelineScale const& scale) const {
    for (Step const& step : steps()) {
        if (step.isOfSeconds == labels.isOfSeconds && step.count >= labels.count) break;
        if (divides(step, labels) && gapOf(step) * scale.pixelsPerFrame() >= tickSpace) return step;
    }
    return labels;
}

void TimelineRuler::forEachTick(Step const& step, int64 first, int64 last,
                                std::function<void(int64 frame, int64 second)> const& visit) const {
    if (m_shown == Numbering::frames) {
        for (int64 frame = roundedUpTo(first, step.count); frame <= last; frame += step.count)
            visit(frame, 0);
        return;
    }
    const int64 stride = step.isOfSeconds ? step.count : 1;
    for (int64 second = flooredQuotient(secondOf(first), stride) * stride;; second += stride) {
        const int64 begin = beginOfSecond(second);
        if (begin > last) return;
        if (step.isOfSeconds) {
            if (begin >= first) visit(begin, second);
            continue;
        }
        // Numbers at the begin of a minute may be left out; what is counted are the others' numbers.
        const int64 end = beginOfSecond(second + 1);
        const int64 left = m_dropFrame ? flooredRemainder(begin - end, m_perSecond) : 0;
        for (int64 number = roundedUpTo(left, step.count); begin + number - left < std::min(end, last + 1);
             number += step.count) {
            if (begin + number - left >= first) visit(begin + number - left, second);
        }
    }
}

QString TimelineRuler::label(int64 frame, int64 second, Step const& step) const {
    if (m_shown == Numbering::seconds && step.isOfSeconds) return QString::number(second) + " s";
    return m_numbering.text(frame, m_shown, m_dropFrame);
}

int64 TimelineRuler::secondOf(int64 frame) const {
    if (m_shown == Numbering::seconds) {
        const ExactTime time = ExactTime::ofFrame(frame, m_numbering.rate());
        return flooredQuotient(time.numerator(), time.denominator());
    }
    const int64 number = frame + m_start;
    if (!m_dropFrame) return flooredQuotient(number, m_perSecond);
    const int64 perMinute = m_perSecond * 60 - m_dropped;
    const int64 perTenMinutes = perMinute * 10 + m_dropped;
    const int64 tens = flooredQuotient(number, perTenMinutes);
    const int64 rest = number - tens * perTenMinutes;
    const int64 minutes = rest < m_dropped ? 0 : (rest - m_dropped) / perMinute;
    return flooredQuotient(number + m_dropped * (tens * 9 + minutes), m_perSecond);
}

int64 TimelineRuler::beginOfSecond(int64 second) const {
    if (m_shown == Numbering::seconds) return ExactTime(second, 1).frameFrom(m_numbering.rate());
    const int64 minute = flooredQuotient(second, 60);
    const int64 skipped = m_dropped * (minute - flooredQuotient(minute, 10));
    const bool isShort = flooredRemainder(second, 60) == 0 && flooredRemainder(minute, 10) != 0;
    return second * m_perSecond - skipped + (isShort ? m_dropped : 0) - m_start;
}

}  // namespace qrtplay
