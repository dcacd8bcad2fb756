#include "foundation/core/qrtVideoBufferResolution.h"

namespace QRT_0_81 {

uint64 VideoBufferResolution::getRowSize() const noexcept {
    if (!isValid()) return 0;
    const uint64 channels = (m_numChannels == 1 || m_numChannels == 3) ? static_cast<uint64>(m_numChannels) : 4u;
    const uint64 bytesPerChannel = m_bitsPerChannel == 32 ? 4u : m_bitsPerChannel == 16 ? 2u : 1u;
    constexpr uint64 packAlignment = 4;
    const uint64 row = static_cast<uint64>(m_width) * channels * bytesPerChannel;
    return (row + packAlignment - 1) / packAlignment * packAlignment;
}

uint64 VideoBufferResolution::getBufferSize() const noexcept {
    // The largest row is below 2^36 bytes and the largest height below 2^31: the product may not fit 64 bits.
    uint64 size = 0;
    if (__builtin_mul_overflow(getRowSize(), static_cast<uint64>(m_height > 0 ? m_height : 0), &size))
        return ~uint64{0};
    return size;
}

}  // namespace QRT_0_81
