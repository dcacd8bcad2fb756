#include "qrtFramebufferReaper.h"

#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <algorithm>
#include <memory>

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
    auto framebuffer = std::make_unique<QOpenGLFramebufferObject>(sizeInPixels, format);
    drainGlErrors();
    const std::lock_guard lock(m_mutex);
    if (m_waiting.capacity() <= m_alive.size()) m_waiting.reserve(2 * m_alive.size() + 1);
    m_alive.emplace(framebuffer.get(), QOpenGLContext::currentContext());
    return framebuffer.release();
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
    for (;;) {
        QOpenGLFramebufferObject* dead = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            dead = takeWaiting(QOpenGLContext::currentContext());
            m_isAnyWaiting.store(!m_waiting.empty(), std::memory_order_release);
        }
        if (!dead) return;
        delete dead;
    }
}

QOpenGLFramebufferObject* FramebufferReaper::takeWaiting(QOpenGLContext const* context) {
    const auto found = std::find_if(m_waiting.begin(), m_waiting.end(),
                                    [&](auto* framebuffer) { return m_alive.at(framebuffer) == context; });
    if (found == m_waiting.end()) return nullptr;
    QOpenGLFramebufferObject* const framebuffer = *found;
    m_waiting.erase(found);
    m_alive.erase(framebuffer);
    return framebuffer;
}

bool FramebufferReaper::takeAlive(QOpenGLContext const* context, GLuint& framebuffer, GLuint& texture) {
    const auto found =
        std::find_if(m_alive.begin(), m_alive.end(), [&](auto const& entry) { return entry.second == context; });
    if (found == m_alive.end()) return false;
    framebuffer = found->first->handle();
    texture = found->first->texture();
    m_alive.erase(found);
    return true;
}

void FramebufferReaper::closeContext() {
    QOpenGLContext* const current = QOpenGLContext::currentContext();
    // The objects that are lent belong to whoever holds a frame. Qt notices the end of the context and never uses their
    // names again.
    for (;;) {
        QOpenGLFramebufferObject* dead = nullptr;
        GLuint framebuffer = 0;
        GLuint texture = 0;
        {
            const std::lock_guard lock(m_mutex);
            dead = takeWaiting(current);  // each time: hosts give frames back meanwhile
            m_isAnyWaiting.store(!m_waiting.empty(), std::memory_order_release);
            if (!dead && !takeAlive(current, framebuffer, texture)) return;
        }
        if (dead) {
            delete dead;
            continue;
        }
        current->functions()->glDeleteFramebuffers(1, &framebuffer);
        current->functions()->glDeleteTextures(1, &texture);
    }
}

size_t FramebufferReaper::numAlive() const {
    const std::lock_guard lock(m_mutex);
    return m_alive.size();
}

}  // namespace QRT_0_81
