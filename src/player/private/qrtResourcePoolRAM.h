#pragma once

#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtSubject.h"
#include "qrtResourcePool.h"

namespace QRT_0_81 {

/// A fixed set of equal memory blocks, each large enough for one frame of the pool's resolution.
///
/// Ownership: the pool owns its free blocks. A lent block belongs to the borrower until `release`; one that the pool
/// has forgotten meanwhile, because it was rebuilt, is freed then. Memory is not cleared and aligned as malloc aligns.
class ResourcePoolRAM final : public ResourcePool, public Subject {
public:
    /// A pool without blocks: `setup` makes them.
    [[nodiscard]] static SharedPtr<ResourcePoolRAM> create();
    ~ResourcePoolRAM() override;

    [[nodiscard]] PoolType getType() const override { return PoolType::ram; }
    /// `Status::invalid_pool_configuration` for an invalid resolution or one whose frames take no memory,
    /// `Status::general_failure`, with a message and nothing made, when there is no memory for all blocks.
    Status initialize() override;
    Status uninitialize() override;
    /// A block serves every format of its width, height, channels and bits, floating-point or not.
    [[nodiscard]] bool isSameResolution(VideoBufferResolution const& a, VideoBufferResolution const& b) const override;
    [[nodiscard]] Levels getLevels() const;

    /// Lends the block that came back last, or null when none can be lent; never waits, never grows.
    /// `allowLast`: whether the last free block may go too; it is kept for callers that a host is waiting for.
    [[nodiscard]] void* lock(bool allowLast);
    /// Takes a block back; null only notifies.
    void release(void* buffer);

private:
    friend struct ResourcePoolInspector;  // defined by tests

    ResourcePoolRAM() = default;

    void freeBlocks();

    std::vector<void*> m_freeBuffers;
    Loans<void> m_lockedBuffers = Loans<void>(&m_loanMemory);  // in braces it would be the first one lent
};

}  // namespace QRT_0_81
