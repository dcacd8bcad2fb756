#pragma once

#include <memory>

#include "base/qrtOutcome.h"
#include "playback/qrtNativeContext.h"

class QApplication;

namespace qrtplay {

/// The application object of the viewer: its OpenGL contexts share their objects, so that the player's textures can be
/// drawn in every window. `argc` and `argv` have to last as long as the application.
///
/// Threading: the main thread, before any other Qt object is made.
[[nodiscard]] std::unique_ptr<QApplication> makeViewerApplication(int& argc, char** argv);

/// The context that all views share their objects with, for the player. Fails when there is none, saying why.
///
/// Threading: the GUI thread. Which context is current is left as it was.
Outcome sharedContext(NativeContext& native);

/// "OpenGL 4.5 (Core Profile) Mesa 22.3.6, llvmpipe": version and renderer of that context; empty when there is none.
[[nodiscard]] std::string openGlText();

}  // namespace qrtplay
