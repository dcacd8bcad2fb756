#pragma once

#include <QOpenGLFramebufferObject>

#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtSubject.h"
#include "qrtFramebufferReaper.h"
#include "qrtResourcePool.h"

namespace QRT_0_81 {

/// A fixed set of framebuffers of the pool's resolution, each with one rectangle texture and nothing else attached.
///
/// OpenGL: `initialize` needs the context current that the framebuffers are to live in, and leaves the framebuffer
/// bindings as they were. Everything else may run on any thread with any context current or none; framebuffers that
/// end there are deleted later in their own context (see `FramebufferReaper`).
/// Ownership: the pool owns its framebuffers; a lent one comes back through `release`. One that the pool has forgotten
/// meanwhile, because it was rebuilt, is deleted then.
class ResourcePoolFBO final : public ResourcePool, public Subject {
public:
    /// A pool without framebuffers: `setup` makes them. Without a reaper given the pool gets one of its own.
    [[nodiscard]] static SharedPtr<ResourcePoolFBO> create(SharedPtr<FramebufferReaper> const& reaper = nullptr);
    ~ResourcePoolFBO() override;

    [[nodiscard]] PoolType getType() const override { return PoolType::fbo; }
    /// `Status::invalid_pool_configuration` for an invalid resolution, or another channel count than 3 or 4 with 8, 10,
    /// 16 or 32 bits. Other depths get the internal format 0. Whether the driver completes a framebuffer is not
    /// checked.
    Status initialize() override;
    Status uninitialize() override;
    [[nodiscard]] bool isSameResolution(VideoBufferResolution const& a, VideoBufferResolution const& b) const override;
    [[nodiscard]] Levels getLevels() const;

    /// Lends the framebuffer that came back last, or null when none can be lent; never waits, never grows.
    /// `allowLast`: whether the last free one may go too; it is kept for callers that a host is waiting for.
    [[nodiscard]] QOpenGLFramebufferObject* lock(bool allowLast);
    /// Takes a framebuffer back; null only notifies.
    void release(QOpenGLFramebufferObject* fbo);

private:
    friend struct ResourcePoolInspector;  // defined by tests

    explicit ResourcePoolFBO(SharedPtr<FramebufferReaper> const& reaper);

    /// Ends the free framebuffers and says how many they were.
    int disposeFree();

    std::vector<QOpenGLFramebufferObject*> m_freeFbos;
    Loans<QOpenGLFramebufferObject> m_lockedFbos{&m_loanMemory};  // a registry only: clearing it deletes nothing
    const SharedPtr<FramebufferReaper> m_reaper;
};

}  // namespace QRT_0_81
