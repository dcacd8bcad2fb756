#include "viewer/window/qrtViewerWindow.h"

#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QSplitter>
#include <QStatusBar>
#include <QStyle>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "base/qrtProgramVersion.h"
#include "viewer/export/qrtExportDialog.h"
#include "viewer/picture/qrtPictureView.h"
#include "viewer/playing/qrtPlaybackReport.h"
#include "viewer/preferences/qrtPreferencesPanel.h"
#include "viewer/qrtViewerApplication.h"
#include "viewer/timeline/qrtTimelineView.h"
#include "viewer/window/qrtLogPanel.h"
#include "viewer/window/qrtMessageBar.h"
#include "viewer/window/qrtTransportBar.h"
#include "viewer/window/qrtViewerKeys.h"

namespace qrtplay {

namespace {

constexpr char emptyText[] = "Open a file (Ctrl+O) or drop one here";

QStringList namesOf(PlayInput const& input) {
    QStringList names;
    for (std::string const& file : input.files)
        names << QString::fromStdString(file);
    return names;
}

}  // namespace

ViewerWindow::ViewerWindow(ViewerServices services, ViewerStart start)
    : m_services(std::move(services)),
      m_settings(std::move(start.settings)),
      m_allowPaths(start.input.allowPaths),
      m_openGl(openGlText()),
      m_playback(new Playback(*m_services.clock, m_services.sound.get(), this)),
      m_loader(new InputLoader(this)),
      m_actions(new ViewerActions(this)),
      m_keys(new ViewerKeys(*this)),
      m_messages(new MessageBar(this)),
      m_picture(new PictureView(this)),
      m_transport(new TransportBar(*m_actions, this)),
      m_timeline(new TimelineView(this)),
      m_panels(new QWidget(this)),
      m_preferences(new PreferencesPanel(*m_playback, this)),
      m_log(new LogPanel(this)),
      m_preferencesDock(new QDockWidget("Preferences", this)),
      m_logDock(new QDockWidget("Log", this)),
      m_status(new QLabel(this)) {
    setObjectName("viewerWindow");
    setAcceptDrops(true);
    layOut();
    addDocks();
    connectActions();
    connectPlayback();
    applySettings();
    closeInput();
    if (start.isFullScreen) setFullScreen(true);
    m_playsWhenOpened = start.isPlaying;
    if (!start.input.files.empty()) open(start.input, start.frame);
    constexpr int refreshMs = 100;
    connect(&m_refresh, &QTimer::timeout, this, [this] {
        showCaches();
        showTexts();
        takeWarnings();
    });
    m_refresh.start(refreshMs);
}

ViewerWindow::~ViewerWindow() {
    m_refresh.stop();
    disconnect(m_playback, nullptr, this, nullptr);
    m_playback->setPlayer(nullptr);
    m_picture->showFrame({});
    m_shown = {};
    m_player.reset();
}

void ViewerWindow::layOut() {
    auto* const content = new QWidget(this);
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_messages);
    column->addWidget(m_picture, 1);

    auto* const panels = new QVBoxLayout(m_panels);
    panels->setContentsMargins(0, 0, 0, 0);
    panels->setSpacing(0);
    panels->addWidget(m_transport);
    panels->addWidget(m_timeline, 1);

    auto* const splitter = new QSplitter(Qt::Vertical, this);
    splitter->setObjectName("pictureAndTimeline");
    splitter->addWidget(content);
    splitter->addWidget(m_panels);
    splitter->setStretchFactor(0, 1);
    splitter->setCollapsible(0, false);
    setCentralWidget(splitter);
    m_picture->setFocusPolicy(Qt::StrongFocus);
    m_picture->setFocus();

    m_actions->fill(*menuBar());
    m_recentFiles = new QMenu("Open re&cent", this);
    m_recentFiles->setObjectName("recentFiles");
    menuBar()->actions().first()->menu()->insertMenu(&(*m_actions)[ViewerCommand::reload], m_recentFiles);
    statusBar()->addPermanentWidget(m_status);
    m_status->setAccessibleName("How playing goes");
    constexpr QSize usual(1280, 800);
    resize(usual);
}

void ViewerWindow::addDocks() {
    m_preferencesDock->setObjectName("preferencesDock");
    m_preferencesDock->setWidget(m_preferences);
    addDockWidget(Qt::RightDockWidgetArea, m_preferencesDock);
    m_logDock->setObjectName("logDock");
    m_logDock->setWidget(m_log);
    addDockWidget(Qt::BottomDockWidgetArea, m_logDock);
    for (auto const& [dock, command] :
         {std::pair{m_preferencesDock, ViewerCommand::preferences}, std::pair{m_logDock, ViewerCommand::log}}) {
        dock->hide();
        QAction& action = (*m_actions)[command];
        connect(&action, &QAction::triggered, dock, &QDockWidget::setVisible);
        connect(dock, &QDockWidget::visibilityChanged, &action, &QAction::setChecked);
    }
}

void ViewerWindow::connectPlayback() {
    connect(m_playback, &Playback::frameShown, this, &ViewerWindow::showFetched);
    connect(m_playback, &Playback::stateChanged, this, &ViewerWindow::showState);
    connect(m_playback, &Playback::rangeChanged, this, &ViewerWindow::showRange);
    connect(m_playback, &Playback::noticed, this, &ViewerWindow::notice);
    connect(m_timeline, &TimelineView::scrubbed, m_playback, &Playback::scrub);
    connect(m_timeline, &TimelineView::scrubEnded, m_playback, &Playback::endScrub);
    connect(m_loader, &InputLoader::loaded, this, &ViewerWindow::adopt);
    connect(m_loader, &InputLoader::failed, this, [this](QString const& text) {
        fail(text);
        showTitle();
    });
    connect(m_preferences, &PreferencesPanel::changed, this, [this] {
        m_preferences->store(m_settings);
        m_picture->setBackground(m_settings.background);
        showState();
    });
    connect(m_preferences, &PreferencesPanel::reopenWanted, this, [this] {
        m_preferences->store(m_settings);
        if (m_player) open(m_input, m_playback->frame());
    });
    connect(m_messages, &MessageBar::added, m_log, &LogPanel::add);
}

