#pragma once

#include <QOpenGLContext>
#include <QSurfaceFormat>

#include "base/qrtOutcome.h"

namespace qrtplay {

/// OpenGL 3.2 core, what the player shares objects with.
[[nodiscard]] QSurfaceFormat playerSurfaceFormat();

/// Whether a context is at least that; the failure says what it is instead.
Outcome checkContext(QOpenGLContext const& context);

}  // namespace qrtplay
