#include "viewer/preferences/qrtColourButton.h"

#include <QColorDialog>
#include <QPainter>
#include <QPixmap>

namespace qrtplay {

ColourButton::ColourButton(QWidget* parent) : QPushButton(parent) {
    connect(this, &QPushButton::clicked, this, &ColourButton::ask);
}

void ColourButton::showColour(QColor const& colour) {
    m_colour = colour;
    constexpr int side = 16;
    QPixmap swatch(QSize(side, side) * devicePixelRatio());
    swatch.setDevicePixelRatio(devicePixelRatioF());
    swatch.fill(colour);
    QPainter painter(&swatch);
    painter.setPen(Qt::gray);  // so that it is seen on a button of the same colour
    painter.drawRect(0, 0, side - 1, side - 1);
    painter.end();
    setIcon(swatch);
    setText(colour.name());
}

void ColourButton::ask() {
    auto* const dialog = new QColorDialog(m_colour, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle("Background colour");
    connect(dialog, &QColorDialog::colorSelected, this, [this](QColor const& colour) {
        if (colour == m_colour) return;
        showColour(colour);
        emit chosen(colour);
    });
    dialog->open();
}

}  // namespace qrtplay
