#include "viewer/timeline/qrtTrackPainter.h"

#include <QFontMetrics>
#include <algorithm>

namespace qrtplay {

namespace {

constexpr int narrowestClip = 2;         // pixels, that is told apart from its neighbours
constexpr int narrowestRoundedClip = 6;  // below it, corners and edges leave nothing of the colour
constexpr int narrowestNamedClip = 28;
constexpr int clipNameIndent = 6;
constexpr int beyondTrackView = 16;  // how far shapes go on where they leave the view: their ends must not show

}  // namespace

TrackPainter::TrackPainter(QPainter& painter, TimelineScale const& scale, TimelineColours const& colours,
                           TimelineTracks const& tracks)
    : m_painter(painter),
      m_scale(scale),
      m_colours(colours),
      m_tracks(tracks),
      m_firstFrame(scale.frameAt(0)),
      m_lastFrame(scale.frameAt(scale.width())) {}

void TrackPainter::paint(TrackOfFrames const& track, QRect const& row) {
    QRect ground = row;
    ground.setLeft(std::max(row.left(), m_scale.columnOf(0)));
    ground.setRight(std::min(row.right(), m_scale.columnOf(m_scale.frameCount()) - 1));
    m_painter.fillRect(ground, m_colours.track);
    m_trackName = trackNameRect(track, row);
    paintClips(track, row);
    paintTransitions(track, row);
    paintTrackName(track, row);
}

void TrackPainter::paintClips(TrackOfFrames const& track, QRect const& row) {
    auto clip = TimelineTracks::firstFrom(track.clips, m_firstFrame);
    while (clip != track.clips.end() && clip->first <= m_lastFrame) {
        if (widthOf(*clip) < narrowestClip) {
            clip = paintCrowd(track.clips, clip, row);
            continue;
        }
        paintClip(track.view->items[clip->index], rectOf(*clip, row));
        ++clip;
    }
}

std::vector<SpanOfFrames>::const_iterator TrackPainter::paintCrowd(std::vector<SpanOfFrames> const& clips,
                                                                   std::vector<SpanOfFrames>::const_iterator clip,
                                                                   QRect const& row) {
    const int left = m_scale.columnOf(clip->first);
    int end = left;
    while (clip != clips.end() && clip->first <= m_lastFrame && widthOf(*clip) < narrowestClip &&
           m_scale.columnOf(clip->first) <= end) {
        end = std::max(m_scale.columnOf(clip->end), m_scale.columnOf(clip->first) + 1);
        // On to the first one that reaches into another column.
        clip = std::partition_point(clip, clips.end(),
                                    [&](SpanOfFrames const& span) { return m_scale.columnOf(span.end) <= end; });
    }
    m_painter.fillRect(QRect(left, row.top(), end - left, row.height()), m_colours.crowd);
    ++m_paintedItems;
    return clip;
}

void TrackPainter::paintClip(TrackItem const& item, QRect const& rect) {
    ++m_paintedItems;
    const ClipLook look = m_colours.clip(item, *m_tracks.timeline());
    if (rect.width() < narrowestRoundedClip) {
        // The last column is left free, to tell one clip from the next.
        m_painter.fillRect(rect.adjusted(0, 0, rect.width() > narrowestClip ? -1 : 0, 0), look.fill);
        return;
    }
    constexpr double half = 0.5;  // the edge runs through the middle of pixels
    constexpr double radius = 3.5;
    const QRectF shape = QRectF(rect).adjusted(half, half, -half - 1, -half);
    m_painter.setRenderHint(QPainter::Antialiasing, true);
    m_painter.setPen(look.edge);
    m_painter.setBrush(look.fill);
    m_painter.drawRoundedRect(shape, radius, radius);
    if (look.pattern != Qt::SolidPattern) {
        QColor faint = look.edge;
        faint.setAlpha(150);
        m_painter.setBrush(QBrush(faint, look.pattern));
        m_painter.drawRoundedRect(shape, radius, radius);
    }
    if (look.isNested) {
        m_painter.setBrush(Qt::NoBrush);
        constexpr double inset = 3;
        if (shape.width() > 4 * inset) m_painter.drawRoundedRect(shape.adjusted(inset, inset, -inset, -inset), 2, 2);
    }
    m_painter.setRenderHint(QPainter::Antialiasing, false);
    paintClipName(item, look, rect);
}

void TrackPainter::paintClipName(TrackItem const& item, ClipLook const& look, QRect const& rect) {
    QRect box = rect.adjusted(clipNameIndent, 0, -clipNameIndent, 0);
    // A clip that begins left of the view has its name in view all the same.
    box.setLeft(std::max(box.left(), clipNameIndent));
    if (!m_trackName.isEmpty() && box.left() <= m_trackName.right() + clipNameIndent)
        box.setLeft(m_trackName.right() + clipNameIndent);
    box.setRight(std::min(box.right(), static_cast<int>(m_scale.width()) - clipNameIndent));
    if (item.name.empty() || box.width() < narrowestNamedClip - 2 * clipNameIndent) return;
    const QFontMetrics metrics = m_painter.fontMetrics();
    const QString name = QString::fromStdString(item.name).simplified();
    const QString text = metrics.elidedText(name, Qt::ElideRight, box.width());
    if (look.pattern != Qt::SolidPattern) {
        // Letters on a pattern want a quiet ground.
        QRect ground = metrics.boundingRect(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
        ground = ground.adjusted(-3, 0, 3, 0) & rect.adjusted(2, 2, -3, -2);
        m_painter.fillRect(ground, look.fill);
    }
    m_painter.setPen(look.text);
    m_painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
}

void TrackPainter::paintTransitions(TrackOfFrames const& track, QRect const& row) {
    auto transition = TimelineTracks::firstFrom(track.transitions, m_firstFrame);
    while (transition != track.transitions.end() && transition->first <= m_lastFrame) {
        const QRect rect = rectOf(*transition, row);
        paintTransition(rect);
        // Of those that begin in one column, one is enough.
        transition = std::partition_point(transition + 1, track.transitions.end(), [&](SpanOfFrames const& span) {
            return m_scale.columnOf(span.end) <= rect.right() + 1;
        });
    }
}

void TrackPainter::paintTransition(QRect const& rect) {
    ++m_paintedItems;
    m_painter.fillRect(rect, m_colours.transition);
    if (rect.width() < narrowestRoundedClip) return;
    constexpr double half = 0.5;
    const QRectF box = QRectF(rect).adjusted(half, half, -half, -half);
    m_painter.setPen(m_colours.transitionEdge);
    m_painter.setBrush(Qt::NoBrush);
    m_painter.setRenderHint(QPainter::Antialiasing, true);
    m_painter.drawRect(box);
    m_painter.drawLine(box.topLeft(), box.bottomRight());
    m_painter.drawLine(box.bottomLeft(), box.topRight());
    m_painter.setRenderHint(QPainter::Antialiasing, false);
}

QRect TrackPainter::trackNameRect(TrackOfFrames const& track, QRect const& row) const {
    constexpr int narrowestView = 240;
    constexpr int widest = 90;
    if (m_scale.width() < narrowestView) return {};
    const QFontMetrics metrics = m_painter.fontMetrics();
    const int width = std::min(widest, metrics.horizontalAdvance(track.name) + 2) + 8;
    const int height = std::min(row.height() - 4, metrics.height() + 2);
    const int left = std::max(0, m_scale.columnOf(0)) + 3;
    return {left, row.top() + (row.height() - height) / 2, width, height};
}

void TrackPainter::paintTrackName(TrackOfFrames const& track, QRect const& row) {
    if (m_trackName.isEmpty()) return;
    QColor ground = m_colours.ground;
    ground.setAlpha(215);
    m_painter.setRenderHint(QPainter::Antialiasing, true);
    m_painter.setPen(Qt::NoPen);
    m_painter.setBrush(ground);
    m_painter.drawRoundedRect(m_trackName & row, 3, 3);
    m_painter.setRenderHint(QPainter::Antialiasing, false);
    m_painter.setPen(m_colours.label);
    const QRect box = m_trackName.adjusted(4, 0, -4, 0);
    m_painter.drawText(box, Qt::AlignCenter | Qt::TextSingleLine,
                       m_painter.fontMetrics().elidedText(track.name, Qt::ElideRight, box.width()));
}

int TrackPainter::widthOf(SpanOfFrames const& span) const {
    return m_scale.columnOf(span.end) - m_scale.columnOf(span.first);
}

QRect TrackPainter::rectOf(SpanOfFrames const& span, QRect const& row) const {
    const int left = std::max(m_scale.columnOf(span.first), row.left() - beyondTrackView);
    const int end = std::min(m_scale.columnOf(span.end), row.right() + 1 + beyondTrackView);
    return {left, row.top(), std::max(1, end - left), row.height()};
}

}  // namespace qrtplay
