// Opening, reloading, keeping and exporting, and what the window says when something cannot be done.
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QTest>

#include "base/qrtProgramVersion.h"
#include "viewer/export/qrtExportDialog.h"
#include "viewer/qrtViewerFixture.h"
#include "viewer/window/qrtMessageBar.h"

namespace qrtplay {
namespace {

QString qt(std::string const& text) {
    return QString::fromStdString(text);
}

class ViewerFiles : public ViewerFixture {
protected:
    void drop(QList<QUrl> const& urls) {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent event(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window(), &event);
    }
};

TEST_F(ViewerFiles, anEmptyWindowSaysHowToBegin) {
    showEmpty();
    EXPECT_THAT(window().pictureView().message().toStdString(), ::testing::HasSubstr("Ctrl+O"));
    EXPECT_FALSE(action(ViewerCommand::export_range).isEnabled());
    EXPECT_FALSE(action(ViewerCommand::reload).isEnabled());
}

TEST_F(ViewerFiles, theDialogOpensOneFileOrSeveralAsOneSequence) {
    showEmpty();
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_FALSE(window().isLoading()) << "the dialog was cancelled";
    m_chosenFiles = QStringList{qt(film()), qt(QRT_PAINTED_MEDIA "/pal.mkv")};
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_TRUE(waitFor([&] { return playback().player() != nullptr; }));
    expectShows(0);
    EXPECT_EQ(playback().whole().last, 479) << "250 frames of 25 a second are 240 of 24";
    EXPECT_THAT(window().windowTitle().toStdString(),
                ::testing::StartsWith("film.mkv and 1 more - qrtplay " + std::string(versionNumber)));
}

TEST_F(ViewerFiles, filesDroppedOnTheWindowAreOpened) {
    showEmpty();
    drop({QUrl::fromLocalFile(qt(film()))});
    EXPECT_TRUE(waitFor([&] { return playback().player() != nullptr; }));
    expectShows(0);
}

TEST_F(ViewerFiles, whatIsDroppedAndIsNoFileIsRefusedInWords) {
    showEmpty();
    drop({QUrl("https://example.org/clip.mp4")});
    EXPECT_THAT(message().toStdString(), ::testing::HasSubstr("no file of this machine"));
}

TEST_F(ViewerFiles, aFileThatCannotBeOpenedIsNamedAndWhatIsOpenStays) {
    showFilm();
    playback().seek(30);
    expectShows(30);
    PlayInput missing;
    missing.files = {"/nowhere/to/be/found.mov"};
    window().open(missing);
    EXPECT_TRUE(waitFor([&] { return !message().isEmpty(); }));
    EXPECT_THAT(message().toStdString(), ::testing::HasSubstr("/nowhere/to/be/found.mov"));
    expectShows(30);
    press(Qt::Key_Right);
    expectShows(31);
}

TEST_F(ViewerFiles, theFirstFileThatCannotBeOpenedIsNamedWhereThePictureWouldBe) {
    showEmpty();
    QFile text(m_folder.filePath("no-film.mov"));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("this is no film");
    text.close();
    PlayInput input;
    input.files = {text.fileName().toStdString()};
    window().open(input);
    EXPECT_TRUE(waitFor([&] { return !message().isEmpty(); }));
    EXPECT_THAT(message().toStdString(), ::testing::HasSubstr("no-film.mov"));
    EXPECT_THAT(window().pictureView().message().toStdString(), ::testing::HasSubstr("no-film.mov"));
    m_chosenFiles = QStringList(qt(film()));
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_TRUE(waitFor([&] { return playback().player() != nullptr; }));
    expectShows(0);
    EXPECT_EQ(message(), QString()) << "is of the past";
}

TEST_F(ViewerFiles, missingMediaOfATimelineIsNamedAndTheRestPlays) {
    const QString path = m_folder.filePath("missing.otio");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"({"OTIO_SCHEMA":"Timeline.1","name":"t","tracks":{"OTIO_SCHEMA":"Stack.1","children":[
        {"OTIO_SCHEMA":"Track.1","kind":"Video","children":[{"OTIO_SCHEMA":"Clip.1","name":"gone",
        "source_range":{"OTIO_SCHEMA":"TimeRange.1","start_time":{"OTIO_SCHEMA":"RationalTime.1","value":0,"rate":24},
        "duration":{"OTIO_SCHEMA":"RationalTime.1","value":24,"rate":24}},
        "media_reference":{"OTIO_SCHEMA":"ExternalReference.1","target_url":"gone.mov"}}]}]}})");
    file.close();
    showEmpty();
    PlayInput input;
    input.files = {path.toStdString()};
    window().open(input);
    EXPECT_TRUE(waitFor([&] { return !message().isEmpty() && window().pictureView().frame(); }));
    EXPECT_THAT(message().toStdString(), ::testing::HasSubstr("gone.mov"));
    press(Qt::Key_Right);
    EXPECT_TRUE(waitFor([&] { return playback().frame() == 1; }));
}

