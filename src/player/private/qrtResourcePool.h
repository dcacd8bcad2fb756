#pragma once

#include <memory_resource>
#include <mutex>
#include <unordered_set>
#include <vector>

#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtVideoBufferResolution.h"
#include "qrtResourcePoolInterface.h"

namespace QRT_0_81 {

/// What every pool has in common: the configured size, the format of its resources, and when it must be rebuilt.
///
/// Threading: every method may be called from any thread; each holds the pool's one lock for its whole duration. The
/// lock is recursive because the operations use one another, and it is held while observers are notified: an observer
/// must not wait for anything that waits for the pool.
class ResourcePool : public ResourcePoolInterface {
public:
    /// How the configured size is to be read.
    enum class SizeUnit : int32 {
        buffers = 0,   ///< a number of resources
        megabytes = 1  ///< a budget in mebibytes
    };

    /// How many resources a pool could lend at one moment, and how many it had lent.
    struct Levels {
        size_t free;
        size_t lent;
    };

    /// Creates the resources. Success when they are there already.
    virtual Status initialize() = 0;
    /// Destroys the free resources and forgets the lent ones, which are destroyed when they come back.
    virtual Status uninitialize() = 0;
    /// Whether a resource of format `a` serves as one of format `b`.
    [[nodiscard]] virtual bool isSameResolution(VideoBufferResolution const& a,
                                                VideoBufferResolution const& b) const = 0;

    /// Bytes of one frame in memory; 0 when the format is invalid.
    [[nodiscard]] uint64 getBufferSize() const;
    [[nodiscard]] VideoBufferResolution getResolution() const;
    [[nodiscard]] bool isInitialized() const;

    /// The number of resources that the configured size means. A budget is divided by the size of a frame in memory,
    /// for textures too, whatever they take on the GPU.
    [[nodiscard]] uint32 getNumResources() override;

    /// Change the configuration: an initialized pool whose configuration really changes is rebuilt, and a pool that has
    /// both a size and a valid format is initialized; the result is that of `initialize`. Success otherwise.
    Status setSize(uint64 size, SizeUnit unit);
    Status setResolution(VideoBufferResolution const& resolution);
    Status setup(uint64 size, SizeUnit unit, VideoBufferResolution const& resolution);

protected:
    /// The resources that are lent.
    template <class T>
    using Loans = std::pmr::unordered_set<T*>;

    ResourcePool() = default;

    uint64 m_size = 0;
    SizeUnit m_sizeUnit = SizeUnit::buffers;
    VideoBufferResolution m_resolution;
    bool m_initialized = false;
    std::pmr::unsynchronized_pool_resource m_loanMemory;  // a frame that is lent needs no memory of its own
    mutable std::recursive_mutex m_mutex;                 // guards everything above and the concrete pool's containers

private:
    void changeSize(uint64 size, SizeUnit unit);
    void changeResolution(VideoBufferResolution const& resolution);
    Status initializeIfConfigured();
};

/// Moves the free resource that came back last into `locked` and returns it; null when none may go: the last one is
/// kept for callers with `allowLast`.
template <class T>
[[nodiscard]] T* lendLast(std::vector<T*>& free, std::pmr::unordered_set<T*>& locked, bool allowLast) {
    if (free.empty() || (free.size() == 1 && !allowLast)) return nullptr;
    T* const resource = free.back();
    locked.insert(resource);  // first: without memory for it nothing has happened
    free.pop_back();
    return resource;
}

/// Moves a lent resource back; false when it is not one of `locked`. Frames come back in destructors: `free` has had
/// room for all resources from the beginning, so that no memory is needed.
template <class T>
[[nodiscard]] bool takeBack(std::vector<T*>& free, std::pmr::unordered_set<T*>& locked, T* resource) noexcept {
    if (locked.erase(resource) == 0) return false;
    free.push_back(resource);
    return true;
}

}  // namespace QRT_0_81
