#pragma once

#include "foundation/cache/qrtCacheData.h"
#include "foundation/core/qrtVideoBufferResolution.h"
#include "qrtVideoBufferPrivate.h"

namespace QRT_0_81 {

/// One cached frame of an external segment: a copy in a pooled framebuffer or a pooled block of memory.
///
/// The texture copies need the context current that the framebuffer lives in, and leave the framebuffer bindings alone.
class ExternalSegmentVideoBuffer final : public CacheData {
public:
    /// A texture frame. `rectangle`: the flag of the textures that it is copied from and to.
    ExternalSegmentVideoBuffer(unsigned int rectangle, VideoBufferResolution const& resolution,
                               SharedPtr<VideoBufferPrivate> const& buffer);
    /// A memory frame of `size` bytes.
    ExternalSegmentVideoBuffer(size_t size, VideoBufferResolution const& resolution,
                               SharedPtr<VideoBufferPrivate> const& buffer);
    ~ExternalSegmentVideoBuffer() override;

    [[nodiscard]] unsigned int getRectangle() const noexcept { return m_rectangle; }
    [[nodiscard]] size_t getSize() const noexcept { return m_size; }
    [[nodiscard]] VideoBufferResolution const& getResolution() const noexcept { return m_resolution; }

    /// `Status::invalid_argument` for texture 0, `Status::general_failure` without a framebuffer on either side.
    Status copyFromTexture(unsigned int texture);
    Status copyToTexture(unsigned int texture) const;

    /// Copy the smaller of the two sizes. `Status::invalid_argument` when a pointer is null or a size is 0.
    Status copyFromRam(void const* source, size_t size);
    Status copyToRam(void* destination, size_t size) const;

private:
    enum class Direction { in, out };
    Status blit(unsigned int texture, Direction direction) const;
    /// The frame's memory, or null.
    [[nodiscard]] void* data() const;

    const unsigned int m_rectangle;
    const size_t m_size;
    const VideoBufferResolution m_resolution;
    const SharedPtr<VideoBufferPrivate> m_buffer;
};

}  // namespace QRT_0_81