TEST_F(ViewerFiles, whatIsOpenedLaterKeepsToTheFoldersThatWereAllowed) {
    m_allowPaths = {m_folder.path().toStdString()};
    showEmpty();
    QStringList messages;
    QObject receiver;
    QObject::connect(&window().messageBar(), &MessageBar::added, &receiver,
                     [&](QString const& text) { messages << text; });
    m_chosenFiles = QStringList(qt(timeline()));
    press(Qt::Key_O, Qt::ControlModifier);
    EXPECT_TRUE(waitFor([&] { return !messages.filter("--allow-path").isEmpty(); }));
}

TEST_F(ViewerFiles, reloadKeepsThePositionAndThePoints) {
    showFilm();
    playback().seek(77);
    playback().setInPoint(50);
    playback().setOutPoint(90);
    expectShows(77);
    press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(waitFor([&] { return !window().isLoading(); }));
    expectShows(77);
    EXPECT_EQ(playback().range(), (FrameSpan{50, 90}));
}

TEST_F(ViewerFiles, reloadSeesAFileThatHasChanged) {
    const QString path = m_folder.filePath("changing.mkv");
    ASSERT_TRUE(QFile::copy(qt(film()), path));
    show({path.toStdString()});
    EXPECT_EQ(playback().whole().last, 239);
    ASSERT_TRUE(QFile::remove(path) && QFile::copy(QRT_PAINTED_MEDIA "/pal.mkv", path));
    press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_TRUE(waitFor([&] { return playback().whole().last == 249; }));
}

TEST_F(ViewerFiles, closingKeepsAnEmptyWindow) {
    showFilm();
    press(Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(playback().player(), nullptr);
    EXPECT_EQ(shownNumber(), -1);
    EXPECT_THAT(window().windowTitle().toStdString(), ::testing::StartsWith("qrtplay " + std::string(versionNumber)));
}

TEST_F(ViewerFiles, recentFilesOpenAgainAndOutliveTheWindow) {
    showFilm();
    window().close();
    closeWindow();
    showEmpty();
    auto* const menu = window().findChild<QMenu*>("recentFiles");
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 1);
    EXPECT_THAT(menu->actions().first()->text().toStdString(), ::testing::HasSubstr("film.mkv"));
    menu->actions().first()->trigger();
    EXPECT_TRUE(waitFor([&] { return playback().player() != nullptr; }));
    expectShows(0);
}

TEST_F(ViewerFiles, whatIsSetOutlivesTheWindow) {
    showFilm();
    press(Qt::Key_M);
    press(Qt::Key_G);
    press(Qt::Key_H);
    press(Qt::Key_R);
    window().close();
    closeWindow();
    showEmpty();
    EXPECT_EQ(playback().mode(), PlayParams::loop);
    EXPECT_TRUE(window().pictureView().safeAreas());
    EXPECT_TRUE(action(ViewerCommand::overlay).isChecked());
    EXPECT_EQ(playback().policy(), PacePolicy::every_frame);
}

