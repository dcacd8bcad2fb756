#include "viewer/timeline/qrtTimelineView.h"

#include <QEvent>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPaintEngine>
#include <QPainter>
#include <QStringList>
#include <QToolTip>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "viewer/qrtMousePosition.h"
#include "viewer/timeline/qrtTimelinePainter.h"

namespace qrtplay {

namespace {

constexpr double timelineZoomStep = 2;
constexpr double scrolledPerNotch = 60;  // of the wheel

QString mediaLineOf(TrackItem const& item, Timeline const& timeline) {
    if (item.kind == TrackItem::Kind::stack) return TimelineView::tr("Nested timeline");
    if (item.generator && *item.generator < timeline.generators().size()) {
        const QString name = QString::fromStdString(timeline.generators()[*item.generator].name);
        return TimelineView::tr("Generated: %1").arg(name);
    }
    if (!item.media || *item.media >= timeline.media().size()) return TimelineView::tr("Missing media");
    MediaReference const& media = timeline.media()[*item.media];
    const QString name = QString::fromStdString(media.text());
    return media.kind == MediaReference::Kind::missing ? TimelineView::tr("Missing media: %1").arg(name) : name;
}

QString nameOrElse(std::string const& name, QString const& whenEmpty) {
    return name.empty() ? whenEmpty : QString::fromStdString(name);
}

}  // namespace

TimelineView::TimelineView(QWidget* parent) : QWidget(parent), m_scene(std::make_unique<TimelineScene>()) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setAccessibleName(tr("Timeline"));
    setToolTip(tr("Drag to move through the timeline. Turn the wheel to scroll, with Ctrl to zoom."));
    m_scene->colours = TimelineColours(palette());
}

TimelineView::~TimelineView() = default;

void TimelineView::setTimeline(std::shared_ptr<Timeline const> timeline, Rational const& rate, int64 frameCount) {
    endScrub();
    const int64 count = timeline ? std::max<int64>(0, frameCount) : 0;
    m_scene->numbering = FrameNumbering(rate, timeline ? timeline->clockStart() : ExactTime());
    m_scene->tracks = TimelineTracks(std::move(timeline), rate, count);
    const size_t video = m_scene->tracks.videoTrackCount();
    m_scene->layout.setTracks(video, m_scene->tracks.tracks().size() - video, !m_scene->tracks.markers().empty());
    m_scene->scale.setFrameCount(count);
    m_scene->inPoint.reset();
    m_scene->outPoint.reset();
    m_scene->rendered.clear();
    m_scene->decoded.clear();
    m_frame = 0;
    invalidate();
}

void TimelineView::setFrame(int64 frame) {
    if (!m_scrubFrame) moveTo(frame);
}

void TimelineView::setRange(std::optional<int64> inPoint, std::optional<int64> outPoint) {
    if (m_scene->inPoint == inPoint && m_scene->outPoint == outPoint) return;
    m_scene->inPoint = inPoint;
    m_scene->outPoint = outPoint;
    invalidate();
}

void TimelineView::setNumbering(Numbering numbering, bool dropFrame) {
    if (m_scene->shown == numbering && m_scene->dropFrame == dropFrame) return;
    m_scene->shown = numbering;
    m_scene->dropFrame = dropFrame;
    invalidate();
}

void TimelineView::setCached(std::vector<FrameSpan> rendered, std::vector<FrameSpan> decoded) {
    if (m_scene->rendered == rendered && m_scene->decoded == decoded) return;
    m_scene->rendered = std::move(rendered);
    m_scene->decoded = std::move(decoded);
    invalidateCacheBars();
}

std::vector<FrameSpan> const& TimelineView::rendered() const noexcept {
    return m_scene->rendered;
}

std::vector<FrameSpan> const& TimelineView::decoded() const noexcept {
    return m_scene->decoded;
}

int64 TimelineView::frameAt(double x) const {
    takeSize();
    return m_scene->scale.frameAt(x);
}

double TimelineView::positionOf(int64 frame) const {
    takeSize();
    return m_scene->scale.positionOf(frame);
}

