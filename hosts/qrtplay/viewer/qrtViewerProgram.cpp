#include "viewer/qrtViewerProgram.h"

#include <QApplication>
#include <utility>

#include "options/qrtViewOptions.h"
#include "viewer/picture/qrtScreenshot.h"
#include "viewer/window/qrtViewerWindow.h"

namespace qrtplay {

namespace {

/// What a person who watches wants, who has not chosen anything: enough ahead to bridge a picture that takes its time,
/// and a step back without a wait.
void setUsualCounts(PlaySettings& settings) {
    constexpr int framesAhead = 8;
    constexpr int framesBehind = 2;
    if (!settings.headFrames) settings.headFrames = framesAhead;
    if (!settings.tailFrames) settings.tailFrames = framesBehind;
}

}  // namespace

int runViewer(ViewOptions const& options) {
    QCoreApplication::setOrganizationName("qrt");
    QCoreApplication::setApplicationName("qrtplay");
    ViewerStart start;
    start.settings = ViewerSettings::load();
    setUsualCounts(start.settings.play);
    overrideSettings(options, start.settings.play);
    if (options.mode) start.settings.playMode = *options.mode;
    if (options.isEveryFrame) start.settings.policy = PacePolicy::every_frame;
    if (options.isMuted) start.settings.muted = true;
    start.input = options.input;
    if (options.start) start.frame = *options.start;
    start.isPlaying = options.isPlaying;
    start.isFullScreen = options.isFullScreen;
    ViewerWindow window(ViewerServices::ofThisMachine(), std::move(start));
    window.show();
    if (!options.screenshot.empty()) takeScreenshot(window, QString::fromStdString(options.screenshot));
    return QApplication::exec();
}

}  // namespace qrtplay
