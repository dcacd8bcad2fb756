#pragma once

#include <QColor>
#include <QFont>
#include <QImage>
#include <QSize>
#include <QString>
#include <QStringList>

namespace qrtplay {

/// What texts on a picture are painted for: sizes are in logical pixels, the images in pixels of the device.
struct TextCanvas {
    QFont font;
    QSize largest;
    double pixelRatio = 1;
};

/// Lines of text in a translucent box with round corners; longer lines are cut. Null without lines or without room.
[[nodiscard]] QImage overlayImage(QStringList const& lines, TextCanvas const& canvas);
/// A centred text in lines of its own making. Null without text or without room.
[[nodiscard]] QImage messageImage(QString const& text, QColor const& colour, TextCanvas const& canvas);

}  // namespace qrtplay
