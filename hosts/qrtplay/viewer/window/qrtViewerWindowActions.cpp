// What the window's actions do.

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QStatusBar>
#include <QTextBrowser>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "base/qrtProgramVersion.h"
#include "viewer/export/qrtExportDialog.h"
#include "viewer/picture/qrtPictureView.h"
#include "viewer/preferences/qrtPreferencesPanel.h"
#include "viewer/timeline/qrtTimelineView.h"
#include "viewer/window/qrtKeyboardHelp.h"
#include "viewer/window/qrtMessageBar.h"
#include "viewer/window/qrtViewerKeys.h"
#include "viewer/window/qrtViewerWindow.h"

namespace qrtplay {

void ViewerWindow::connectActions() {
    connectFileActions();
    connectTransportActions();
    connectMarkActions();
    connectViewActions();
}

void ViewerWindow::connectFileActions() {
    const auto on = [this](ViewerCommand command, auto&& does) {
        connect(&(*m_actions)[command], &QAction::triggered, this, does);
    };
    on(ViewerCommand::open, [this] { askForFiles(); });
    on(ViewerCommand::reload, [this] { open(m_input, m_playback->frame()); });
    on(ViewerCommand::close, [this] {
        m_loader->cancel();
        closeInput();
    });
    on(ViewerCommand::save_snapshot, [this] { saveSnapshot(); });
    on(ViewerCommand::copy_snapshot, [this] { copySnapshot(); });
    on(ViewerCommand::export_range, [this] { exportRange(); });
    on(ViewerCommand::quit, [this] { close(); });
    on(ViewerCommand::keyboard, [this] { showKeyboard(); });
    on(ViewerCommand::about, [this] { showAbout(); });
}

void ViewerWindow::connectTransportActions() {
    const auto on = [this](ViewerCommand command, auto&& does) {
        connect(&(*m_actions)[command], &QAction::triggered, this, does);
    };
    on(ViewerCommand::toggle_play, [this] {
        m_playback->togglePlay();
        showState();  // the action has checked itself, whether or not there was anything to play
    });
    on(ViewerCommand::shuttle_back, [this] { shuttle(-1); });
    on(ViewerCommand::shuttle_stop, [this] { m_playback->pause(); });
    on(ViewerCommand::shuttle_forward, [this] { shuttle(1); });
    on(ViewerCommand::step_back, [this] { seekBy(-1); });
    on(ViewerCommand::step_forward, [this] { seekBy(1); });
    const auto second = [this] { return std::max<int64>(1, std::llround(m_numbering.rate().getValue())); };
    on(ViewerCommand::second_back, [this, second] { seekBy(-second()); });
    on(ViewerCommand::second_forward, [this, second] { seekBy(second()); });
    on(ViewerCommand::previous_cut, [this] {
        if (const auto frame = m_cuts.before(m_playback->frame())) m_playback->seek(*frame);
    });
    on(ViewerCommand::next_cut, [this] {
        if (const auto frame = m_cuts.after(m_playback->frame())) m_playback->seek(*frame);
    });
    on(ViewerCommand::go_to_start, [this] { m_playback->seek(m_playback->whole().first); });
    on(ViewerCommand::go_to_end, [this] { m_playback->seek(m_playback->whole().last); });
    on(ViewerCommand::mode_single, [this] { m_playback->setMode(PlayParams::single); });
    on(ViewerCommand::mode_loop, [this] { m_playback->setMode(PlayParams::loop); });
    on(ViewerCommand::mode_ping_pong, [this] { m_playback->setMode(PlayParams::ping_pong); });
    on(ViewerCommand::next_mode, [this] { nextMode(); });
    on(ViewerCommand::repeat_range, [this] { repeatRange(); });
    for (auto const& [command, frames] : strides)
        on(command, [this, frames = frames] { m_playback->setStride(frames); });
    on(ViewerCommand::real_time,
       [this](bool wanted) { m_playback->setPolicy(wanted ? PacePolicy::real_time : PacePolicy::every_frame); });
    on(ViewerCommand::mute, [this](bool wanted) { m_playback->setMuted(wanted); });
}

void ViewerWindow::connectMarkActions() {
    const auto on = [this](ViewerCommand command, auto&& does) {
        connect(&(*m_actions)[command], &QAction::triggered, this, does);
    };
    on(ViewerCommand::set_in, [this] {
        if (m_player) m_playback->setInPoint(m_playback->frame());
    });
    on(ViewerCommand::set_out, [this] {
        if (m_player) m_playback->setOutPoint(m_playback->frame());
    });
    on(ViewerCommand::go_to_in, [this] { m_playback->seek(m_playback->range().first); });
    on(ViewerCommand::go_to_out, [this] { m_playback->seek(m_playback->range().last); });
    on(ViewerCommand::clear_points, [this] { m_playback->clearPoints(); });
}

void ViewerWindow::connectViewActions() {
    const auto on = [this](ViewerCommand command, auto&& does) {
        connect(&(*m_actions)[command], &QAction::triggered, this, does);
    };
    on(ViewerCommand::full_screen, [this](bool wanted) { setFullScreen(wanted); });
    on(ViewerCommand::leave_full_screen, [this] { setFullScreen(false); });
    connect(m_picture, &PictureView::fullScreenWanted, this, [this] { setFullScreen(!isFullScreen()); });
    on(ViewerCommand::zoom_fit, [this] { m_picture->zoomToFit(); });
    on(ViewerCommand::zoom_original, [this] { m_picture->zoomToOriginal(); });
    on(ViewerCommand::zoom_in, [this] { m_picture->zoomIn(); });
    on(ViewerCommand::zoom_out, [this] { m_picture->zoomOut(); });
    on(ViewerCommand::overlay, [this] { showTexts(); });
    on(ViewerCommand::safe_areas, [this](bool wanted) { m_picture->setSafeAreas(wanted); });
    on(ViewerCommand::next_numbering, [this] { nextNumbering(); });
    on(ViewerCommand::drop_frame, [this] { showTexts(); });
    on(ViewerCommand::timeline_zoom_in, [this] { m_timeline->zoomIn(); });
    on(ViewerCommand::timeline_zoom_out, [this] { m_timeline->zoomOut(); });
    on(ViewerCommand::timeline_zoom_fit, [this] { m_timeline->zoomToFit(); });
}

void ViewerWindow::seekBy(int64 frames) {
    if (m_player) m_playback->seek(m_playback->frame() + frames);
}

void ViewerWindow::shuttle(int direction) {
    if (m_keys->isStopHeld())
        seekBy(direction);
    else
        m_playback->shuttle(direction);
}

void ViewerWindow::nextMode() {
    constexpr int modes = 3;
    m_playback->setMode(static_cast<PlayParams::PlayMode>((m_playback->mode() + 1) % modes));
}

void ViewerWindow::repeatRange() {
    m_playback->setMode(PlayParams::loop);
    m_playback->seek(m_playback->range().first);
    m_playback->play(m_playback->stride());
}

void ViewerWindow::nextNumbering() {
    constexpr int numberings = 3;
    m_settings.numbering = static_cast<Numbering>((static_cast<int>(m_settings.numbering) + 1) % numberings);
    showTexts();
}

void ViewerWindow::askForFiles() {
    QString folder = QDir::homePath();
    if (!m_settings.recentFiles.isEmpty())
        folder = QFileInfo(m_settings.recentFiles.first().section('\n', 0, 0)).absolutePath();
    const QStringList files = m_services.chooseFiles(this, folder);
    if (files.isEmpty()) return;
    PlayInput input;
    for (QString const& file : files)
        input.files.push_back(file.toStdString());
    open(input);
}

bool ViewerWindow::hasPicture() {
    if (m_shown.buffer) return true;
    notice("There is no frame to keep: none is on show.");
    return false;
}

void ViewerWindow::saveSnapshot() {
    if (!hasPicture()) return;
    const QFileInfo source(QString::fromStdString(m_input.files.front()));
    const QString proposal = QString("%1/%2.%3.png")
                                 .arg(source.absolutePath(), source.completeBaseName())
                                 .arg(m_shown.frame, 4, 10, QChar('0'));
    const QImage image = m_picture->snapshot();  // before the dialog: of the frame on show now
    const QString path = m_services.chooseTarget(this, proposal, "Images (*.png *.tif *.jpg)");
    if (path.isEmpty()) return;
    if (image.isNull() || !image.save(path))
        return fail(path + ": the frame cannot be written; is the folder there, and the ending .png, .tif or .jpg?");
    statusBar()->showMessage("Wrote " + path);
}

void ViewerWindow::copySnapshot() {
    if (!hasPicture()) return;
    QApplication::clipboard()->setImage(m_picture->snapshot());
    statusBar()->showMessage(QString("Copied frame %1").arg(m_shown.frame));
}

void ViewerWindow::exportRange() {
    if (!m_player) return;
    if (m_export && m_export->isRunning()) {
        m_export->show();
        m_export->raise();
        return;
    }
    if (m_export) m_export->deleteLater();
    ExportJob job;
    for (std::string const& file : m_input.files)
        job.files << QString::fromStdString(file);
    for (std::string const& path : m_input.allowPaths)
        job.allowPaths << QString::fromStdString(path);
    job.range = m_playback->range();
    m_preferences->store(m_settings);
    job.play = m_settings.play;
    const QString folder =
        m_settings.exportFolder.isEmpty() ? QFileInfo(job.files.first()).absolutePath() : m_settings.exportFolder;
    m_export = new ExportDialog(job, m_services.program, folder, this);
    connect(m_export, &ExportDialog::finished, this, [this](bool success, QString const& text) {
        if (success) m_settings.exportFolder = QFileInfo(m_export->output()).absolutePath();
        const bool isAsWanted = success || text.startsWith("Cancelled");
        m_messages->add(isAsWanted ? MessageBar::Kind::notice : MessageBar::Kind::failure, text);
    });
    m_export->show();
}

void ViewerWindow::setFullScreen(bool wanted) {
    if (wanted == isFullScreen()) return;
    if (wanted) {
        m_stateBefore = windowState();
        m_settings.geometry = saveGeometry();
        m_settings.layout = saveState();
        m_preferencesDock->hide();
        m_logDock->hide();
    }
    menuBar()->setVisible(!wanted);
    statusBar()->setVisible(!wanted);
    m_panels->setVisible(!wanted);
    if (wanted) {
        setWindowState(windowState() | Qt::WindowFullScreen);
    } else {
        setWindowState(m_stateBefore);
        restoreState(m_settings.layout);
    }
    (*m_actions)[ViewerCommand::full_screen].setChecked(wanted);
    m_picture->setFocus();
}

void ViewerWindow::showKeyboard() {
    auto* const page = new QDialog(this);
    page->setObjectName("keyboardPage");
    page->setAttribute(Qt::WA_DeleteOnClose);
    page->setWindowTitle("Keyboard");
    auto* const text = new QTextBrowser(page);
    text->setHtml(keyboardHelp());
    text->setAccessibleName("All keys");
    auto* const column = new QVBoxLayout(page);
    column->addWidget(text);
    constexpr QSize size(560, 640);
    page->resize(size);
    page->show();
}

void ViewerWindow::showAbout() {
    auto* const box = new QMessageBox(this);
    box->setObjectName("aboutBox");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle("About qrtplay");
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    box->setText(QString("<b>qrtplay %1</b>").arg(versionNumber));
    const QString openGl = m_openGl.empty() ? QString("No OpenGL") : QString::fromStdString(m_openGl);
    box->setInformativeText(
        QString("Plays media and timelines through the QRT player.\n\nQt %1\n%2").arg(qVersion(), openGl));
    box->open();
}

}  // namespace qrtplay
