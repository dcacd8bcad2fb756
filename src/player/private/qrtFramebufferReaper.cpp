#include "qrtFramebufferReaper.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <algorithm>
#include <utility>

#include "qrtOpenGL.h"

namespace QRT_0_81 {

SharedPtr<FramebufferReaper> FramebufferReaper::create() {
    return SharedPtr<FramebufferReaper>(new FramebufferReaper);
}

FramebufferReaper::~FramebufferReaper() {
    for (QOpenGLFramebufferObject* framebuffer : m_waiting)
        delete framebuffer;
}

QOpenGLFramebufferObject* FramebufferReaper::make(QSize const& sizeInPixels,
                                                  QOpenGLFramebufferObjectFormat const& format) {
    auto* const framebuffer = new QOpenGLFramebufferObject(sizeInPixels, format);
    drainGlErrors();
    const std::lock_guard lock(m_mutex);
    m_alive.emplace(framebuffer, QOpenGLContext::currentContext());
    return framebuffer;
}

void FramebufferReaper::dispose(QOpenGLFramebufferObject* framebuffer) {
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_alive.find(framebuffer);
        if (found != m_alive.end()) {
            if (found->second != QOpenGLContext::currentContext()) {
                m_waiting.push_back(framebuffer);
                m_isAnyWaiting.store(true, std::memory_order_release);
                return;
            }
            m_alive.erase(found);
        }
    }
    delete framebuffer;
}

void FramebufferReaper::reap() {
    if (!m_isAnyWaiting.load(std::memory_order_acquire)) return;
    std::vector<QOpenGLFramebufferObject*> dead;
    {
        const std::lock_guard lock(m_mutex);
        QOpenGLContext* const current = QOpenGLContext::currentContext();
        const auto firstDead = std::partition(m_waiting.begin(), m_waiting.end(),
                                              [&](auto* framebuffer) { return m_alive.at(framebuffer) != current; });
        dead.assign(firstDead, m_waiting.end());
        m_waiting.erase(firstDead, m_waiting.end());
        for (QOpenGLFramebufferObject* framebuffer : dead)
            m_alive.erase(framebuffer);
        m_isAnyWaiting.store(!m_waiting.empty(), std::memory_order_release);
    }
    for (QOpenGLFramebufferObject* framebuffer : dead)
        delete framebuffer;
}

void FramebufferReaper::closeContext() {
    reap();
    QOpenGLContext* const current = QOpenGLContext::currentContext();
    std::vector<QOpenGLFramebufferObject*> lent;
    {
        const std::lock_guard lock(m_mutex);
        for (auto it = m_alive.begin(); it != m_alive.end();) {
            if (it->second == current) {
                lent.push_back(it->first);
                it = m_alive.erase(it);
            } else {
                ++it;
            }
        }
    }
    // The objects themselves belong to whoever holds a frame. Qt notices the end of the context and never uses their
    // names again.
    for (QOpenGLFramebufferObject* framebuffer : lent) {
        const GLuint texture = framebuffer->texture();
        const GLuint handle = framebuffer->handle();
        current->functions()->glDeleteFramebuffers(1, &handle);
        current->functions()->glDeleteTextures(1, &texture);
    }
}

size_t FramebufferReaper::numAlive() const {
    const std::lock_guard lock(m_mutex);
    return m_alive.size();
}

}  // namespace QRT_0_81
