#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// A video format: size in pixels, channels, bits per channel, and whether the channels are floating-point numbers.
class QRT_CORE_EXPORT VideoBufferResolution final {
public:
    /// An invalid format: all numbers are 0.
    constexpr VideoBufferResolution() noexcept = default;
    /// `width` and `height` in pixels. Nothing is checked: see `isValid`.
    constexpr VideoBufferResolution(int32 width, int32 height, int32 numChannels, int32 bitsPerChannel,
                                    bool isFloat) noexcept
        : m_width(width),
          m_height(height),
          m_numChannels(numChannels),
          m_bitsPerChannel(bitsPerChannel),
          m_isFloat(isFloat) {}

    /// Whether the four numbers are positive. Says nothing about what OpenGL supports.
    [[nodiscard]] constexpr bool isValid() const noexcept {
        return m_width > 0 && m_height > 0 && m_numChannels > 0 && m_bitsPerChannel > 0;
    }
    /// Pixels a row.
    [[nodiscard]] constexpr int32 getWidth() const noexcept { return m_width; }
    /// Rows.
    [[nodiscard]] constexpr int32 getHeight() const noexcept { return m_height; }
    /// Channels a pixel: 4 for RGBA.
    [[nodiscard]] constexpr int32 getNumChannels() const noexcept { return m_numChannels; }
    /// Bits of one channel of one pixel.
    [[nodiscard]] constexpr int32 getBitsPerChannel() const noexcept { return m_bitsPerChannel; }
    /// Whether the channels are floating-point numbers.
    [[nodiscard]] constexpr bool isFloat() const noexcept { return m_isFloat; }

    /// Bytes of one row in memory, padded to a multiple of 4 as OpenGL's default pack alignment does; 0 when invalid.
    [[nodiscard]] uint64 getRowSize() const noexcept;

    /// Bytes of one frame in memory, exactly what a read-back writes with a pack alignment of 4; 0 when invalid.
    ///
    /// 16 and 32 bits take 2 and 4 bytes a channel and every other depth 1; 1 and 3 channels travel as they are and
    /// every other count as 4. Saturates at the largest number instead of wrapping.
    [[nodiscard]] uint64 getBufferSize() const noexcept;

    /// Whether all five values are equal.
    [[nodiscard]] constexpr bool operator==(VideoBufferResolution const& other) const noexcept = default;

private:
    int32 m_width = 0;
    int32 m_height = 0;
    int32 m_numChannels = 0;
    int32 m_bitsPerChannel = 0;
    bool m_isFloat = false;
};

}  // namespace QRT_0_81
