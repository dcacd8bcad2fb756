#include "playback/qrtTimecode.h"

#include <QRegularExpression>
#include <QString>
#include <algorithm>
#include <cmath>
#include <numeric>

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
    while (text.endsWith('0'))
        text.chop(1);
    if (text.endsWith('.')) text.chop(1);
    return text.toStdString();
}

std::string fractionText(Rational const& rate) {
    return std::to_string(rate.getNumerator()) + "/" + std::to_string(rate.getDenominator());
}

Outcome parseRate(std::string const& text, Rational& rate) {
    static const QRegularExpression form("^([0-9]{1,7})(?:/([0-9]{1,7})|\\.([0-9]{1,3}))?$");
    const auto match = form.match(QString::fromStdString(text));
    int numerator = match.captured(1).toInt();
    int denominator = 1;
    if (match.capturedLength(2) > 0) denominator = match.captured(2).toInt();
    if (match.capturedLength(3) > 0) {
        constexpr int thousand = 1000;
        constexpr int slowed = 1001;  // colour television runs at this much less than whole rates
        const double value = match.captured(0).toDouble();
        const int whole = static_cast<int>(std::lround(value * slowed / thousand));
        constexpr double shortForms = 0.005;
        const bool isWhole = std::abs(value - std::round(value)) == 0;
        const bool isSlowed = !isWhole && std::abs(value - whole * double{thousand} / slowed) < shortForms;
        numerator = isSlowed ? whole * thousand : static_cast<int>(std::lround(value * thousand));
        denominator = isSlowed ? slowed : thousand;
    }
    constexpr int64 fastest = 1000;
    if (!match.hasMatch() || numerator <= 0 || denominator <= 0 || numerator > fastest * denominator)
        return Outcome::failure("rate '" + text +
                                "': has to be frames per second up to 1000, for example 25, 23.976 or " + "24000/1001");
    const int divisor = std::gcd(numerator, denominator);
    rate = Rational(numerator / divisor, static_cast<uint32>(denominator / divisor));
    return Outcome();
}

}  // namespace qrtplay
