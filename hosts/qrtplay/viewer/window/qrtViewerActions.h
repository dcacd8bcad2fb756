#pragma once

#include <QAction>
#include <QObject>
#include <initializer_list>
#include <vector>

class QMenuBar;

namespace qrtplay {

/// Everything that the viewer can do, by the menu it stands in.
enum class ViewerCommand {
    // File
    open,
    reload,
    close,
    save_snapshot,
    copy_snapshot,
    export_range,
    quit,
    // Playback
    toggle_play,
    shuttle_back,
    shuttle_stop,
    shuttle_forward,
    step_back,
    step_forward,
    second_back,
    second_forward,
    previous_cut,
    next_cut,
    go_to_start,
    go_to_end,
    mode_single,
    mode_loop,
    mode_ping_pong,
    next_mode,
    repeat_range,
    stride_1,
    stride_2,
    stride_5,
    stride_10,
    real_time,
    mute,
    // Mark
    set_in,
    set_out,
    go_to_in,
    go_to_out,
    clear_points,
    // View
    full_screen,
    leave_full_screen,
    zoom_fit,
    zoom_original,
    zoom_in,
    zoom_out,
    overlay,
    safe_areas,
    next_numbering,
    drop_frame,
    timeline_zoom_in,
    timeline_zoom_out,
    timeline_zoom_fit,
    preferences,
    log,
    // Help
    keyboard,
    about,
};

/// The viewer's actions: each with its text, its keys, a tool tip and a name by which it is found ("actionSetIn").
///
/// Threading: the GUI thread.
class ViewerActions final : public QObject {
    Q_OBJECT

public:
    struct Entry {
        ViewerCommand command;
        char const* menu;  ///< that it stands in
        char const* name;
        char const* text;     ///< with its mnemonic
        char const* keys;     ///< portable text, alternatives apart by ", "
        char const* toolTip;  ///< one sentence
        bool isCheckable = false;
        bool beginsGroup = false;  ///< a separator stands before it
    };

    explicit ViewerActions(QWidget* window);

    [[nodiscard]] static std::vector<Entry> const& entries();
    [[nodiscard]] QAction& operator[](ViewerCommand command) const;
    /// Fills a menu bar: File, Playback, Mark, View, Help.
    void fill(QMenuBar& bar) const;

private:
    void makeGroup(std::initializer_list<ViewerCommand> commands);

    std::vector<QAction*> m_actions;  // by command; owned by this object
};

}  // namespace qrtplay
