#include "viewer/timeline/qrtTimelinePainter.h"

#include <QFontMetrics>
#include <QPolygonF>
#include <algorithm>

#include "viewer/timeline/qrtTimelineRuler.h"
#include "viewer/timeline/qrtTrackPainter.h"

namespace qrtplay {

namespace {

constexpr int markerFlagWidth = 7;
constexpr int shortestThumb = 16;

/// The playhead's column, and as many more as its frame has.
QRect playheadLine(TimelineScene const& scene, int64 frame) {
    const int left = scene.scale.columnOf(frame);
    const int width = std::max(1, scene.scale.columnOf(frame + 1) - left);
    const QSize size = scene.layout.size();
    return QRect(left, 0, width, size.height()) & QRect(QPoint(), size).adjusted(-2, 0, 2, 0);
}

QRect playheadLabel(TimelineScene const& scene, QString const& text, QFont const& font, int column) {
    const QFontMetrics metrics(font);
    const int width = metrics.horizontalAdvance(text) + 12;
    const int mostLeft = std::max(0, scene.layout.size().width() - width);
    const int left = std::clamp(column - width / 2, 0, mostLeft);
    return {left, 2, width, TimelineLayout::rulerHeight - 8};
}

}  // namespace

TimelinePainter::TimelinePainter(QPainter& painter, TimelineScene const& scene) : m_painter(painter), m_scene(scene) {}

QFont TimelinePainter::smallFont(QFont font) {
    constexpr double share = 0.88;
    if (font.pointSizeF() > 0) font.setPointSizeF(font.pointSizeF() * share);
    return font;
}

void TimelinePainter::paint() {
    const QRect all(QPoint(), m_scene.layout.size());
    m_painter.fillRect(all, m_scene.colours.ground);
    paintRuler();
    paintCacheBars();
    if (m_scene.scale.frameCount() < 1) return;
    paintTracks();
    paintMarkers();
    QRect above = all;
    above.setBottom(cacheBarRows(m_scene).top() - 1);
    QRect below = all;
    below.setTop(cacheBarRows(m_scene).bottom() + 1);
    paintDimming(above);
    paintDimming(below);
    paintRangePoints();
    paintThumbs();
}

void TimelinePainter::paintRuler() {
    const QRect ruler = m_scene.layout.ruler();
    TimelineColours const& colours = m_scene.colours;
    m_painter.fillRect(ruler, colours.ruler);
    m_painter.fillRect(QRect(ruler.left(), ruler.bottom(), ruler.width(), 1), colours.line);
    const std::shared_ptr<Timeline const>& timeline = m_scene.tracks.timeline();
    if (!timeline) return;
    const QFontMetrics metrics = m_painter.fontMetrics();
    const TimelineRuler marks(m_scene.numbering, timeline->clockStart(), m_scene.shown, m_scene.dropFrame);
    const auto widthOf = [&](QString const& text) { return static_cast<double>(metrics.horizontalAdvance(text)); };
    for (RulerTick const& tick : marks.ticks(m_scene.scale, widthOf)) {
        const int column = m_scene.scale.columnOf(tick.frame);
        constexpr int smallTick = 5;
        const int height = tick.label.isEmpty() ? smallTick : ruler.height() - 8;
        m_painter.fillRect(QRect(column, ruler.bottom() - height, 1, height),
                           tick.label.isEmpty() ? colours.line : colours.tick);
        if (tick.label.isEmpty()) continue;
        m_painter.setPen(colours.label);
        const QRect box(column + static_cast<int>(TimelineRuler::labelIndent), ruler.top() + 3, ruler.width(),
                        ruler.height() - smallTick - 4);
        m_painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, tick.label);
    }
}

QRect TimelinePainter::cacheBarRows(TimelineScene const& scene) {
    return scene.layout.renderedBar() | scene.layout.decodedBar();
}

void TimelinePainter::paintCacheBars() {
    m_painter.fillRect(cacheBarRows(m_scene), m_scene.colours.ground);
    paintBar(m_scene.layout.renderedBar(), m_scene.rendered, m_scene.colours.rendered);
    paintBar(m_scene.layout.decodedBar(), m_scene.decoded, m_scene.colours.decoded);
    paintDimming(cacheBarRows(m_scene));
}

