#include "qrtResourcePool.h"

namespace QRT_0_81 {

uint64 ResourcePool::getBufferSize() const {
    const std::lock_guard lock(m_mutex);
    return m_resolution.isValid() ? m_resolution.getBufferSize() : 0;
}

VideoBufferResolution ResourcePool::getResolution() const {
    const std::lock_guard lock(m_mutex);
    return m_resolution;
}

bool ResourcePool::isInitialized() const {
    const std::lock_guard lock(m_mutex);
    return m_initialized;
}

uint32 ResourcePool::getNumResources() {
    const std::lock_guard lock(m_mutex);
    switch (m_sizeUnit) {
        case SizeUnit::buffers: return static_cast<uint32>(m_size);
        case SizeUnit::megabytes: {
            constexpr int mebibyteShift = 20;
            const uint64 bufferSize = getBufferSize();
            return bufferSize == 0 ? 0 : static_cast<uint32>((m_size << mebibyteShift) / bufferSize);
        }
    }
    return 0;
}

Status ResourcePool::setSize(uint64 size, SizeUnit unit) {
    const std::lock_guard lock(m_mutex);
    changeSize(size, unit);
    return initializeIfConfigured();
}

Status ResourcePool::setResolution(VideoBufferResolution const& resolution) {
    const std::lock_guard lock(m_mutex);
    changeResolution(resolution);
    return initializeIfConfigured();
}

Status ResourcePool::setup(uint64 size, SizeUnit unit, VideoBufferResolution const& resolution) {
    const std::lock_guard lock(m_mutex);
    changeSize(size, unit);
    changeResolution(resolution);
    return initializeIfConfigured();
}

void ResourcePool::changeSize(uint64 size, SizeUnit unit) {
    if (size == m_size && unit == m_sizeUnit) return;
    if (isInitialized()) (void)uninitialize();
    m_size = size;
    m_sizeUnit = unit;
}

void ResourcePool::changeResolution(VideoBufferResolution const& resolution) {
    if (isSameResolution(resolution, m_resolution)) return;
    if (isInitialized()) (void)uninitialize();
    m_resolution = resolution;
}

Status ResourcePool::initializeIfConfigured() {
    if (isInitialized() || !m_resolution.isValid() || m_size == 0) return Status();
    return initialize();
}

}  // namespace QRT_0_81
