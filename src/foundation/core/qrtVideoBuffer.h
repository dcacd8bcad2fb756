#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtVideoBufferResolution.h"

namespace QRT_0_81 {

/// One frame as a host receives it: a GL texture (framebuffer kind) or a block of memory (memory kind).
///
/// Ownership: the frame's storage is lent for as long as a reference to the buffer lives; dropping the last one gives
/// it back. References may be dropped on any thread, with or without an OpenGL context current. Threading: a buffer
/// never changes; every method may be called from any thread.
class QRT_CORE_EXPORT VideoBuffer : public RefCountedMT {
public:
    static constexpr unsigned char framebufferKind = 0;  ///< the frame is a texture
    static constexpr unsigned char memoryKind = 1;       ///< the frame is a block of memory

    ~VideoBuffer() override;

    /// `framebufferKind` (0) or `memoryKind` (1).
    [[nodiscard]] virtual unsigned char getType() const = 0;
    /// Sets `data` to the frame's first byte, bottom row first, rows padded to 4 bytes; null for the framebuffer kind.
    /// `Status::no_resource` when the buffer holds nothing.
    /// @{
    virtual Status getData(void*& data) = 0;
    virtual Status getData(void*& data) const = 0;
    /// @}
    /// Sets `texture` to the name of a `GL_TEXTURE_RECTANGLE` texture; 0 for the memory kind, and when the player that
    /// made it has been uninitialized. `Status::no_resource` when the buffer holds nothing.
    virtual Status getTexture(unsigned int& texture) const = 0;
    /// The frame's format; invalid when the buffer holds nothing.
    [[nodiscard]] virtual VideoBufferResolution getResolution() const = 0;

protected:
    VideoBuffer() noexcept = default;
};

}  // namespace QRT_0_81
