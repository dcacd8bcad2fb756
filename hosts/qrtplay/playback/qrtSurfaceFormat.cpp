#include "playback/qrtSurfaceFormat.h"

#include <QPair>
#include <string>

namespace qrtplay {

QSurfaceFormat playerSurfaceFormat() {
    QSurfaceFormat format;
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    return format;
}

Outcome checkContext(QOpenGLContext const& context) {
    const auto version = context.format().version();
    if (!context.isOpenGLES() && version >= qMakePair(3, 2)) return Outcome();
    return Outcome::failure("the display offers OpenGL " + std::to_string(version.first) + "." +
                            std::to_string(version.second) + " only; 3.2 is needed");
}

}  // namespace qrtplay
