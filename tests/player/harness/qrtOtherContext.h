#pragma once

#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <memory>
#include <stdexcept>

#include "harness/qrtHostContext.h"
#include "qrtNativeContext.h"

namespace QRT_0_81 {

/// A second OpenGL 3.2 core context beside the host's, not current at first.
class OtherContext final {
public:
    /// Shares its textures with `shared`, and with nobody for null.
    explicit OtherContext(QOpenGLContext* shared = nullptr) {
        createSurface();
        create(shared);
    }
    /// Shares with a host's context in the way of the engine, which knows no more of it than its native handles. The
    /// host's context must not be current.
    explicit OtherContext(NativeContext const& host) {
        createSurface();
        m_adopted = adoptContext(host, &m_surface);
        if (!m_adopted) throw std::runtime_error("the host's context cannot be adopted");
        create(m_adopted.get());
    }
    ~OtherContext() { m_context.doneCurrent(); }
    OtherContext(OtherContext const&) = delete;
    OtherContext& operator=(OtherContext const&) = delete;

    void makeCurrent() { m_context.makeCurrent(&m_surface); }
    void doneCurrent() { m_context.doneCurrent(); }
    [[nodiscard]] QOpenGLContext& context() { return m_context; }
    [[nodiscard]] QOpenGLExtraFunctions& gl() const { return *m_context.extraFunctions(); }

private:
    static QSurfaceFormat format() {
        QSurfaceFormat format;
        format.setProfile(QSurfaceFormat::CoreProfile);
        format.setVersion(3, 2);
        return format;
    }
    void createSurface() {
        m_surface.setFormat(format());
        m_surface.create();
    }
    void create(QOpenGLContext* shared) {
        m_context.setFormat(format());
        m_context.setShareContext(shared);
        if (!m_context.create() || m_context.shareContext() != shared) throw std::runtime_error("no second context");
    }

    QOffscreenSurface m_surface;
    std::unique_ptr<QOpenGLContext> m_adopted;
    QOpenGLContext m_context;
};

}  // namespace QRT_0_81
