#include "viewer/picture/qrtScreenshot.h"

#include <QApplication>
#include <QPixmap>
#include <QTimer>

#include "render/qrtConsole.h"
#include "viewer/picture/qrtPictureView.h"
#include "viewer/window/qrtMessageBar.h"
#include "viewer/window/qrtViewerWindow.h"

namespace qrtplay {

namespace {

void write(ViewerWindow& window, QString const& path) {
    const bool isWritten = window.grab().save(path, "PNG");
    if (!isWritten) printError(path.toStdString() + ": cannot be written");
    const bool showsPicture = static_cast<bool>(window.pictureView().frame());
    if (!showsPicture) printError("there is no frame to be seen: " + window.messageBar().text().toStdString());
    QApplication::exit(isWritten && showsPicture ? exit_done : exit_failed);
}

}  // namespace

void takeScreenshot(ViewerWindow& window, QString const& path) {
    constexpr int lookMs = 50;
    constexpr int playedMs = 2000;  // long enough for the caches and the rates to have something to show
    constexpr int drawnMs = 500;    // for the caches that are shown beside the frame
    auto* const look = new QTimer(&window);
    QObject::connect(look, &QTimer::timeout, &window, [&window, look, path] {
        const bool isReady = window.pictureView().frame() || !window.messageBar().text().isEmpty();
        if (window.isLoading() || !isReady) return;
        look->stop();
        const int wait = window.playback().isPlaying() ? playedMs : drawnMs;
        QTimer::singleShot(wait, &window, [&window, path] { write(window, path); });
    });
    look->start(lookMs);
}

}  // namespace qrtplay