TEST_F(ViewerFiles, aSnapshotHoldsThePixelsOfTheFrame) {
    showFilm();
    playback().seek(33);
    expectShows(33);
    m_chosenTarget = m_folder.filePath("frame.png");
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_THAT(m_proposedTarget.toStdString(), ::testing::HasSubstr("film.0033.png"));
    const QImage image(m_chosenTarget);
    ASSERT_EQ(image.size(), QSize(32, 18));
    EXPECT_EQ(QColor(image.pixel(5, 5)), QColor(33, 20, 0));
    press(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QColor(QApplication::clipboard()->image().pixel(5, 5)), QColor(33, 20, 0));
}

TEST_F(ViewerFiles, aSnapshotThatCannotBeWrittenIsNamed) {
    showFilm();
    m_chosenTarget = m_folder.filePath("nowhere/frame.png");
    press(Qt::Key_S, Qt::ControlModifier);
    EXPECT_THAT(message().toStdString(), ::testing::HasSubstr("nowhere/frame.png"));
}

TEST_F(ViewerFiles, exportWritesTheRange) {
    showFilm();
    playback().setInPoint(10);
    playback().setOutPoint(14);
    press(Qt::Key_E, Qt::ControlModifier);
    ExportDialog* const dialog = window().exportDialog();
    ASSERT_NE(dialog, nullptr);
    ASSERT_TRUE(QDir(m_folder.path()).mkdir("out"));
    dialog->setOutput(m_folder.filePath("out/f.####.png"));
    dialog->start();
    EXPECT_TRUE(waitFor([&] { return !dialog->isRunning(); }));
    EXPECT_EQ(QDir(m_folder.filePath("out")).entryList(QDir::Files),
              (QStringList{"f.0010.png", "f.0011.png", "f.0012.png", "f.0013.png", "f.0014.png"}));
    EXPECT_EQ(QColor(QImage(m_folder.filePath("out/f.0012.png")).pixel(3, 3)), QColor(12, 20, 0));
    EXPECT_FALSE(message().isEmpty()) << "the window says that it is done";
}

TEST_F(ViewerFiles, anExportCanBeCancelledWhileTheWindowPlaysOn) {
    showFilm();
    press(Qt::Key_M);
    press(Qt::Key_Space);
    press(Qt::Key_E, Qt::ControlModifier);
    ExportDialog* const dialog = window().exportDialog();
    ASSERT_NE(dialog, nullptr);
    dialog->setOutput(m_folder.filePath("f.####.png"));
    dialog->start();
    EXPECT_TRUE(waitFor([&] { return QFile::exists(m_folder.filePath("f.0000.png")) || !dialog->isRunning(); }));
    dialog->cancel();
    EXPECT_TRUE(waitFor([&] { return !dialog->isRunning(); }));
    EXPECT_TRUE(playback().isPlaying());
    for (QString const& file : QDir(m_folder.path()).entryList({"f.*"}, QDir::Files))
        EXPECT_FALSE(QImage(m_folder.filePath(file)).isNull()) << file.toStdString() << " is whole";
}

TEST_F(ViewerFiles, aFrameThatCannotBeHadIsNamedAndPlayingGoesOn) {
    const QString folder = m_folder.filePath("images");
    ASSERT_TRUE(QDir().mkpath(folder));
    for (int number = 1; number <= 3; ++number) {
        QImage image(32, 18, QImage::Format_RGB32);
        image.fill(QColor(number, 20, 0));
        ASSERT_TRUE(image.save(QString("%1/i.%2.png").arg(folder).arg(number, 4, 10, QChar('0'))));
    }
    QFile broken(folder + "/i.0002.png");
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("no picture");
    broken.close();
    show({(folder + "/i.####.png").toStdString()});
    press(Qt::Key_Right);
    EXPECT_TRUE(waitFor([&] { return !message().isEmpty(); }));
    EXPECT_THAT(message().toStdString(), ::testing::HasSubstr("i.0002.png"));
    press(Qt::Key_Right);
    EXPECT_TRUE(waitFor([&] { return shownNumber() == 3; }));
}

}  // namespace
}  // namespace qrtplay
