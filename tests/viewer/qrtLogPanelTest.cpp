#include "viewer/window/qrtLogPanel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QClipboard>
#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <algorithm>
#include <atomic>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/qrtKit.h"
#include "foundation/logger/qrtLogMsg.h"

namespace qrtplay {
namespace {

void post(std::string const& text) {
    LogMsg::postDebug(LogMsg("QRT_PLAYER", "file.cpp", 1, text));
}

class LogPanels : public ::testing::Test {
protected:
    void deliver() { QCoreApplication::sendPostedEvents(panel.get()); }
    QPlainTextEdit* view() const { return panel->findChild<QPlainTextEdit*>("logView"); }
    QString hint() const { return panel->findChild<QLabel*>("logHint")->text(); }
    /// What follows time and channel.
    static QString message(QString const& line) { return line.section("  ", 2); }
    QStringList viewed() const {
        QStringList messages;
        const QString text = view()->toPlainText();
        if (text.isEmpty()) return messages;
        for (QString const& line : text.split('\n'))
            messages << message(line);
        return messages;
    }

    std::unique_ptr<LogPanel> panel = std::make_unique<LogPanel>();
};

TEST_F(LogPanels, showsWhatTheEnginePosts) {
    post("one");
    post("two\nof two lines\n");
    deliver();
    ASSERT_EQ(panel->lines().size(), 2);
    EXPECT_THAT(panel->lines()[0].toStdString(), ::testing::MatchesRegex("[0-9:.]+  QRT_PLAYER  one"));
    EXPECT_EQ(viewed(), (QStringList{"one", "two of two lines"}));
}

TEST_F(LogPanels, showsLinesOfTheHostInTheOrderOfTheirComing) {
    post("engine");
    panel->add("host");
    ASSERT_EQ(panel->lines().size(), 2);
    EXPECT_TRUE(panel->lines()[0].endsWith("  QRT_PLAYER  engine"));
    EXPECT_THAT(panel->lines()[1].toStdString(), ::testing::MatchesRegex("[0-9:.]+  host"));
}

TEST_F(LogPanels, keepsTheOrderOfEveryThread) {
    constexpr int threads = 4;
    constexpr int perThread = 500;
    std::latch start(threads);
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t) {
        running.emplace_back([t, &start] {
            start.arrive_and_wait();
            for (int i = 0; i < perThread; ++i)
                post(std::to_string(t) + " " + std::to_string(i));
        });
    }
    for (std::thread& thread : running)
        thread.join();
    deliver();
    std::vector<int> next(threads, 0);
    for (QString const& line : panel->lines()) {
        const QStringList words = message(line).split(' ');
        EXPECT_EQ(words[1].toInt(), next[static_cast<size_t>(words[0].toInt())]++);
    }
    EXPECT_THAT(next, ::testing::Each(perThread));
    QStringList times;
    for (QString const& line : panel->lines())
        times << line.left(12);
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
}

/// Counts what is queued for the panel.
class QueuedCalls final : public QObject {
public:
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::MetaCall ? 1 : 0;
        return false;
    }
    int count = 0;
};

TEST_F(LogPanels, takesManyMessagesWithOneCall) {
    QueuedCalls calls;
    panel->installEventFilter(&calls);
    for (int i = 0; i < 1000; ++i)
        post("message");
    deliver();
    EXPECT_EQ(calls.count, 1);
    EXPECT_EQ(panel->lines().size(), 1000);
    post("later");
    deliver();
    EXPECT_EQ(calls.count, 2);
    EXPECT_EQ(panel->lines().size(), 1001);
}

TEST_F(LogPanels, keepsTheLatestTenThousandLines) {
    constexpr int surplus = 5;
    for (int i = 0; i < LogPanel::mostLines + surplus; ++i)
        post(std::to_string(i));
    deliver();
    ASSERT_EQ(panel->lines().size(), LogPanel::mostLines);
    EXPECT_EQ(message(panel->lines().front()), QString::number(surplus));
    panel->add("x");
    ASSERT_EQ(panel->lines().size(), LogPanel::mostLines);
    EXPECT_EQ(view()->blockCount(), LogPanel::mostLines);
    EXPECT_EQ(viewed().front(), QString::number(surplus + 1));
}

