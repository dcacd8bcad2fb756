#pragma once

#include <QOpenGLFramebufferObject>

#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtVideoBuffer.h"
#include "qrtResourcePoolFBO.h"
#include "qrtResourcePoolRAM.h"

namespace QRT_0_81 {

/// A frame: one resource, lent from its pool for as long as the object lives.
///
/// It holds its pool, so a pool lives at least as long as the frames made from it. A buffer that got no resource is a
/// whole object that answers `Status::no_resource`.
/// The kinds (0 framebuffer, 1 memory) run opposite to the pools' types (0 memory, 1 framebuffer); hosts rely on both.
class VideoBufferPrivate final : public VideoBuffer {
public:
    VideoBufferPrivate(SharedPtr<ResourcePoolFBO> const& pool, bool allowLast);
    VideoBufferPrivate(SharedPtr<ResourcePoolRAM> const& pool, bool allowLast);
    ~VideoBufferPrivate() override;

    /// New buffers; empty only when memory has run out.
    [[nodiscard]] static SharedPtr<VideoBufferPrivate> create(SharedPtr<ResourcePoolFBO> const& pool, bool allowLast);
    [[nodiscard]] static SharedPtr<VideoBufferPrivate> create(SharedPtr<ResourcePoolRAM> const& pool, bool allowLast);

    /// Asks the pool once more, for a buffer that got no resource; the result is the buffer's status from then on.
    Status lend();

    [[nodiscard]] unsigned char getType() const override { return m_type; }
    Status getData(void*& data) override;
    Status getData(void*& data) const override;
    Status getTexture(unsigned int& texture) const override;
    [[nodiscard]] VideoBufferResolution getResolution() const override { return m_resolution; }

    /// Sets `fbo` to the lent framebuffer, or null.
    Status getFBO(QOpenGLFramebufferObject*& fbo) const;
    [[nodiscard]] Status getStatus() const { return m_status; }
    [[nodiscard]] bool isAllowLast() const { return m_allowLast; }

private:
    VideoBufferResolution m_resolution;
    SharedPtr<ResourcePoolFBO> m_fboPool;
    SharedPtr<ResourcePoolRAM> m_ramPool;
    void* m_ramData = nullptr;
    QOpenGLFramebufferObject* m_fbo = nullptr;
    Status m_status;
    unsigned char m_type;
    bool m_allowLast;
};

}  // namespace QRT_0_81
