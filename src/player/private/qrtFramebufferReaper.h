#pragma once

#include <QOpenGLFramebufferObject>
#include <atomic>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtSharedPtr.h"

class QOpenGLContext;

namespace QRT_0_81 {

/// Makes the framebuffers of one player and sees to it that each is deleted in the context that made it.
///
/// The last reference to a frame may go on any thread, often with another context current or none. Deleting a
/// framebuffer there would lose its texture, or hit a framebuffer of the host's that happens to have the same name:
/// framebuffers are not shared between contexts. So what cannot be deleted on the spot waits for the thread that owns
/// the context.
///
/// Threading: `make` and `closeContext` with the owning context current; everything else on any thread. The lock is a
/// leaf: nothing is called and no OpenGL object is deleted while it is held. Only `make` needs memory: frames end in
/// destructors.
class FramebufferReaper final : public RefCountedMT {
public:
    [[nodiscard]] static SharedPtr<FramebufferReaper> create();
    /// Deletes the objects that still wait; their context is gone.
    ~FramebufferReaper() override;

    /// A framebuffer of the current context. Errors that an unsupported format leaves behind are drained.
    [[nodiscard]] QOpenGLFramebufferObject* make(QSize const& sizeInPixels,
                                                 QOpenGLFramebufferObjectFormat const& format);

    /// Ends a framebuffer: at once when its context is current or gone, else when `reap` runs in its context.
    void dispose(QOpenGLFramebufferObject* framebuffer);

    /// Deletes what waits for the current context. Cheap when nothing does.
    void reap();

    /// The current context is about to be destroyed: deletes what waits for it, and takes the texture and the
    /// framebuffer away from under every object that is still lent, since nobody could delete them later.
    void closeContext();

    /// How many framebuffers exist in living contexts.
    [[nodiscard]] size_t numAlive() const;

private:
    FramebufferReaper() = default;

    /// Takes a framebuffer that waits for the context out of the books, or null. Needs the lock.
    [[nodiscard]] QOpenGLFramebufferObject* takeWaiting(QOpenGLContext const* context);
    /// Takes a framebuffer that lives in the context out of the books; sets its OpenGL names, since the object is its
    /// borrower's from then on and may end at any time. False when there is none. Needs the lock.
    [[nodiscard]] bool takeAlive(QOpenGLContext const* context, GLuint& framebuffer, GLuint& texture);

    mutable std::mutex m_mutex;
    std::unordered_map<QOpenGLFramebufferObject*, QOpenGLContext*> m_alive;  // under m_mutex
    std::vector<QOpenGLFramebufferObject*>
        m_waiting;  // under m_mutex; all are alive, and there is room for all that are
    std::atomic<bool> m_isAnyWaiting{false};
};

}  // namespace QRT_0_81
