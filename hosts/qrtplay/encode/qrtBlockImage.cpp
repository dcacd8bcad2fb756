#include "encode/qrtBlockImage.h"

#include <cstring>
#include <memory>

namespace qrtplay {

QImage imageOf(PixelBlock const& block) {
    if (block.empty() || block.format != PixelFormat::rgba8) return QImage();
    auto owner = std::make_unique<PixelBlock>(block);
    const auto release = [](void* shared) { delete static_cast<PixelBlock*>(shared); };
    return QImage(block.row(0), block.width, block.height, static_cast<int>(block.strideInBytes()),
                  QImage::Format_RGBX8888, release, owner.release());
}

PixelBlock blockOf(QImage const& image) {
    const QImage converted = image.convertToFormat(QImage::Format_RGBX8888);
    PixelBlock block(converted.width(), converted.height(), PixelFormat::rgba8);
    for (int y = 0; y < block.height; ++y)
        std::memcpy(block.row(y), converted.constScanLine(y), block.strideInBytes());
    return block;
}

}  // namespace qrtplay
