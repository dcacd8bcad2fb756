#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/qrtKit.h"

namespace qrtplay {

/// Four channels a pixel, red, green, blue, alpha, of this type each; integers are full range, floats as they are.
enum class PixelFormat { rgba8, rgba16, rgba16f, rgba32f };

/// How many bytes a pixel of `format` takes.
[[nodiscard]] constexpr size_t bytesPerPixel(PixelFormat format) noexcept {
    switch (format) {
        case PixelFormat::rgba8: return 4;
        case PixelFormat::rgba16:
        case PixelFormat::rgba16f: return 8;
        case PixelFormat::rgba32f: break;
    }
    return 16;
}

/// One picture in memory: top row first, rows without padding, in the machine's byte order.
///
/// Ownership: shared; copies of a block are the same pixels, which nobody writes once the block has been handed on.
struct PixelBlock final {
    /// FFmpeg's vector code reads a little beyond the end of what it converts.
    static constexpr size_t padding = 64;

    int32 width = 0;
    int32 height = 0;
    PixelFormat format = PixelFormat::rgba8;
    /// Null in an empty block, otherwise `sizeInBytes()` bytes and `padding` more, aligned as malloc aligns.
    std::shared_ptr<std::uint8_t[]> pixels;

    PixelBlock() = default;
    /// Memory for a picture of this size, not cleared. An empty block when the size is not positive; throws
    /// std::bad_alloc when there is no such memory.
    PixelBlock(int32 widthInPixels, int32 heightInPixels, PixelFormat pixelFormat)
        : width(widthInPixels), height(heightInPixels), format(pixelFormat) {
        if (width > 0 && height > 0) pixels.reset(new std::uint8_t[sizeInBytes() + padding]);
    }

    [[nodiscard]] bool empty() const noexcept { return !pixels; }
    [[nodiscard]] size_t strideInBytes() const noexcept { return size_t(width) * bytesPerPixel(format); }
    [[nodiscard]] size_t sizeInBytes() const noexcept { return strideInBytes() * size_t(height); }
    [[nodiscard]] std::uint8_t* row(int32 y) noexcept { return pixels.get() + size_t(y) * strideInBytes(); }
    [[nodiscard]] std::uint8_t const* row(int32 y) const noexcept { return pixels.get() + size_t(y) * strideInBytes(); }
};

}  // namespace qrtplay
