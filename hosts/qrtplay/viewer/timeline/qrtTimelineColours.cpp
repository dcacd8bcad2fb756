#include "viewer/timeline/qrtTimelineColours.h"

#include <QString>
#include <array>
#include <cmath>

#include "base/qrtColourValue.h"

namespace qrtplay {

namespace {

QColor mixedColour(QColor const& from, QColor const& to, double share) {
    const auto mixed = [share](int a, int b) { return static_cast<int>(std::lround(a + (b - a) * share)); };
    return {mixed(from.red(), to.red()), mixed(from.green(), to.green()), mixed(from.blue(), to.blue())};
}

QColor withAlpha(QColor colour, int alpha) {
    colour.setAlpha(alpha);
    return colour;
}

/// FNV-1a: the same on every machine and in every run, which Qt does not promise of its own hashes.
uint64 stableTextHash(std::string const& text) {
    uint64 hash = 14695981039346656037ULL;
    for (const char letter : text) {
        hash ^= static_cast<unsigned char>(letter);
        hash *= 1099511628211ULL;
    }
    // Names that differ in a digit alone are to look different all the same.
    hash = (hash ^ hash >> 33) * 0xff51afd7ed558ccdULL;
    return hash ^ hash >> 33;
}

/// A project keeps its colours when its folder is moved.
std::string fileNameIn(std::string const& path) {
    return path.substr(path.find_last_of('/') + 1);
}

// Degrees, apart enough to be told from each other; none near the red of what is missing.
constexpr std::array<double, 14> mediaHues{26, 42, 60, 82, 110, 140, 160, 178, 194, 210, 228, 252, 278, 308};

}  // namespace

TimelineColours::TimelineColours(QPalette const& palette) {
    QColor const& window = palette.color(QPalette::Window);
    QColor const& text = palette.color(QPalette::WindowText);
    m_isDark = window.lightness() < text.lightness();
    ground = m_isDark ? window.darker(125) : mixedColour(window, Qt::white, 0.35);
    ruler = m_isDark ? window : window.darker(104);
    line = mixedColour(ruler, text, m_isDark ? 0.22 : 0.25);
    tick = mixedColour(ruler, text, 0.5);
    label = mixedColour(ruler, text, m_isDark ? 0.72 : 0.78);
    track = mixedColour(ground, text, m_isDark ? 0.055 : 0.06);
    bar = mixedColour(ground, text, 0.12);
    rendered = m_isDark ? QColor(76, 187, 106) : QColor(42, 157, 80);
    decoded = m_isDark ? QColor(74, 144, 226) : QColor(44, 112, 205);
    dim = withAlpha(ground, 165);
    range = m_isDark ? QColor(240, 184, 72) : QColor(191, 125, 8);
    playhead = m_isDark ? QColor(255, 92, 64) : QColor(217, 48, 24);
    playheadText = Qt::white;
    playheadFrame = withAlpha(playhead, 60);
    transition = withAlpha(m_isDark ? QColor(Qt::black) : QColor(Qt::white), 110);
    transitionEdge = withAlpha(m_isDark ? QColor(Qt::white) : QColor(Qt::black), 150);
    crowd = mixedColour(ground, text, 0.33);
    thumb = withAlpha(text, 90);
}

ClipLook TimelineColours::mediaLook(std::string const& media) const {
    const uint64 hash = stableTextHash(media);
    constexpr std::array<double, 3> shades{-0.045, 0, 0.045};
    return look(mediaHues[hash % mediaHues.size()], 0.42, shades[hash / mediaHues.size() % shades.size()]);
}

ClipLook TimelineColours::look(double hue, double saturation, double lighter) const {
    constexpr double fullCircle = 360;
    const auto colour = [&](double lightness) {
        return QColor::fromHslF(static_cast<ColourValue>(hue / fullCircle), static_cast<ColourValue>(saturation),
                                static_cast<ColourValue>(lightness));
    };
    ClipLook look;
    look.fill = colour((m_isDark ? 0.33 : 0.74) + lighter).rgb();
    look.edge = colour(0.5).rgb();
    look.text = m_isDark ? QColor(240, 240, 240) : QColor(24, 24, 24);
    return look;
}

ClipLook TimelineColours::clip(TrackItem const& item, Timeline const& timeline) const {
    if (item.kind == TrackItem::Kind::stack) {
        ClipLook nested = look(220, 0.12);
        nested.isNested = true;
        return nested;
    }
    if (item.generator) {
        ClipLook generated = look(280, 0.16);
        generated.pattern = Qt::BDiagPattern;
        return generated;
    }
    const bool isThere = item.media && *item.media < timeline.media().size();
    if (isThere && timeline.media()[*item.media].kind != MediaReference::Kind::missing)
        return mediaLook(fileNameIn(timeline.media()[*item.media].text()));
    ClipLook missing = look(356, 0.6);
    missing.pattern = Qt::DiagCrossPattern;
    return missing;
}

QColor TimelineColours::marker(std::string const& name) const {
    struct Named {
        char const* name;
        QRgb light;
        QRgb dark;
    };
    static constexpr Named colours[] = {
        {"RED", 0xffd32f2f, 0xffef5350},    {"PINK", 0xffd8588f, 0xfff48fb1},   {"ORANGE", 0xffe07a10, 0xffffa040},
        {"YELLOW", 0xffc9a400, 0xfffdd835}, {"GREEN", 0xff2e9d3a, 0xff66bb6a},  {"CYAN", 0xff0097a7, 0xff26c6da},
        {"BLUE", 0xff1f6fd0, 0xff5c9ded},   {"PURPLE", 0xff7b3fb5, 0xffa877dc}, {"MAGENTA", 0xffb3259f, 0xffe05cc9},
        {"BLACK", 0xff202020, 0xff606060},  {"WHITE", 0xffb8b8b8, 0xffffffff},
    };
    const QString wanted = QString::fromStdString(name).trimmed().toUpper();
    for (Named const& one : colours) {
        if (wanted == QLatin1String(one.name)) return QColor(m_isDark ? one.dark : one.light);
    }
    return wanted.isEmpty() || !QColor::isValidColor(wanted) ? tick : QColor(wanted);
}

}  // namespace qrtplay
