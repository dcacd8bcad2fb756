#pragma once

#include <QImage>
#include <QPainter>
#include <QRect>
#include <QString>

#include "base/qrtKit.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// A picture with a title and a grid of captioned frames. Needs a `QGuiApplication` for its fonts.
class ContactSheet final {
public:
    /// `frameSize`: of the frames, for their shape. The sheet is as high as it has to be.
    ContactSheet(int width, int columns, int rows, QSize frameSize);
    ContactSheet(ContactSheet const&) = delete;
    ContactSheet& operator=(ContactSheet const&) = delete;

    void drawTitle(QString const& name, QString const& details);
    void drawFrame(int position, QImage const& frame, QString const& left, QString const& right);
    /// In the place of a frame that could not be had.
    void drawMissing(int position, QString const& left, QString const& right);
    /// The finished sheet; nothing can be drawn afterwards.
    [[nodiscard]] QImage finish();

private:
    [[nodiscard]] QRect tile(int position) const;
    void drawCaption(QRect const& place, QString const& left, QString const& right);

    int m_columns;
    int m_unit;  // the height of the letters, from which all distances follow
    QSize m_tileSize;
    QImage m_image;
    QPainter m_painter;
};

}  // namespace qrtplay
