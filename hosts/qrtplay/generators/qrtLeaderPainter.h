#pragma once

#include <QOpenGLExtraFunctions>

#include "base/qrtKit.h"
#include "foundation/core/qrtStatus.h"
#include "generators/qrtCountdown.h"

namespace qrtplay {

/// Draws a counting leader, as cinema films begin with, into the framebuffer that is bound: the seconds left in the
/// middle of two circles and a cross, a hand that turns once a second and darkens what it has swept. White ground marks
/// the pop.
///
/// OpenGL: changes what `GlState` saves; deletes what it makes. `Status::general_failure` when the shader cannot be
/// built.
Status paintLeader(QOpenGLExtraFunctions& gl, Countdown const& countdown, int width, int height);

}  // namespace qrtplay
