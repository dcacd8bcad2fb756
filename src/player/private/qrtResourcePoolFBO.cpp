#include "qrtResourcePoolFBO.h"

#include "qrtDebugLine.h"
#include "qrtOpenGL.h"

namespace QRT_0_81 {

namespace {

constexpr char fboSource[] = "src/player/private/qrtResourcePoolFBO";

/// Sets the internal format of a pool's textures. A depth that OpenGL has no sized format for gets 0.
Status setInternalFormat(VideoBufferResolution const& resolution, QOpenGLFramebufferObjectFormat& format) {
    struct Formats {
        GLenum threeChannels;
        GLenum fourChannels;
    };
    Formats formats{};
    switch (resolution.getBitsPerChannel()) {
        case 8: formats = {GL_RGB8, GL_RGBA8}; break;
        case 10: formats = {GL_RGB10, GL_RGB10_A2}; break;
        case 16: formats = resolution.isFloat() ? Formats{GL_RGB16F, GL_RGBA16F} : Formats{GL_RGB16, GL_RGBA16}; break;
        case 32:
            formats = resolution.isFloat() ? Formats{GL_RGB32F, GL_RGBA32F} : Formats{GL_RGB32UI, GL_RGBA32UI};
            break;
        default: format.setInternalTextureFormat(0); return Status();
    }
    switch (resolution.getNumChannels()) {
        case 3: format.setInternalTextureFormat(formats.threeChannels); return Status();
        case 4: format.setInternalTextureFormat(formats.fourChannels); return Status();
        default: return Status::invalid_pool_configuration;
    }
}

}  // namespace

SharedPtr<ResourcePoolFBO> ResourcePoolFBO::create(SharedPtr<FramebufferReaper> const& reaper) {
    return SharedPtr<ResourcePoolFBO>(new ResourcePoolFBO(reaper ? reaper : FramebufferReaper::create()));
}

ResourcePoolFBO::ResourcePoolFBO(SharedPtr<FramebufferReaper> const& reaper) : m_reaper(reaper) {}

ResourcePoolFBO::~ResourcePoolFBO() {
    if (isInitialized()) (void)uninitialize();
}

Status ResourcePoolFBO::initialize() {
    const std::lock_guard lock(m_mutex);
    if (m_initialized) return Status();
    if (!m_resolution.isValid()) return Status::invalid_pool_configuration;

    const FramebufferBindingGuard bindings;  // making a framebuffer binds it
    QOpenGLFramebufferObjectFormat format;
    format.setTextureTarget(GL_TEXTURE_RECTANGLE);
    if (const Status status = setInternalFormat(m_resolution, format); status.failure()) return status;

    const uint32 count = getNumResources();
    const QSize size(m_resolution.getWidth(), m_resolution.getHeight());
    try {
        m_freeFbos.reserve(count);
        for (uint32 made = 0; made < count; ++made)
            m_freeFbos.push_back(m_reaper->make(size, format));
    } catch (...) {
        (void)disposeFree();  // all or none
        throw;
    }
    m_lockedFbos.clear();
    QRT_DEBUG_LINE(fboSource, "ResourcePoolFBO::initialize()-numAllocatedFBO=%d", static_cast<int>(count));
    m_initialized = true;
    return Status();
}

Status ResourcePoolFBO::uninitialize() {
    const std::lock_guard lock(m_mutex);
    if (!m_initialized) return Status();
    const int numDeleted = disposeFree();
    m_lockedFbos.clear();
    QRT_DEBUG_LINE(fboSource, "ResourcePoolFBO::uninitialize()-numDeletedFBO=%d", numDeleted);
    m_initialized = false;
    return Status();
}

int ResourcePoolFBO::disposeFree() {
    int numDeleted = 0;
    for (; !m_freeFbos.empty(); m_freeFbos.pop_back(), ++numDeleted)
        m_reaper->dispose(m_freeFbos.back());
    return numDeleted;
}

bool ResourcePoolFBO::isSameResolution(VideoBufferResolution const& a, VideoBufferResolution const& b) const {
    if (a.isValid() != b.isValid()) return false;
    return !a.isValid() || a == b;
}

ResourcePool::Levels ResourcePoolFBO::getLevels() const {
    const std::lock_guard lock(m_mutex);
    return {m_freeFbos.size(), m_lockedFbos.size()};
}

QOpenGLFramebufferObject* ResourcePoolFBO::lock(bool allowLast) {
    const std::lock_guard lock(m_mutex);
    QOpenGLFramebufferObject* const fbo = lendLast(m_freeFbos, m_lockedFbos, allowLast);
    if (!fbo) return nullptr;
    notify(LockHint());
    QRT_DEBUG_LINE(fboSource, "%s %d", "Locking an FBO remaining", static_cast<int>(m_freeFbos.size()));
    return fbo;
}

void ResourcePoolFBO::release(QOpenGLFramebufferObject* fbo) {
    const std::lock_guard lock(m_mutex);
    if (!takeBack(m_freeFbos, m_lockedFbos, fbo) && fbo) m_reaper->dispose(fbo);
    notify(ReleaseHint());
    QRT_DEBUG_LINE(fboSource, "%s %d", "Releasing an FBO remaining", static_cast<int>(m_freeFbos.size()));
}

}  // namespace QRT_0_81