TEST_F(LogPanels, filtersKeptAndComingLines) {
    for (char const* const text : {"Render frame 1", "fetch", "rendered"})
        post(text);
    deliver();
    QTest::keyClicks(panel->findChild<QLineEdit*>("logFilter"), "RENDER");
    EXPECT_EQ(viewed(), (QStringList{"Render frame 1", "rendered"}));
    post("hidden");
    post("prerendering");
    deliver();
    EXPECT_EQ(viewed(), (QStringList{"Render frame 1", "rendered", "prerendering"}));
    EXPECT_EQ(panel->lines().size(), 5);
    panel->setFilter("nothing like this");
    EXPECT_EQ(viewed(), QStringList());
    panel->setFilter("");
    EXPECT_EQ(viewed().size(), 5);
}

TEST_F(LogPanels, showsNoFilteredLineThatIsKeptNoLonger) {
    post("needle 1");
    post("needle 2");
    deliver();
    panel->setFilter("needle");
    for (int i = 0; i < LogPanel::mostLines - 1; ++i)
        post("hay");
    deliver();
    EXPECT_EQ(viewed(), QStringList("needle 2"));
    post("hay");
    deliver();
    EXPECT_EQ(viewed(), QStringList());
    EXPECT_EQ(panel->shownLines(), QStringList());
}

TEST_F(LogPanels, holdsLinesBackDuringAPause) {
    post("before");
    panel->findChild<QToolButton*>("logPause")->click();
    post("during");
    post("during too");
    deliver();
    EXPECT_EQ(viewed(), QStringList("before"));
    EXPECT_EQ(panel->lines().size(), 3);
    EXPECT_EQ(hint(), "Paused. Held back: 2");
    panel->setFilter("e");
    EXPECT_EQ(viewed(), QStringList("before")) << "a filter shows no more than there was";
    panel->findChild<QToolButton*>("logPause")->click();
    EXPECT_EQ(viewed(), (QStringList{"before", "during", "during too"}));
    EXPECT_FALSE(hint().startsWith("Paused"));
}

TEST_F(LogPanels, forgetsAndGoesOn) {
    post("old");
    deliver();
    post("not taken yet");
    panel->findChild<QToolButton*>("logClear")->click();
    deliver();
    EXPECT_EQ(panel->lines(), QStringList());
    EXPECT_EQ(view()->toPlainText(), "");
    post("new");
    deliver();
    EXPECT_EQ(viewed(), QStringList("new"));
}

TEST_F(LogPanels, copiesTheSelectionOrAllThatIsShown) {
    panel->add("one");
    panel->add("two");
    panel->findChild<QToolButton*>("logCopy")->click();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), panel->lines().join('\n'));
    QTextCursor cursor = view()->textCursor();
    cursor.movePosition(QTextCursor::End);
    cursor.select(QTextCursor::WordUnderCursor);
    view()->setTextCursor(cursor);
    panel->copy();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "two");
}

TEST_F(LogPanels, savesWhatIsShown) {
    const QTemporaryDir folder;
    panel->add("one");
    panel->add("two");
    panel->setFilter("two");
    ASSERT_TRUE(panel->saveTo(folder.filePath("log.txt")));
    QFile file(folder.filePath("log.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(file.readAll()), panel->lines()[1] + "\n");
    EXPECT_FALSE(panel->saveTo(folder.filePath("none/log.txt")));
    EXPECT_THAT(hint().toStdString(), ::testing::HasSubstr("none/log.txt cannot be written: "));
}

TEST_F(LogPanels, tellsHowToMakeTheEngineSpeak) {
    EXPECT_THAT(hint().toStdString(), ::testing::HasSubstr("QRT_DEBUG_PLAYER"));
}

TEST_F(LogPanels, givesTheSinkBackWhenItGoes) {
    post("still queued");
    panel.reset();
    static QStringList heard;
    heard.clear();
    const auto before =
        qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const& text) { heard << text; });
    QLoggingCategory::setFilterRules("QRT_PLAYER.debug=true");
    post("after");
    QLoggingCategory::setFilterRules("");
    qInstallMessageHandler(before);
    EXPECT_EQ(heard, QStringList("after"));
}

TEST_F(LogPanels, mayGoWhileThreadsPost) {
    constexpr int threads = 2;
    std::latch start(threads + 1);
    std::atomic<bool> isOver{false};
    std::vector<std::thread> running;
    for (int t = 0; t < threads; ++t) {
        running.emplace_back([&] {
            start.arrive_and_wait();
            while (!isOver)
                post("message");
        });
    }
    start.arrive_and_wait();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !panel->lines().isEmpty(); }));
    QLoggingCategory::setFilterRules("QRT_PLAYER.debug=false");  // what follows is not for the terminal
    panel.reset();
    isOver = true;
    for (std::thread& thread : running)
        thread.join();
    QLoggingCategory::setFilterRules("");
}

}  // namespace
}  // namespace qrtplay