void TimelinePainter::paintBar(QRect const& row, std::vector<FrameSpan> const& spans, QColor const& colour) {
    TimelineScale const& scale = m_scene.scale;
    if (scale.frameCount() < 1) return;
    const auto fill = [&](int64 first, int64 last, QColor const& with) {
        const int left = std::max(row.left(), scale.columnOf(first));
        const int end = std::min(row.right() + 1, std::max(scale.columnOf(last + 1), scale.columnOf(first) + 1));
        if (left < end) m_painter.fillRect(QRect(left, row.top(), end - left, row.height()), with);
    };
    fill(0, scale.frameCount() - 1, m_scene.colours.bar);
    for (FrameSpan const& span : spans) {
        const int64 first = std::max<int64>(0, span.first);
        const int64 last = std::min(scale.frameCount() - 1, span.last);
        if (first <= last) fill(first, last, colour);
    }
}

void TimelinePainter::paintMarkers() {
    TimelineScale const& scale = m_scene.scale;
    std::vector<SpanOfFrames> const& markers = m_scene.tracks.markers();
    auto marker = markers.begin();
    while (marker != markers.end()) {
        const int column = scale.columnOf(marker->first);
        if (column > m_scene.layout.size().width()) break;
        // Of those in one column the first one is shown.
        const auto next = std::partition_point(
            marker, markers.end(), [&](SpanOfFrames const& span) { return scale.columnOf(span.first) <= column; });
        const bool isLast = next == markers.end();
        paintMarker(*marker, isLast ? m_scene.layout.size().width() : scale.columnOf(next->first));
        marker = next;
    }
}

void TimelinePainter::paintMarker(SpanOfFrames const& span, int nextColumn) {
    const QRect row = m_scene.layout.markers();
    const int left = m_scene.scale.columnOf(span.first);
    const int end = m_scene.scale.columnOf(span.end);
    if (std::max(end, nextColumn) < 0) return;
    Marker const& marker = m_scene.tracks.timeline()->markers()[span.index];
    const QColor colour = m_scene.colours.marker(marker.colour);
    if (end > left) {
        QColor length = colour;
        length.setAlpha(90);
        m_painter.fillRect(QRect(left, row.top() + 2, end - left, row.height() - 6), length);
        m_painter.fillRect(QRect(left, row.bottom() - 3, end - left, 2), colour);
    }
    const double x = left;
    const double top = row.top() + 1;
    const double right = x + markerFlagWidth;
    const QPolygonF flag({{x, top}, {right, top}, {right - 2.5, top + 3.5}, {right, top + 7}, {x, top + 7}});
    m_painter.setRenderHint(QPainter::Antialiasing, true);
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(colour);
    m_painter.drawPolygon(flag);
    m_painter.setRenderHint(QPainter::Antialiasing, false);
    m_painter.fillRect(QRect(left, row.top() + 1, 1, row.height() - 1), colour);

    constexpr int narrowestName = 20;
    const QRect box(left + markerFlagWidth + 4, row.top(), nextColumn - left - markerFlagWidth - 8, row.height() - 2);
    if (marker.name.empty() || box.width() < narrowestName) return;
    m_painter.setPen(m_scene.colours.label);
    const QString name = QString::fromStdString(marker.name).simplified();
    m_painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                       m_painter.fontMetrics().elidedText(name, Qt::ElideRight, box.width()));
}

void TimelinePainter::paintTracks() {
    TimelineLayout const& layout = m_scene.layout;
    m_painter.save();
    m_painter.setClipRect(layout.tracks());
    TrackPainter painter(m_painter, m_scene.scale, m_scene.colours, m_scene.tracks);
    const auto [first, end] = layout.visibleTracks();
    for (size_t i = first; i < end; ++i)
        painter.paint(m_scene.tracks.tracks()[i], layout.track(i));
    m_painter.restore();
}

void TimelinePainter::paintDimming(QRect const& rows) {
    TimelineScale const& scale = m_scene.scale;
    if (m_scene.inPoint) {
        QRect before = rows;
        before.setRight(scale.columnOf(*m_scene.inPoint) - 1);
        if (before.isValid()) m_painter.fillRect(before, m_scene.colours.dim);
    }
    if (m_scene.outPoint) {
        QRect after = rows;
        after.setLeft(std::max(rows.left(), scale.columnOf(*m_scene.outPoint + 1)));
        if (after.isValid()) m_painter.fillRect(after, m_scene.colours.dim);
    }
}

