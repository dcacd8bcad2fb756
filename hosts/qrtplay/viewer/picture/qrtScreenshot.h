#pragma once

#include <QString>

namespace qrtplay {

class ViewerWindow;

/// Writes a picture of the window once it shows what it was opened with, or why it cannot, and ends the application's
/// event loop: with 0, or with 1 and a line on standard error when there is nothing to show or it cannot be written.
///
/// Threading: the GUI thread. The window has to last until the event loop ends.
void takeScreenshot(ViewerWindow& window, QString const& path);

}  // namespace qrtplay
