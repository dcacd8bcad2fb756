#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "base/qrtKit.h"

namespace qrtplay {

/// RGBA of 8 bits in memory, the bottom row first, as OpenGL takes it.
struct RgbaPixels {
    int width = 0;
    int height = 0;
    std::unique_ptr<std::uint8_t[]> bytes;

    [[nodiscard]] size_t sizeInBytes() const {
        return size_t{4} * static_cast<size_t>(width) * static_cast<size_t>(height);
    }
};

/// Blocks of pixels that are used again: the system takes longer to hand out fresh memory than the CPU to convert into
/// it.
///
/// Threading: any thread may call any method and let go of what was lent, also after the pool has ended.
class PixelPool final {
public:
    PixelPool();

    /// What is in it is left over from earlier. Null when memory is short.
    [[nodiscard]] std::shared_ptr<RgbaPixels> lend(int width, int height);
    /// Of what is lent and what is kept.
    [[nodiscard]] size_t sizeInBytes() const;
    /// Frees what is not lent.
    void clear();

private:
    struct Store;
    const std::shared_ptr<Store> m_store;
};

}  // namespace qrtplay
