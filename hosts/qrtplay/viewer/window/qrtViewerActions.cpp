#include "viewer/window/qrtViewerActions.h"

#include <QActionGroup>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>

namespace qrtplay {

namespace {

using Command = ViewerCommand;

constexpr char fileMenu[] = "&File";
constexpr char playbackMenu[] = "&Playback";
constexpr char markMenu[] = "&Mark";
constexpr char viewMenu[] = "&View";
constexpr char helpMenu[] = "&Help";

QString withKeys(QString const& toolTip, QAction const& action) {
    QStringList keys;
    for (QKeySequence const& sequence : action.shortcuts())
        keys << sequence.toString(QKeySequence::NativeText);
    return keys.isEmpty() ? toolTip : toolTip + " (" + keys.join(", ") + ")";
}

}  // namespace

std::vector<ViewerActions::Entry> const& ViewerActions::entries() {
    static const std::vector<Entry> table{
        {Command::open, fileMenu, "actionOpen", "&Open...", "Ctrl+O",
         "Opens media files, image sequences or a timeline."},
        {Command::reload, fileMenu, "actionReload", "&Reload", "Ctrl+R",
         "Reads the files again and stays at the same frame."},
        {Command::close, fileMenu, "actionClose", "&Close", "Ctrl+W", "Closes what is open and keeps the window."},
        {Command::save_snapshot, fileMenu, "actionSaveSnapshot", "&Save frame...", "Ctrl+S",
         "Writes the frame on show to an image file.", false, true},
        {Command::copy_snapshot, fileMenu, "actionCopySnapshot", "Co&py frame", "Ctrl+C",
         "Copies the frame on show to the clipboard."},
        {Command::export_range, fileMenu, "actionExport", "&Export...", "Ctrl+E",
         "Writes the frames from the in point to the out point to files or a movie."},
        {Command::quit, fileMenu, "actionQuit", "&Quit", "Ctrl+Q", "Closes the window.", false, true},

        {Command::toggle_play, playbackMenu, "actionPlay", "&Play", "Space", "Plays or pauses.", true},
        {Command::shuttle_back, playbackMenu, "actionShuttleBack", "Play &backwards", "J",
         "Plays backwards; again: 2, 4, 8 times as fast. With K held: one frame back."},
        {Command::shuttle_stop, playbackMenu, "actionShuttleStop", "&Stop", "K",
         "Pauses. Held with J or L it steps frame by frame."},
        {Command::shuttle_forward, playbackMenu, "actionShuttleForward", "Play &forwards", "L",
         "Plays forwards; again: 2, 4, 8 times as fast. With K held: one frame on."},
        {Command::step_back, playbackMenu, "actionStepBack", "One frame back", "Left", "Goes one frame back.", false,
         true},
        {Command::step_forward, playbackMenu, "actionStepForward", "One frame on", "Right", "Goes one frame on."},
        {Command::second_back, playbackMenu, "actionSecondBack", "One second back", "Shift+Left",
         "Goes one second back."},
        {Command::second_forward, playbackMenu, "actionSecondForward", "One second on", "Shift+Right",
         "Goes one second on."},
        {Command::previous_cut, playbackMenu, "actionPreviousCut", "Previous cut", "Up", "Goes to the cut before."},
        {Command::next_cut, playbackMenu, "actionNextCut", "Next cut", "Down", "Goes to the next cut."},
        {Command::go_to_start, playbackMenu, "actionGoToStart", "Go to start", "Home", "Goes to the first frame."},
        {Command::go_to_end, playbackMenu, "actionGoToEnd", "Go to end", "End", "Goes to the last frame."},
        {Command::mode_single, playbackMenu, "actionModeSingle", "Play &once", "", "Stops at the end of the range.",
         true, true},
        {Command::mode_loop, playbackMenu, "actionModeLoop", "&Loop", "", "Begins again at the end of the range.",
         true},
        {Command::mode_ping_pong, playbackMenu, "actionModePingPong", "Pin&g-pong", "",
         "Turns round at the ends of the range.", true},
        {Command::next_mode, playbackMenu, "actionNextMode", "Next play mode", "M",
         "Changes between playing once, looping and ping-pong."},
        {Command::repeat_range, playbackMenu, "actionRepeatRange", "Repeat in to out", "A",
         "Plays from the in point to the out point over and over."},
        {Command::stride_1, playbackMenu, "actionStride1", "Every frame", "", "Plays one frame after the other.", true,
         true},
        {Command::stride_2, playbackMenu, "actionStride2", "Every second frame", "", "Plays every second frame.", true},
        {Command::stride_5, playbackMenu, "actionStride5", "Every fifth frame", "", "Plays every fifth frame.", true},
        {Command::stride_10, playbackMenu, "actionStride10", "Every tenth frame", "", "Plays every tenth frame.", true},
        {Command::real_time, playbackMenu, "actionRealTime", "&Real time", "R",
         "Skips late frames and keeps time; off: shows every frame, however late.", true, true},
        {Command::mute, playbackMenu, "actionMute", "M&ute", "S", "Switches the sound off and on.", true},

        {Command::set_in, markMenu, "actionSetIn", "Set &in point", "I", "The range begins at the frame on show."},
        {Command::set_out, markMenu, "actionSetOut", "Set &out point", "O", "The range ends with the frame on show."},
        {Command::go_to_in, markMenu, "actionGoToIn", "Go to in point", "Shift+I", "Goes to where the range begins."},
        {Command::go_to_out, markMenu, "actionGoToOut", "Go to out point", "Shift+O", "Goes to where the range ends."},
        {Command::clear_points, markMenu, "actionClearPoints", "&Clear in and out", "X",
         "The range is the whole timeline again."},

        {Command::full_screen, viewMenu, "actionFullScreen", "&Full screen", "F", "Shows nothing but the picture.",
         true},
        {Command::leave_full_screen, viewMenu, "actionLeaveFullScreen", "Leave full screen", "Esc",
         "Shows the whole window again."},
        {Command::zoom_fit, viewMenu, "actionZoomFit", "Fit &picture", "Ctrl+0",
         "Shows the whole picture, as large as the window allows.", false, true},
        {Command::zoom_original, viewMenu, "actionZoomOriginal", "&One to one", "Ctrl+1",
         "Shows one pixel of the picture on one of the screen."},
        {Command::zoom_in, viewMenu, "actionZoomIn", "Zoom &in", "Ctrl++, Ctrl+=", "Shows the picture larger."},
        {Command::zoom_out, viewMenu, "actionZoomOut", "Zoom o&ut", "Ctrl+-", "Shows the picture smaller."},
        {Command::overlay, viewMenu, "actionOverlay", "&Information", "H",
         "Shows time, rates and what the engine does over the picture.", true, true},
        {Command::safe_areas, viewMenu, "actionSafeAreas", "Safe &areas", "G",
         "Shows the borders that action and titles keep within.", true},
        {Command::next_numbering, viewMenu, "actionNextNumbering", "&Timecode, frames or seconds", "T",
         "Changes how positions are told."},
        {Command::drop_frame, viewMenu, "actionDropFrame", "&Drop-frame timecode", "D",
         "Counts in drop-frame timecode where the rate has it.", true},
        {Command::timeline_zoom_in, viewMenu, "actionTimelineZoomIn", "Zoom timeline in",
         "Alt++, Alt+=", "Shows less of the timeline, larger.", false, true},
        {Command::timeline_zoom_out, viewMenu, "actionTimelineZoomOut", "Zoom timeline out", "Alt+-",
         "Shows more of the timeline."},
        {Command::timeline_zoom_fit, viewMenu, "actionTimelineZoomFit", "Whole timeline", "Alt+0",
         "Shows the whole timeline."},
        {Command::preferences, viewMenu, "actionPreferences", "P&references", "Ctrl+,",
         "Sets resolution, format, caches, colours and sound.", true, true},
        {Command::log, viewMenu, "actionLog", "&Log", "Ctrl+L", "Shows what the engine says.", true},

        {Command::keyboard, helpMenu, "actionKeyboard", "&Keyboard", "F1", "Lists all keys."},
        {Command::about, helpMenu, "actionAbout", "&About qrtplay", "", "Tells the versions in use."},
    };
    return table;
}

ViewerActions::ViewerActions(QWidget* window) : QObject(window), m_actions(entries().size()) {
    for (Entry const& entry : entries()) {
        auto* const action = new QAction(entry.text, this);
        action->setObjectName(entry.name);
        action->setCheckable(entry.isCheckable);
        // Qt 6 makes an empty sequence of no keys.
        if (*entry.keys) action->setShortcuts(QKeySequence::listFromString(QString(entry.keys).replace(", ", "; ")));
        action->setToolTip(withKeys(entry.toolTip, *action));
        action->setStatusTip(entry.toolTip);
        // Full screen hides the menus; what is not in the window itself loses its keys then.
        window->addAction(action);
        m_actions[static_cast<size_t>(entry.command)] = action;
    }
    makeGroup({Command::mode_single, Command::mode_loop, Command::mode_ping_pong});
    makeGroup({Command::stride_1, Command::stride_2, Command::stride_5, Command::stride_10});
}

// Of a group one is checked.
void ViewerActions::makeGroup(std::initializer_list<ViewerCommand> commands) {
    auto* const group = new QActionGroup(this);
    for (const Command command : commands)
        group->addAction(&(*this)[command]);
}

QAction& ViewerActions::operator[](ViewerCommand command) const {
    return *m_actions.at(static_cast<size_t>(command));
}

void ViewerActions::fill(QMenuBar& bar) const {
    QMenu* menu = nullptr;
    for (Entry const& entry : entries()) {
        if (!menu || menu->title() != entry.menu) {
            menu = bar.addMenu(entry.menu);
            menu->setToolTipsVisible(true);
        }
        if (entry.beginsGroup) menu->addSeparator();
        menu->addAction(&(*this)[entry.command]);
    }
}

}  // namespace qrtplay
