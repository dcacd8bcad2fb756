#pragma once

#include <QMainWindow>
#include <functional>
#include <memory>
#include <utility>

#include "base/qrtKit.h"
#include "input/qrtPlayInput.h"
#include "playback/qrtMediaClock.h"
#include "playback/qrtSoundOutput.h"
#include "playback/qrtTimelinePlayer.h"
#include "viewer/playing/qrtCutPoints.h"
#include "viewer/playing/qrtInputLoader.h"
#include "viewer/playing/qrtPlayback.h"
#include "viewer/qrtViewerSettings.h"
#include "viewer/window/qrtViewerActions.h"

class QDockWidget;
class QMenu;
class QLabel;

namespace qrtplay {

class ExportDialog;
class LogPanel;
class MessageBar;
class PictureView;
class PreferencesPanel;
class TimelineView;
class TransportBar;
class ViewerKeys;

/// What the viewer takes from outside, and which others may be given in its place.
struct ViewerServices {
    std::shared_ptr<MediaClock const> clock;  ///< that playing follows without sound
    std::shared_ptr<SoundOutput> sound;       ///< null: none
    QString program;                          ///< path of `qrtplay`, which exports
    /// Files to open; none when the user has thought better of it.
    std::function<QStringList(QWidget* parent, QString const& folder)> chooseFiles;
    /// A file to write; empty when the user has thought better of it.
    std::function<QString(QWidget* parent, QString const& proposal, QString const& filters)> chooseTarget;

    /// The machine's own: wall clock, default sound device, Qt's file dialogs, this program.
    [[nodiscard]] static ViewerServices ofThisMachine();
};

/// How the viewer begins.
struct ViewerStart {
    PlayInput input;             ///< without files nothing is opened
    std::optional<int64> frame;  ///< to begin at
    bool isPlaying = false;
    bool isFullScreen = false;
    ViewerSettings settings;
};

/// The window of qrtplay: picture, timeline, transport, preferences and log.
///
/// Failures are shown in words in the window, which stays usable. Threading: the GUI thread.
class ViewerWindow final : public QMainWindow {
    Q_OBJECT

public:
    ViewerWindow(ViewerServices services, ViewerStart start);
    ~ViewerWindow() override;

    /// Opens files in place of what is open, which stays until they have been read, and for good when they cannot be.
    /// The folders that were allowed when the window was made hold for these as well.
    void open(PlayInput const& input, std::optional<int64> frame = std::nullopt);

    [[nodiscard]] ViewerActions& actions() const { return *m_actions; }
    [[nodiscard]] Playback& playback() const { return *m_playback; }
    [[nodiscard]] PictureView& pictureView() const { return *m_picture; }
    [[nodiscard]] TimelineView& timelineView() const { return *m_timeline; }
    [[nodiscard]] MessageBar& messageBar() const { return *m_messages; }
    [[nodiscard]] bool isLoading() const { return m_loader->isLoading(); }
    /// The export under way or done last; null before the first.
    [[nodiscard]] ExportDialog* exportDialog() const { return m_export; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void layOut();
    void addDocks();
    void connectActions();
    void connectFileActions();
    void connectTransportActions();
    void connectMarkActions();
    void connectViewActions();
    void connectPlayback();
    void applySettings();
    void storeSettings();

    void adopt(PreparedInput const& prepared);
    void closeInput();
    void fail(QString const& text);
    void notice(QString const& text);
    void takeWarnings();

    void showFetched(FetchedFrame const& frame);
    void showState();
    void showRange();
    void showTexts();
    void showTitle();
    /// What people call it: the name of its first file, and how many more there are; empty without one.
    [[nodiscard]] static QString titleOf(PlayInput const& input);
    void showCaches();
    void showRecentFiles();

    void seekBy(int64 frames);
    void shuttle(int direction);
    void nextMode();
    void repeatRange();
    void nextNumbering();
    void askForFiles();
    void saveSnapshot();
    void copySnapshot();
    void exportRange();
    void setFullScreen(bool wanted);
    void showKeyboard();
    void showAbout();
    [[nodiscard]] bool hasPicture();

    static constexpr std::pair<ViewerCommand, int> strides[] = {{ViewerCommand::stride_1, 1},
                                                                {ViewerCommand::stride_2, 2},
                                                                {ViewerCommand::stride_5, 5},
                                                                {ViewerCommand::stride_10, 10}};

    ViewerServices m_services;
    ViewerSettings m_settings;
    const std::vector<std::string> m_allowPaths;
    PlayInput m_input;    // what is open
    PlayInput m_opening;  // what is being opened, ...
    std::optional<int64> m_openingFrame;
    bool m_playsWhenOpened = false;
    std::unique_ptr<TimelinePlayer> m_player;
    FrameNumbering m_numbering;
    CutPoints m_cuts;
    FetchedFrame m_shown;
    std::string m_openGl;
    Qt::WindowStates m_stateBefore;  // of the window, before it took the full screen

    Playback* m_playback;
    InputLoader* m_loader;
    ViewerActions* m_actions;
    ViewerKeys* m_keys;
    MessageBar* m_messages;
    PictureView* m_picture;
    TransportBar* m_transport;
    TimelineView* m_timeline;
    QWidget* m_panels;  // below the picture: transport and timeline
    PreferencesPanel* m_preferences;
    LogPanel* m_log;
    QDockWidget* m_preferencesDock;
    QDockWidget* m_logDock;
    QMenu* m_recentFiles = nullptr;
    QLabel* m_status;
    ExportDialog* m_export = nullptr;
    QTimer m_refresh;  // of caches and texts
};

}  // namespace qrtplay
