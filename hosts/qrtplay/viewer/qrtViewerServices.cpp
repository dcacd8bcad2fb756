#include <QCoreApplication>
#include <QFileDialog>

#include "viewer/playing/qrtQtSoundOutput.h"
#include "viewer/window/qrtViewerWindow.h"

namespace qrtplay {

ViewerServices ViewerServices::ofThisMachine() {
    ViewerServices services;
    services.clock = std::make_shared<WallClock>();
    services.sound = std::make_shared<QtSoundOutput>();
    services.program = QCoreApplication::applicationFilePath();
    services.chooseFiles = [](QWidget* parent, QString const& folder) {
        return QFileDialog::getOpenFileNames(
            parent, "Open", folder,
            "Media and timelines (*.mp4 *.mov *.mkv *.mxf *.avi *.webm *.m4v *.mpg *.ts *.wav *.aif *.flac *.mp3 *.png "
            "*.exr *.tif *.tiff *.jpg *.dpx *.otio *.otioz *.otiod);;All files (*)");
    };
    services.chooseTarget = [](QWidget* parent, QString const& proposal, QString const& filters) {
        return QFileDialog::getSaveFileName(parent, "Save frame", proposal, filters);
    };
    return services;
}

}  // namespace qrtplay
