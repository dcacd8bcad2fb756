#include "graph/qrtPixelPool.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qrtplay {

namespace {

// One that is being drawn, one in the making and one that is ready go round; more would only take memory.
constexpr size_t mostIdleBlocks = 2;

}  // namespace

struct PixelPool::Store {
    std::mutex mutex;
    // Under mutex.
    std::vector<std::unique_ptr<RgbaPixels>> idle;  // the one used last comes last
    size_t bytes = 0;

    std::unique_ptr<RgbaPixels> take(int width, int height) {
        const std::lock_guard lock(mutex);
        const auto fits = [=](auto const& pixels) { return pixels->width == width && pixels->height == height; };
        const auto found = std::find_if(idle.rbegin(), idle.rend(), fits);
        if (found != idle.rend()) {
            std::unique_ptr<RgbaPixels> pixels = std::move(*found);
            idle.erase(std::prev(found.base()));
            return pixels;
        }
        auto pixels = std::make_unique<RgbaPixels>();
        pixels->width = width;
        pixels->height = height;
        bytes += pixels->sizeInBytes();
        return pixels;
    }

    void forget(RgbaPixels const& pixels) {
        const std::lock_guard lock(mutex);
        bytes -= pixels.sizeInBytes();
    }

    void giveBack(std::unique_ptr<RgbaPixels> pixels) {
        std::unique_ptr<RgbaPixels> surplus;  // ends after the lock
        const std::lock_guard lock(mutex);
        idle.push_back(std::move(pixels));
        if (idle.size() <= mostIdleBlocks) return;
        surplus = std::move(idle.front());
        idle.erase(idle.begin());
        bytes -= surplus->sizeInBytes();
    }
};

PixelPool::PixelPool() : m_store(std::make_shared<Store>()) {}

std::shared_ptr<RgbaPixels> PixelPool::lend(int width, int height) {
    std::unique_ptr<RgbaPixels> pixels = m_store->take(width, height);
    if (!pixels->bytes) pixels->bytes.reset(new (std::nothrow) std::uint8_t[pixels->sizeInBytes()]);
    if (!pixels->bytes) {
        m_store->forget(*pixels);
        return nullptr;
    }
    return std::shared_ptr<RgbaPixels>(
        pixels.release(), [store = m_store](RgbaPixels* lent) { store->giveBack(std::unique_ptr<RgbaPixels>(lent)); });
}

size_t PixelPool::sizeInBytes() const {
    const std::lock_guard lock(m_store->mutex);
    return m_store->bytes;
}

void PixelPool::clear() {
    std::vector<std::unique_ptr<RgbaPixels>> surplus;  // ends after the lock
    const std::lock_guard lock(m_store->mutex);
    surplus.swap(m_store->idle);
    for (auto const& pixels : surplus)
        m_store->bytes -= pixels->sizeInBytes();
}

}  // namespace qrtplay
