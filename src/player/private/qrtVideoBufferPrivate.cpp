#include "qrtVideoBufferPrivate.h"

#include <new>
#include <utility>

namespace QRT_0_81 {

VideoBufferPrivate::VideoBufferPrivate(SharedPtr<ResourcePoolFBO> const& pool, bool allowLast)
    : m_fboPool(pool), m_type(framebufferKind), m_allowLast(allowLast) {
    (void)lend();
}

VideoBufferPrivate::VideoBufferPrivate(SharedPtr<ResourcePoolRAM> const& pool, bool allowLast)
    : m_ramPool(pool), m_type(memoryKind), m_allowLast(allowLast) {
    (void)lend();
}

VideoBufferPrivate::~VideoBufferPrivate() {
    if (m_fbo && m_fboPool) m_fboPool->release(std::exchange(m_fbo, nullptr));
    if (m_ramData && m_ramPool) m_ramPool->release(std::exchange(m_ramData, nullptr));
    m_ramPool.reset();
    m_fboPool.reset();
}

SharedPtr<VideoBufferPrivate> VideoBufferPrivate::create(SharedPtr<ResourcePoolFBO> const& pool, bool allowLast) {
    return SharedPtr<VideoBufferPrivate>(new (std::nothrow) VideoBufferPrivate(pool, allowLast));
}

SharedPtr<VideoBufferPrivate> VideoBufferPrivate::create(SharedPtr<ResourcePoolRAM> const& pool, bool allowLast) {
    return SharedPtr<VideoBufferPrivate>(new (std::nothrow) VideoBufferPrivate(pool, allowLast));
}

Status VideoBufferPrivate::lend() {
    if (m_fbo || m_ramData) return m_status;
    if (m_fboPool) {
        m_fbo = m_fboPool->lock(m_allowLast);
        if (m_fbo) m_resolution = m_fboPool->getResolution();
    } else {
        m_ramData = m_ramPool->lock(m_allowLast);
        if (m_ramData) m_resolution = m_ramPool->getResolution();
    }
    m_status.set(m_fbo || m_ramData ? Status::ok : Status::no_resource);
    return m_status;
}

Status VideoBufferPrivate::getData(void*& data) {
    data = m_ramData;
    return m_status;
}

Status VideoBufferPrivate::getData(void*& data) const {
    data = m_ramData;
    return m_status;
}

Status VideoBufferPrivate::getTexture(unsigned int& texture) const {
    texture = m_fbo ? m_fbo->texture() : 0;
    return m_status;
}

Status VideoBufferPrivate::getFBO(QOpenGLFramebufferObject*& fbo) const {
    fbo = m_fbo;
    return m_status;
}

}  // namespace QRT_0_81
