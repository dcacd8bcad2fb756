#include "media/qrtPictureMemory.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/mem.h>
}

namespace qrtplay {

namespace {

/// Blocks of memory that are lent and come back, on any thread.
class BlockPool final {
public:
    /// Of memory that nobody uses so much is kept at hand: enough for what goes and comes while pictures are decoded.
    static constexpr size_t mostIdleBytes = size_t{8} << 20;

    /// Never destroyed: pictures may outlive everything else.
    [[nodiscard]] static BlockPool& shared() {
        static BlockPool* const pool = new BlockPool();
        return *pool;
    }

    /// A counted block that comes back to the pool with its last reference; null when there is no memory.
    [[nodiscard]] AVBufferRef* lend(size_t bytes) {
        std::uint8_t* block = takeIdle(bytes);
        if (!block) block = static_cast<std::uint8_t*>(av_malloc(bytes));
        if (!block) return nullptr;
        AVBufferRef* const lent = av_buffer_create(block, bytes, takeBack, reinterpret_cast<void*>(bytes), 0);
        if (!lent) av_free(block);
        return lent;
    }

    [[nodiscard]] size_t idleBytes() {
        const std::lock_guard lock(m_mutex);
        return m_idleBytes;
    }

private:
    struct Block {
        std::uint8_t* data;
        size_t bytes;
    };

    static void takeBack(void* bytes, std::uint8_t* data) { shared().keep({data, reinterpret_cast<size_t>(bytes)}); }

    std::uint8_t* takeIdle(size_t bytes) {
        const std::lock_guard lock(m_mutex);
        // The one that came back last is the likeliest to be in the processor's cache.
        const auto found =
            std::find_if(m_idle.rbegin(), m_idle.rend(), [=](Block const& b) { return b.bytes == bytes; });
        if (found == m_idle.rend()) return nullptr;
        std::uint8_t* const data = found->data;
        m_idleBytes -= bytes;
        m_idle.erase(std::next(found).base());
        return data;
    }

    // Beyond the bound those go that have lain idle longest; returning memory takes its time, so not under the lock.
    void keep(Block block) {
        std::array<std::uint8_t*, 8> surplus{};
        size_t count = 0;
        {
            const std::lock_guard lock(m_mutex);
            m_idle.push_back(block);
            m_idleBytes += block.bytes;
            while (m_idleBytes > mostIdleBytes && count < surplus.size()) {
                m_idleBytes -= m_idle.front().bytes;
                surplus[count++] = m_idle.front().data;
                m_idle.pop_front();
            }
        }
        std::for_each(surplus.begin(), surplus.begin() + static_cast<std::ptrdiff_t>(count), av_free);
    }

    std::mutex m_mutex;
    std::deque<Block> m_idle;  // the one that came back last at the end
    size_t m_idleBytes = 0;
};

/// How the planes of a picture lie in one block, as decoders need them: rows aligned, and room behind the last one.
struct PlaneLayout {
    std::array<int, 4> strides{};
    std::array<size_t, 4> sizes{};
    size_t bytes = 0;

    static constexpr size_t alignment = 64;

    [[nodiscard]] static constexpr size_t aligned(size_t bytes) { return (bytes + alignment - 1) & ~(alignment - 1); }

    [[nodiscard]] bool compute(AVCodecContext& decoder, AVFrame const& frame) {
        const auto format = static_cast<AVPixelFormat>(frame.format);
        int width = frame.width;
        int height = frame.height;
        int strideAlign[AV_NUM_DATA_POINTERS] = {};
        avcodec_align_dimensions2(&decoder, &width, &height, strideAlign);
        if (av_image_fill_linesizes(strides.data(), format, width) < 0) return false;
        std::array<ptrdiff_t, 4> wideStrides{};
        for (size_t i = 0; i < strides.size(); ++i) {
            strides[i] = static_cast<int>(aligned(static_cast<size_t>(strides[i])));
            wideStrides[i] = strides[i];
        }
        if (av_image_fill_plane_sizes(sizes.data(), format, height, wideStrides.data()) < 0) return false;
        constexpr size_t room = 128;  // decoders write whole vectors beyond the end of a plane
        for (size_t& size : sizes) {
            if (size > 0) bytes += size = aligned(size + room);
        }
        return bytes > 0;
    }
};

int lendPicture(AVCodecContext* decoder, AVFrame* frame, int flags) {
    const AVPixFmtDescriptor* const format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame->format));
    constexpr uint64_t unusual = AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM;
    PlaneLayout layout;
    if (!format || (format->flags & unusual) != 0 || (decoder->codec->capabilities & AV_CODEC_CAP_DR1) == 0 ||
        !layout.compute(*decoder, *frame))
        return avcodec_default_get_buffer2(decoder, frame, flags);

    frame->buf[0] = BlockPool::shared().lend(layout.bytes);
    if (!frame->buf[0]) return AVERROR(ENOMEM);
    std::uint8_t* plane = frame->buf[0]->data;
    for (size_t i = 0; i < layout.sizes.size(); ++i) {
        frame->data[i] = layout.sizes[i] > 0 ? plane : nullptr;
        frame->linesize[i] = layout.sizes[i] > 0 ? layout.strides[i] : 0;
        plane += layout.sizes[i];
    }
    frame->extended_data = frame->data;
    return 0;
}

}  // namespace

void usePictureMemory(AVCodecContext& decoder) {
    decoder.get_buffer2 = lendPicture;
#if FF_API_THREAD_SAFE_CALLBACKS
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    decoder.thread_safe_callbacks = 1;  // what later versions take for granted
#pragma GCC diagnostic pop
#endif
}

size_t idlePictureMemory() {
    return BlockPool::shared().idleBytes();
}

}  // namespace qrtplay