QString TimelineView::textAt(QPoint const& point) const {
    takeSize();
    std::shared_ptr<Timeline const> const& timeline = m_scene->tracks.timeline();
    if (!timeline || m_scene->scale.frameCount() < 1 || !rect().contains(point)) return {};
    if (m_scene->layout.markers().contains(point)) return markerTextAt(point);
    TimelineScale const& scale = m_scene->scale;
    const bool isOnTimeline = point.x() >= scale.columnOf(0) && point.x() < scale.columnOf(scale.frameCount());
    if (!isOnTimeline || !m_scene->layout.tracks().contains(point)) return {};
    const int64 frame = frameAt(point.x());
    const auto [first, end] = m_scene->layout.visibleTracks();
    for (size_t i = first; i < end; ++i) {
        if (!m_scene->layout.track(i).contains(point)) continue;
        TrackOfFrames const& track = m_scene->tracks.tracks()[i];
        SpanOfFrames const* span = TimelineTracks::at(track.transitions, frame);
        const bool isTransition = span != nullptr;
        if (!span) span = TimelineTracks::at(track.clips, frame);
        if (!span) return {};
        TrackItem const& item = track.view->items[span->index];
        QStringList lines{track.name};
        if (!item.name.empty() || isTransition)
            lines << nameOrElse(item.name, isTransition ? tr("Transition") : QString());
        lines << spanText(span->first, span->end);
        if (!isTransition) lines << mediaLineOf(item, *timeline);
        return lines.join('\n');
    }
    return {};
}

QString TimelineView::markerTextAt(QPoint const& point) const {
    TimelineScale const& scale = m_scene->scale;
    std::vector<SpanOfFrames> const& markers = m_scene->tracks.markers();
    const auto isLeft = [&](SpanOfFrames const& span) { return scale.columnOf(span.first) <= point.x(); };
    const auto behind = std::partition_point(markers.begin(), markers.end(), isLeft);
    // A marker counts as being under the pointer by its length, and at least by its flag; the one begun last is on top.
    constexpr int flag = 8;
    constexpr int mostLookedAt = 1000;
    int looked = 0;
    for (auto marker = std::make_reverse_iterator(behind); marker != markers.rend() && looked < mostLookedAt;
         ++marker, ++looked) {
        const int end = std::max(scale.columnOf(marker->end), scale.columnOf(marker->first) + flag);
        if (point.x() >= end) continue;
        Marker const& found = m_scene->tracks.timeline()->markers()[marker->index];
        return nameOrElse(found.name, tr("Marker")) + '\n' +
               spanText(marker->first, std::max(marker->end, marker->first + 1));
    }
    return {};
}

QString TimelineView::spanText(int64 first, int64 end) const {
    const auto text = [&](int64 frame) { return m_scene->numbering.text(frame, m_scene->shown, m_scene->dropFrame); };
    if (end - first == 1) return tr("%1, 1 frame").arg(text(first));
    return tr("%1 to %2, %3 frames").arg(text(first), text(end - 1)).arg(end - first);
}

QSize TimelineView::sizeHint() const {
    return {800, 190};
}

QSize TimelineView::minimumSizeHint() const {
    return {160, TimelineLayout::rulerHeight + TimelineLayout::markerHeight + 2 * TimelineLayout::lowestTrack + 16};
}

void TimelineView::zoomIn() {
    zoomAroundPlayhead(timelineZoomStep);
}

void TimelineView::zoomOut() {
    zoomAroundPlayhead(1 / timelineZoomStep);
}

void TimelineView::zoomToFit() {
    m_scene->scale.fit();
    invalidate();
}

void TimelineView::zoomAroundPlayhead(double factor) {
    const double playhead = positionOf(m_frame);
    const bool isInView = playhead >= 0 && playhead < width();
    zoom(factor, isInView ? playhead : width() / 2.0);
}

void TimelineView::zoom(double factor, double anchor) {
    takeSize();
    m_scene->scale.zoomBy(factor, anchor);
    invalidate();
}

void TimelineView::scroll(double right, double down) {
    m_scene->scale.scrollBy(right);
    m_scene->layout.scrollBy(static_cast<int>(std::lround(down)));
    invalidate();
}

void TimelineView::invalidate() {
    m_isStale = true;
    update();
}

void TimelineView::invalidateCacheBars() {
    m_areCacheBarsStale = true;
    update(TimelinePainter::cacheBarRows(*m_scene));
}

QRegion TimelineView::playheadRegion() const {
    return TimelinePainter::playheadRegion(*m_scene, m_frame, TimelinePainter::smallFont(font()));
}