void ViewerWindow::applySettings() {
    m_preferences->show(m_settings);
    m_playback->setMode(static_cast<PlayParams::PlayMode>(m_settings.playMode));
    m_playback->setPolicy(m_settings.policy);
    m_playback->setMuted(m_settings.muted);
    m_playback->setVolume(m_settings.volume);
    m_picture->setBackground(m_settings.background);
    m_picture->setSafeAreas(m_settings.safeAreas);
    (*m_actions)[ViewerCommand::safe_areas].setChecked(m_settings.safeAreas);
    (*m_actions)[ViewerCommand::overlay].setChecked(m_settings.overlay);
    (*m_actions)[ViewerCommand::drop_frame].setChecked(m_settings.dropFrame);
    if (!m_settings.geometry.isEmpty()) restoreGeometry(m_settings.geometry);
    if (!m_settings.layout.isEmpty()) restoreState(m_settings.layout);
    showRecentFiles();
    showState();
}

void ViewerWindow::storeSettings() {
    m_preferences->store(m_settings);
    m_settings.playMode = m_playback->mode();
    m_settings.policy = m_playback->policy();
    m_settings.muted = m_playback->isMuted();
    m_settings.safeAreas = m_picture->safeAreas();
    m_settings.overlay = (*m_actions)[ViewerCommand::overlay].isChecked();
    m_settings.dropFrame = (*m_actions)[ViewerCommand::drop_frame].isChecked();
    if (!isFullScreen()) {
        m_settings.geometry = saveGeometry();
        m_settings.layout = saveState();
    }
    m_settings.save();
}

void ViewerWindow::open(PlayInput const& input, std::optional<int64> frame) {
    m_opening = input;
    m_opening.allowPaths = m_allowPaths;
    m_openingFrame = frame;
    m_preferences->store(m_settings);
    m_loader->load(m_opening, m_settings.play);
    if (!m_player) m_picture->setMessage("Opening " + titleOf(input) + "...");
    statusBar()->showMessage("Opening " + titleOf(input) + "...");
}

// The player before ends first: two of them would need the memory twice.
void ViewerWindow::adopt(PreparedInput const& prepared) {
    const bool isReload = m_opening.files == m_input.files;
    const std::optional<int64> in = isReload ? m_playback->inPoint() : std::nullopt;
    const std::optional<int64> out = isReload ? m_playback->outPoint() : std::nullopt;
    closeInput();
    NativeContext native;
    OpenFailure why = OpenFailure::failed;
    Outcome outcome = sharedContext(native);
    if (outcome.success()) outcome = TimelinePlayer::open(prepared, m_settings.play, native, m_player, why);
    if (outcome.failed()) return fail(QString::fromStdString(outcome.message()));

    m_input = m_opening;
    m_messages->clear();
    m_settings.addRecent(namesOf(m_input));
    showRecentFiles();
    m_numbering = FrameNumbering(m_player->rate(), m_player->timeline().clockStart());
    m_cuts = CutPoints(m_player->timeline(), m_player->rate(), m_player->frameCount());
    m_timeline->setTimeline(m_player->composition().timeline(), m_player->rate(), m_player->frameCount());
    m_picture->setMessage({});
    m_playback->setPlayer(m_player.get(), m_openingFrame.value_or(0));
    if (in && *in < m_player->frameCount()) m_playback->setInPoint(in);
    if (out && *out < m_player->frameCount()) m_playback->setOutPoint(out);
    m_preferences->timelineChanged();
    takeWarnings();
    showTitle();
    showRange();
    showState();
    if (std::exchange(m_playsWhenOpened, false)) m_playback->play(m_playback->stride());
}

void ViewerWindow::closeInput() {
    m_playback->setPlayer(nullptr);
    m_picture->showFrame({});
    m_shown = {};
    m_player.reset();
    m_input = {};
    m_numbering = {};
    m_cuts = {};
    m_timeline->setTimeline(nullptr, Rational(24, 1), 0);
    m_timeline->setCached({}, {});
    m_picture->setMessage(emptyText);
    m_preferences->timelineChanged();
    statusBar()->clearMessage();
    showTitle();
    showRange();
    showState();
}

void ViewerWindow::fail(QString const& text) {
    m_messages->add(MessageBar::Kind::failure, text);
    statusBar()->clearMessage();
    if (!m_player) m_picture->setMessage(text + "\n\n" + emptyText);
}

void ViewerWindow::notice(QString const& text) {
    m_messages->add(MessageBar::Kind::notice, text);
}

void ViewerWindow::takeWarnings() {
    if (!m_player) return;
    for (std::string const& warning : m_player->composition().takeWarnings())
        notice(QString::fromStdString(warning));
}

void ViewerWindow::closeEvent(QCloseEvent* event) {
    storeSettings();
    m_playback->pause();
    event->accept();
}

void ViewerWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void ViewerWindow::dropEvent(QDropEvent* event) {
    PlayInput input;
    for (QUrl const& url : event->mimeData()->urls()) {
        if (url.isLocalFile()) input.files.push_back(url.toLocalFile().toStdString());
    }
    if (input.files.empty()) return fail("What was dropped is no file of this machine.");
    event->acceptProposedAction();
    open(input);
}

}  // namespace qrtplay
