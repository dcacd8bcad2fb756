#pragma once

#include <QColor>
#include <QPainter>
#include <QRectF>
#include <QString>

namespace qrtplay {

/// Writes a title in the middle of `picture`, a rectangle in pixels: in an opaque colour, with a dark outline and a
/// shadow to stand out from any ground.
///
/// Lines are centred, broken where words end, and within a word that is longer than a line; each text is written in the
/// direction of its first letter. The letters are as large as fits, within limits that depend on the picture's height.
/// What does not fit even then is cut off, an ellipsis in its place. Threading: any thread; a QGuiApplication must
/// exist.
void paintTitle(QPainter& painter, QRectF const& picture, QString const& text, QColor const& colour);

}  // namespace qrtplay