void TimelinePainter::paintRangePoints() {
    const int height = m_scene.layout.size().height();
    constexpr int foot = 6;
    constexpr int thickness = 2;
    const auto paintBracket = [&](int column, int inwards) {
        QColor const& colour = m_scene.colours.range;
        const int left = inwards > 0 ? column : column - thickness;
        m_painter.fillRect(QRect(left, 0, thickness, height), colour);
        const int footLeft = inwards > 0 ? column : column - foot;
        m_painter.fillRect(QRect(footLeft, 0, foot, thickness), colour);
        m_painter.fillRect(QRect(footLeft, height - thickness, foot, thickness), colour);
    };
    if (m_scene.inPoint) paintBracket(m_scene.scale.columnOf(*m_scene.inPoint), 1);
    if (m_scene.outPoint) paintBracket(m_scene.scale.columnOf(*m_scene.outPoint + 1), -1);
}

void TimelinePainter::paintThumbs() {
    constexpr int thickness = 4;
    const QSize size = m_scene.layout.size();
    const auto thumb = [](double seen, double whole, double hidden, int length) {
        const int extent = std::clamp(static_cast<int>(seen / whole * length), std::min(shortestThumb, length), length);
        const int start = static_cast<int>(hidden / (whole - seen) * (length - extent));
        return std::pair(start, extent);
    };
    m_painter.setRenderHint(QPainter::Antialiasing, true);
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(m_scene.colours.thumb);
    TimelineScale const& scale = m_scene.scale;
    if (scale.contentWidth() > scale.width() + 1) {
        const auto [start, extent] = thumb(scale.width(), scale.contentWidth(), scale.offset(), size.width() - 2);
        m_painter.drawRoundedRect(QRect(1 + start, size.height() - thickness - 1, extent, thickness), 2, 2);
    }
    const QRect tracks = m_scene.layout.tracks();
    const int whole = m_scene.layout.tracksHeight();
    if (whole > tracks.height() && tracks.height() > shortestThumb) {
        const auto [start, extent] = thumb(tracks.height(), whole, m_scene.layout.scrolled(), tracks.height() - 2);
        const QRect rect(size.width() - thickness - 1, tracks.top() + 1 + start, thickness, extent);
        m_painter.drawRoundedRect(rect, 2, 2);
    }
    m_painter.setRenderHint(QPainter::Antialiasing, false);
}

void TimelinePainter::paintPlayhead(int64 frame) {
    const QRect line = playheadLine(m_scene, frame);
    const int column = m_scene.scale.columnOf(frame);
    constexpr int narrowestFrame = 3;
    if (line.isValid()) {
        if (line.width() >= narrowestFrame) m_painter.fillRect(line, m_scene.colours.playheadFrame);
        m_painter.fillRect(QRect(column, 0, 1, line.height()), m_scene.colours.playhead);
    } else if (column < 0 || column >= m_scene.layout.size().width()) {
        return;
    }
    const QString text = m_scene.numbering.text(frame, m_scene.shown, m_scene.dropFrame);
    const QRect label = playheadLabel(m_scene, text, m_painter.font(), column);
    m_painter.setRenderHint(QPainter::Antialiasing, true);
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(m_scene.colours.playhead);
    m_painter.drawRoundedRect(label, 3, 3);
    m_painter.setRenderHint(QPainter::Antialiasing, false);
    m_painter.setPen(m_scene.colours.playheadText);
    m_painter.drawText(label, Qt::AlignCenter | Qt::TextSingleLine, text);
}

QRegion TimelinePainter::playheadRegion(TimelineScene const& scene, int64 frame, QFont const& font) {
    const QString text = scene.numbering.text(frame, scene.shown, scene.dropFrame);
    const QRect label = playheadLabel(scene, text, font, scene.scale.columnOf(frame));
    return QRegion(playheadLine(scene, frame).adjusted(-1, 0, 1, 0)) + label.adjusted(-1, -1, 1, 1);
}

}  // namespace qrtplay
