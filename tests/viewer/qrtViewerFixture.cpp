#include "viewer/qrtViewerFixture.h"

#include <QApplication>
#include <QSettings>
#include <QTest>

#include "host/qrtOtioText.h"
#include "viewer/window/qrtMessageBar.h"

namespace qrtplay {

namespace {

const std::string media = QRT_PAINTED_MEDIA;

}  // namespace

bool waitUntil(std::function<bool()> const& condition) {
    return QTest::qWaitFor(condition, patienceMs);
}

ViewerFixture::ViewerFixture() {
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_folder.path());
    QCoreApplication::setOrganizationName("qrt");
    QCoreApplication::setApplicationName("qrtplay-tests");
}

ViewerFixture::~ViewerFixture() = default;

std::string ViewerFixture::film() {
    return media + "/film.mkv";
}

std::string ViewerFixture::timeline() {
    const std::string path = m_folder.filePath("cut.otio").toStdString();
    writeText(path,
              otio::timeline({otio::track("Video", {otio::clip(otio::file(media + "/film.mkv"), {10, 48, 24}),
                                                    otio::dissolve(12, 12, 24),
                                                    otio::clip(otio::file(media + "/pal.mkv"), {25, 50, 25})}),
                              otio::track("Audio", {otio::clip(otio::file(media + "/impulses.wav"), {0, 96, 24})})}));
    return path;
}

void ViewerFixture::showEmpty() {
    ViewerStart start;
    ViewerServices services;
    services.clock = m_clock;
    services.sound = m_sound;
    services.program = QRT_PLAY_PROGRAM;
    services.chooseFiles = [this](QWidget*, QString const&) { return m_chosenFiles; };
    services.chooseTarget = [this](QWidget*, QString const& proposal, QString const&) {
        m_proposedTarget = proposal;
        return m_chosenTarget;
    };
    start.settings = ViewerSettings::load();
    start.input.allowPaths = m_allowPaths;
    m_window = std::make_unique<ViewerWindow>(services, start);
    m_window->resize(1000, 700);
    m_window->show();
    QApplication::setActiveWindow(m_window.get());  // there may be no window manager to do so
    ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
}

void ViewerFixture::show(std::vector<std::string> const& files, ViewerSettings const& settings) {
    settings.save();
    showEmpty();
    PlayInput input;
    input.files = files;
    m_window->open(input);
    ASSERT_TRUE(waitUntil([this] { return m_window->pictureView().frame() || !message().isEmpty(); }));
    ASSERT_EQ(message(), QString());
}

void ViewerFixture::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QWidget* const focused = QApplication::focusWidget();
    QTest::keyClick(focused ? focused : m_window.get(), key, modifiers);
}

void ViewerFixture::hold(Qt::Key key) {
    QTest::keyPress(&m_window->pictureView(), key);
}

void ViewerFixture::letGo(Qt::Key key) {
    QTest::keyRelease(&m_window->pictureView(), key);
}

int ViewerFixture::shownNumber() {
    PictureView& view = m_window->pictureView();
    if (!view.frame()) return -1;
    const QImage image = view.grabFramebuffer();
    return qRed(image.pixel(image.width() / 2, image.height() / 2));
}

void ViewerFixture::expectShows(int number) {
    EXPECT_TRUE(waitUntil([&] { return shownNumber() == number; }))
        << "shows " << shownNumber() << " instead of " << number;
    EXPECT_EQ(playback().frame(), number);
}

QString ViewerFixture::message() {
    return m_window->messageBar().text();
}

}  // namespace qrtplay