void TimelineView::moveTo(int64 frame) {
    frame = std::clamp<int64>(frame, 0, std::max<int64>(0, m_scene->scale.frameCount() - 1));
    if (frame == m_frame) return;
    takeSize();
    update(playheadRegion());
    m_frame = frame;
    // A page turned under the pressed mouse would put another frame under it, and so on to the end.
    if (!m_scrubFrame && m_scene->scale.bringIntoView(frame)) return invalidate();
    update(playheadRegion());
}

void TimelineView::repaintStill(double pixelRatio) {
    const QSize wanted = (QSizeF(size()) * pixelRatio).toSize();
    if (m_painted.size() != wanted || m_painted.devicePixelRatioF() != pixelRatio) {
        m_painted = QPixmap(wanted);
        m_painted.setDevicePixelRatio(pixelRatio);
        m_isStale = true;
    }
    if (!m_isStale && !m_areCacheBarsStale) return;
    QPainter painter(&m_painted);
    painter.setFont(TimelinePainter::smallFont(font()));
    TimelinePainter still(painter, *m_scene);
    if (m_isStale) {
        still.paint();
    } else {
        still.paintCacheBars();
    }
    m_isStale = m_areCacheBarsStale = false;
}

void TimelineView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    takeSize();
    // Not the widget's own ratio: it may be painted into something else, such as a picture for print.
    repaintStill(painter.paintEngine()->paintDevice()->devicePixelRatioF());
    painter.drawPixmap(0, 0, m_painted);
    if (m_scene->scale.frameCount() < 1) return;
    painter.setFont(TimelinePainter::smallFont(font()));
    TimelinePainter(painter, *m_scene).paintPlayhead(m_frame);
}

void TimelineView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || m_scene->scale.frameCount() < 1) return QWidget::mousePressEvent(event);
    QToolTip::hideText();
    scrubTo(mousePosition(*event).x());
}

void TimelineView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_scrubFrame) return QWidget::mouseMoveEvent(event);
    scrubTo(mousePosition(*event).x());
}

void TimelineView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return QWidget::mouseReleaseEvent(event);
    endScrub();
}

void TimelineView::scrubTo(double x) {
    const int64 frame = frameAt(x);
    if (m_scrubFrame == frame) return;
    m_scrubFrame = frame;
    moveTo(frame);
    emit scrubbed(frame);
}

void TimelineView::endScrub() {
    if (!m_scrubFrame) return;
    m_scrubFrame.reset();
    if (m_scene->scale.bringIntoView(m_frame)) invalidate();
    emit scrubEnded();
}

void TimelineView::wheelEvent(QWheelEvent* event) {
    constexpr double eighthsPerNotch = 120;
    event->accept();
    const QPointF notches = QPointF(event->angleDelta()) / eighthsPerNotch;
    const bool isSideways = event->modifiers().testFlag(Qt::ShiftModifier);
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        constexpr double factorPerNotch = 1.25;
        return zoom(std::pow(factorPerNotch, notches.y()), event->position().x());
    }
    const bool doTracksFit = m_scene->layout.tracksHeight() <= m_scene->layout.tracks().height();
    const double along = -scrolledPerNotch * notches.y();
    const double right = -scrolledPerNotch * notches.x();
    isSideways || doTracksFit ? scroll(right + along, 0) : scroll(right, along);
}

void TimelineView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    takeSize();
    invalidate();
}

void TimelineView::takeSize() const {
    if (m_scene->layout.size() == size()) return;
    m_scene->layout.setSize(size());
    m_scene->scale.setWidth(width());
}

void TimelineView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    switch (event->type()) {
        case QEvent::PaletteChange:
        case QEvent::StyleChange: m_scene->colours = TimelineColours(palette()); break;
        case QEvent::FontChange: break;
        default: return;
    }
    invalidate();
}

bool TimelineView::event(QEvent* event) {
    if (event->type() == QEvent::Hide) endScrub();
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    QString text = textAt(help->pos());
    if (text.isEmpty()) text = toolTip();
    // Names may look like HTML.
    QToolTip::showText(help->globalPos(), "<p style='white-space:pre-wrap'>" + text.toHtmlEscaped() + "</p>", this);
    return true;
}

}  // namespace qrtplay
