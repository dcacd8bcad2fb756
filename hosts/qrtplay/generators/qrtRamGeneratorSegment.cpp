#include "generators/qrtRamGeneratorSegment.h"

#include <QGuiApplication>
#include <QImage>
#include <cstring>

#include "generators/qrtGeneratorColour.h"
#include "generators/qrtTitlePainter.h"

namespace qrtplay {

namespace {

Status paint(QImage& picture, Generator const& generator) {
    const GeneratorColour channels = straight(generator.colour);
    const QColor colour = QColor::fromRgbF(channels[0], channels[1], channels[2], channels[3]);
    if (generator.kind == Generator::Kind::solid_colour) {
        picture.fill(colour);
        return Status();
    }
    // Fonts belong to the application object.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) return Status::general_failure;
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    paintTitle(painter, picture.rect(), QString::fromStdString(generator.text), colour);
    return Status();
}

}  // namespace

Status RamGeneratorSegment::renderToTexture(unsigned int, unsigned int, VideoBufferResolution const&, Time const&) {
    return Status::invalid_query;
}

Status RamGeneratorSegment::renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                                        Time const&) {
    const VideoBufferResolution expected(resolution.getWidth(), resolution.getHeight(), 4, 8, false);
    if (!buffer || !(resolution == expected) || !resolution.isValid() || size != resolution.getBufferSize())
        return Status::invalid_argument;
    const Generator generator = this->generator();
    if (generator.kind != Generator::Kind::title && generator.kind != Generator::Kind::solid_colour)
        return Status::invalid_query;

    QImage picture(resolution.getWidth(), resolution.getHeight(), QImage::Format_RGBA8888_Premultiplied);
    if (picture.isNull()) return Status::general_failure;
    if (const Status status = paint(picture, generator); status.failure()) return status;
    auto* row = static_cast<unsigned char*>(buffer);
    const size_t rowSize = resolution.getRowSize();
    for (int y = resolution.getHeight() - 1; y >= 0; --y, row += rowSize)
        std::memcpy(row, picture.constScanLine(y), rowSize);
    return Status();
}

}  // namespace qrtplay
