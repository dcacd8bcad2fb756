#include "generators/qrtTitlePainter.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPainterPath>
#include <QRawFont>
#include <QTextLayout>
#include <algorithm>

#include "base/qrtColourValue.h"
#include "generators/qrtGeneratorFont.h"

namespace qrtplay {

namespace {

// What television has long kept titles inside of, and heights of letters, as parts of the picture.
constexpr double safeShare = 0.8;
constexpr double largestLetters = 0.14;
constexpr double breakingLetters = 0.09;  // lines are broken rather than written smaller
constexpr double smallestLetters = 0.035;
// More than fits at the smallest size; laying out a whole book would take minutes.
constexpr int mostLetters = 6000;

const QChar ellipsis(0x2026);

/// Text broken into lines of a width; its lines are centred in it.
class Lines final {
public:
    Lines(QString const& text, int pixelSize, double width) : m_layout(text, generatorFont(pixelSize)) {
        QTextOption option(Qt::AlignHCenter);
        option.setTextDirection(Qt::LayoutDirectionAuto);
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        m_layout.setTextOption(option);
        m_layout.beginLayout();
        for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
            line.setLineWidth(width);
            line.setPosition(QPointF(0, m_height));
            m_height += line.height();
        }
        m_layout.endLayout();
    }

    [[nodiscard]] double height() const { return m_height; }
    [[nodiscard]] int count() const { return m_layout.lineCount(); }

    /// The first line that does not end above `height`, but not the very first.
    [[nodiscard]] QTextLine firstBelow(double height) const {
        int line = 1;
        while (line < m_layout.lineCount() && bottomOf(line) <= height)
            ++line;
        return line < m_layout.lineCount() ? m_layout.lineAt(line) : QTextLine();
    }
    [[nodiscard]] QTextLine lineBefore(QTextLine const& line) const { return m_layout.lineAt(line.lineNumber() - 1); }

    /// What the letters cover. Drawn as text they would depend on what the font's cache has been asked for before.
    [[nodiscard]] QPainterPath shape() const {
        QPainterPath shape;
        shape.setFillRule(Qt::WindingFill);
        for (QGlyphRun const& run : m_layout.glyphRuns()) {
            const QVector<quint32> glyphs = run.glyphIndexes();
            const QVector<QPointF> positions = run.positions();
            for (int i = 0; i < glyphs.size(); ++i)
                shape.addPath(run.rawFont().pathForGlyph(glyphs[i]).translated(positions[i]));
        }
        return shape;
    }

private:
    [[nodiscard]] double bottomOf(int line) const { return m_layout.lineAt(line).y() + m_layout.lineAt(line).height(); }

    QTextLayout m_layout;
    double m_height = 0;
};

/// With line ends as `QTextLayout` knows them, and no longer than can be laid out in good time.
QString prepared(QString text) {
    if (text.size() > mostLetters) text = text.left(mostLetters) + ellipsis;
    text.replace("\r\n", "\n");
    text.replace('\r', '\n');
    text.replace('\n', QChar::LineSeparator);
    return text;
}

int pixelsOf(double share, QRectF const& picture) {
    return std::max(1, static_cast<int>(picture.height() * share));
}

/// The largest of the sizes from `smallest` to `largest` that suits, or `smallest` when none does.
template <class Suits>
int largestSize(int smallest, int largest, Suits const& suits) {
    int suitable = smallest;
    for (int tooLarge = largest + 1; tooLarge - suitable > 1;) {
        const int size = (suitable + tooLarge) / 2;
        (suits(size) ? suitable : tooLarge) = size;
    }
    return suitable;
}

/// The largest size at which the text fits `box`, or the smallest allowed.
int sizeOfLetters(QString const& text, QRectF const& box, QRectF const& picture) {
    const int breaking = pixelsOf(breakingLetters, picture);
    const auto ownLines = text.count(QChar::LineSeparator) + 1;
    const auto fits = [&](int size) { return Lines(text, size, box.width()).height() <= box.height(); };
    const auto fitsUnbroken = [&](int size) {
        const Lines lines(text, size, box.width());
        return lines.height() <= box.height() && lines.count() <= ownLines;
    };
    if (fitsUnbroken(breaking)) return largestSize(breaking, pixelsOf(largestLetters, picture), fitsUnbroken);
    return largestSize(pixelsOf(smallestLetters, picture), breaking, fits);
}

/// `text` without what stands below `box`.
QString cutToFit(QString const& text, int pixelSize, QRectF const& box) {
    const Lines lines(text, pixelSize, box.width());
    const QTextLine below = lines.firstBelow(box.height());
    if (!below.isValid()) return text;
    // The break before the last line is made a fixed one: shortened, its first word might fit into the line above.
    const int start = lines.lineBefore(below).textStart();
    QString kept = text.left(start);
    if (!kept.isEmpty() && !kept.endsWith(QChar::LineSeparator)) kept += QChar::LineSeparator;
    QString rest = text.mid(start, below.textStart() - start).trimmed() + ellipsis;
    const QFontMetricsF metrics(generatorFont(pixelSize));
    return kept + metrics.elidedText(rest, Qt::ElideRight, box.width());
}

void drawThick(QPainter& painter, QPainterPath const& shape, double outline) {
    painter.setPen(QPen(Qt::black, outline, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::black);
    painter.drawPath(shape);
}

/// What has been drawn so far.
void makeTransparent(QPainter& painter, QRectF const& picture, ColourValue alpha) {
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    painter.fillRect(picture, QColor::fromRgbF(0, 0, 0, alpha));
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

}  // namespace

void paintTitle(QPainter& painter, QRectF const& picture, QString const& text, QColor const& colour) {
    QRectF box(0, 0, picture.width() * safeShare, picture.height() * safeShare);
    box.moveCenter(picture.center());
    const QString wanted = prepared(text);
    const int pixelSize = sizeOfLetters(wanted, box, picture);
    const Lines lines(cutToFit(wanted, pixelSize, box), pixelSize, box.width());
    const QPointF position(box.left(), box.center().y() - lines.height() / 2);
    const QPainterPath shape = lines.shape().translated(position);

    const double outline = std::max(1.0, pixelSize * 0.08);
    painter.setRenderHint(QPainter::Antialiasing);
    drawThick(painter, shape.translated(outline * 0.75, outline * 0.75), outline);
    makeTransparent(painter, picture, 0.5);  // the shadow
    drawThick(painter, shape, outline);
    painter.fillPath(shape, QColor(colour.rgb()));
    // The whole title lets the ground shine through; letters alone would show their outline instead.
    makeTransparent(painter, picture, colour.alphaF());
}

}  // namespace qrtplay
