#include "render/qrtTimecode.h"

#include <QString>
#include <algorithm>
#include <cmath>

namespace qrtplay {

namespace {

QString twoDigits(int64 number) {
    return QString::number(number).rightJustified(2, '0');
}

}  // namespace

std::string timecode(int64 frame, Rational const& rate) {
    const int64 perSecond = std::max<int64>(1, std::llround(rate.getValue()));
    const int64 seconds = frame / perSecond;
    return QString("%1:%2:%3:%4")
        .arg(twoDigits(seconds / 3600), twoDigits(seconds / 60 % 60), twoDigits(seconds % 60),
             twoDigits(frame % perSecond))
        .toStdString();
}

std::string durationText(double seconds) {
    constexpr double longest = 1e9;
    const double clamped = std::isfinite(seconds) ? std::clamp(seconds, 0.0, longest) : longest;
    const double tenths = std::round(clamped * 10) / 10;
    if (tenths < 60) return QString::number(tenths, 'f', 1).toStdString() + " s";
    const int64 whole = std::llround(clamped);
    if (whole < 3600) return QString("%1:%2 min").arg(whole / 60).arg(twoDigits(whole % 60)).toStdString();
    return QString("%1:%2:%3 h").arg(whole / 3600).arg(twoDigits(whole / 60 % 60), twoDigits(whole % 60)).toStdString();
}

std::string rateText(Rational const& rate) {
    QString text = QString::number(rate.getValue(), 'f', 3);
    while (text.endsWith('0')) text.chop(1);
    if (text.endsWith('.')) text.chop(1);
    return text.toStdString();
}

}  // namespace qrtplay
