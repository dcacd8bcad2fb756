#include "render/qrtHostContext.h"

#include "playback/qrtSurfaceFormat.h"

namespace qrtplay {

Outcome HostContext::create() {
    m_surface.setFormat(playerSurfaceFormat());
    m_surface.create();
    m_context.setFormat(playerSurfaceFormat());
    if (!m_context.create() || !m_context.makeCurrent(&m_surface))
        return Outcome::failure("no OpenGL context can be had on this display");
    if (Outcome outcome = checkContext(m_context); outcome.failed()) return outcome;
    m_native = nativeContextOf(m_context);
    if (!m_native.context) return Outcome::failure("Qt does not tell the native OpenGL context on this display");
    return Outcome();
}

HostContext::~HostContext() {
    m_context.doneCurrent();
}

}  // namespace qrtplay
