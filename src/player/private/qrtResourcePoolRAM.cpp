#include "qrtResourcePoolRAM.h"

#include <cstdlib>

#include "qrtDebugLine.h"

namespace QRT_0_81 {

namespace {
constexpr char ramSource[] = "src/player/private/qrtResourcePoolRAM";
}  // namespace

SharedPtr<ResourcePoolRAM> ResourcePoolRAM::create() {
    return SharedPtr<ResourcePoolRAM>(new ResourcePoolRAM);
}

ResourcePoolRAM::~ResourcePoolRAM() {
    if (isInitialized()) (void)uninitialize();
}

Status ResourcePoolRAM::initialize() {
    const std::lock_guard lock(m_mutex);
    if (m_initialized) return Status();
    if (!m_resolution.isValid()) return Status::invalid_pool_configuration;
    const uint64 bytes = getBufferSize();
    if (bytes == 0) return Status::invalid_pool_configuration;

    const uint32 count = getNumResources();
    m_freeBuffers.reserve(count);
    while (m_freeBuffers.size() < count) {
        void* const block = std::malloc(bytes);
        if (!block) {
            freeBlocks();  // all or none
            DebugLine::post(ramSource, __LINE__, "ResourcePoolRAM::initialize() failed: no memory for %d blocks",
                            static_cast<int>(count));
            return Status::general_failure;
        }
        m_freeBuffers.push_back(block);
    }
    m_lockedBuffers.clear();
    m_initialized = true;
    return Status();
}

void ResourcePoolRAM::freeBlocks() {
    for (; !m_freeBuffers.empty(); m_freeBuffers.pop_back())
        std::free(m_freeBuffers.back());
}

Status ResourcePoolRAM::uninitialize() {
    const std::lock_guard lock(m_mutex);
    if (!m_initialized) return Status();
    freeBlocks();
    m_lockedBuffers.clear();
    m_initialized = false;
    return Status();
}

bool ResourcePoolRAM::isSameResolution(VideoBufferResolution const& a, VideoBufferResolution const& b) const {
    return a.getWidth() == b.getWidth() && a.getHeight() == b.getHeight() && a.getNumChannels() == b.getNumChannels() &&
           a.getBitsPerChannel() == b.getBitsPerChannel();
}

ResourcePool::Levels ResourcePoolRAM::getLevels() const {
    const std::lock_guard lock(m_mutex);
    return {m_freeBuffers.size(), m_lockedBuffers.size()};
}

void* ResourcePoolRAM::lock(bool allowLast) {
    const std::lock_guard lock(m_mutex);
    void* const buffer = lendLast(m_freeBuffers, m_lockedBuffers, allowLast);
    if (!buffer) return nullptr;
    notify(LockHint());
    QRT_DEBUG_LINE(ramSource, "%s %d", "Locking a buffer remaining", static_cast<int>(m_freeBuffers.size()));
    return buffer;
}

void ResourcePoolRAM::release(void* buffer) {
    const std::lock_guard lock(m_mutex);
    if (!takeBack(m_freeBuffers, m_lockedBuffers, buffer)) std::free(buffer);
    notify(ReleaseHint());
    QRT_DEBUG_LINE(ramSource, "%s %d", "Releasing a buffer remaining", static_cast<int>(m_freeBuffers.size()));
}

}  // namespace QRT_0_81
