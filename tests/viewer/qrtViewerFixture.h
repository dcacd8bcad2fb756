#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "viewer/picture/qrtPictureView.h"
#include "viewer/qrtHandClock.h"
#include "viewer/timeline/qrtTimelineView.h"
#include "viewer/window/qrtViewerWindow.h"

namespace qrtplay {

/// A window on media whose frames carry their numbers, with file dialogs that answer at once and settings of its own.
///
/// Frame n of film.mkv (240 frames, 24 a second) is all of red n and green 20; the numbers are read from what the
/// window shows.
class ViewerFixture : public ::testing::Test {
protected:
    ViewerFixture();
    ~ViewerFixture() override;

    /// Opens a window and waits until it shows the first frame.
    void show(std::vector<std::string> const& files, ViewerSettings const& settings = {});
    void showFilm() { show({film()}); }
    /// Opens one without files.
    void showEmpty();
    void closeWindow() { m_window.reset(); }

    [[nodiscard]] static std::string film();
    /// film.mkv with a dissolve into pal.mkv, sound, a marker and names: 96 frames.
    [[nodiscard]] std::string timeline();

    [[nodiscard]] ViewerWindow& window() { return *m_window; }
    [[nodiscard]] Playback& playback() { return m_window->playback(); }
    [[nodiscard]] QAction& action(ViewerCommand command) { return m_window->actions()[command]; }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void hold(Qt::Key key);
    void letGo(Qt::Key key);

    /// The number that is painted in what the picture view shows; -1 when it shows no frame.
    [[nodiscard]] int shownNumber();
    /// Waits until the picture shows frame `number` and nothing newer is wanted; a test failure when it does not.
    void expectShows(int number);
    /// Waits for a condition; a test failure when it does not come true.
    template <typename Condition>
    [[nodiscard]] static bool waitFor(Condition condition);
    [[nodiscard]] QString message();

    QTemporaryDir m_folder;
    std::vector<std::string> m_allowPaths;  // of the next window
    QStringList m_chosenFiles;              // what the dialog for opening answers
    QString m_chosenTarget;                 // what the dialog for writing answers
    QString m_proposedTarget;               // what it was offered
    std::shared_ptr<MediaClock const> m_clock = std::make_shared<WallClock>();
    std::shared_ptr<SoundOutput> m_sound;
    std::unique_ptr<ViewerWindow> m_window;
};

/// Long enough for a loaded machine; a condition ends it early.
constexpr int patienceMs = 60000;

bool waitUntil(std::function<bool()> const& condition);

template <typename Condition>
bool ViewerFixture::waitFor(Condition condition) {
    return waitUntil(condition);
}

}  // namespace qrtplay
