#include "foundation/logger/qrtLogMsg.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QLoggingCategory>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "foundation/logger/qrtMsgBuilder.h"

namespace QRT_0_81 {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct QtMessage {
    QtMsgType type;
    std::string category;
    std::string file;
    int line;
    std::string text;
};

/// Catches what reaches Qt's message logger, and leaves sink, handler and rules as they were by default.
class LogMessages : public ::testing::Test {
protected:
    LogMessages() {
        caught().clear();
        m_previousHandler =
            qInstallMessageHandler([](QtMsgType type, QMessageLogContext const& where, QString const& text) {
                caught().push_back({type, where.category ? where.category : "", where.file ? where.file : "",
                                    where.line, text.toStdString()});
            });
        LogMsg::setSink({});
    }
    ~LogMessages() override {
        LogMsg::setSink({});
        QLoggingCategory::setFilterRules(QString());
        qInstallMessageHandler(m_previousHandler);
    }

    static std::vector<QtMessage>& caught() {
        static std::vector<QtMessage> messages;
        return messages;
    }

    const LogMsg message{"QRT_TEST", "src/some.cpp", 12, "the text"};

private:
    QtMessageHandler m_previousHandler;
};

TEST_F(LogMessages, knowTheirChannelSourceAndText) {
    EXPECT_EQ(message.channel(), "QRT_TEST");
    EXPECT_EQ(message.file(), "src/some.cpp");
    EXPECT_EQ(message.line(), 12);
    EXPECT_EQ(message.text(), "the text");
}

TEST_F(LogMessages, goToQtUnderTheCategoryOfTheirChannelByDefault) {
    LogMsg::postDebug(message);
    ASSERT_EQ(caught().size(), 1u);
    EXPECT_EQ(caught()[0].type, QtDebugMsg);
    EXPECT_EQ(caught()[0].category, "QRT_TEST");
    EXPECT_EQ(caught()[0].file, "src/some.cpp");
    EXPECT_EQ(caught()[0].line, 12);
    EXPECT_EQ(caught()[0].text, "the text");
}

TEST_F(LogMessages, goToQtsDefaultCategoryWithoutAChannel) {
    LogMsg::postDebug(LogMsg("", "file", 1, "no channel"));
    ASSERT_EQ(caught().size(), 1u);
    EXPECT_EQ(caught()[0].category, "default");
}

TEST_F(LogMessages, reachQtUnchangedWhateverTheySay) {
    const std::string odd = "100%s %n Bl\xC3\xBCte \"quoted\"";
    LogMsg::postDebug(LogMsg("QRT_TEST", "file", 1, odd));
    ASSERT_EQ(caught().size(), 1u);
    EXPECT_EQ(caught()[0].text, odd);
}

TEST_F(LogMessages, obeyQtsLoggingRules) {
    QLoggingCategory::setFilterRules("QRT_TEST.debug=false");
    LogMsg::postDebug(message);
    EXPECT_THAT(caught(), IsEmpty());
    LogMsg::postDebug(LogMsg("QRT_OTHER", "file", 1, "still heard"));
    EXPECT_EQ(caught().size(), 1u);
    QLoggingCategory::setFilterRules("QRT_TEST.debug=true");
    LogMsg::postDebug(message);
    EXPECT_EQ(caught().size(), 2u);
}

TEST_F(LogMessages, goToTheSinkInsteadOfQtOnThePostingThread) {
    std::vector<std::string> texts;
    std::thread::id seenThread;
    LogMsg::setSink([&](LogMsg const& received) {
        texts.push_back(received.channel() + ": " + received.text());
        seenThread = std::this_thread::get_id();
    });
    std::thread::id postingThread;
    std::jthread([&] {
        postingThread = std::this_thread::get_id();
        LogMsg::postDebug(message);
    }).join();
    EXPECT_THAT(texts, ElementsAre("QRT_TEST: the text"));
    EXPECT_EQ(seenThread, postingThread);
    EXPECT_THAT(caught(), IsEmpty());
}

TEST_F(LogMessages, areWhatBuildersPost) {
    std::vector<std::string> texts;
    LogMsg::setSink([&](LogMsg const& received) { texts.push_back(received.text()); });
    MsgBuilder<2>(__FILE__, __LINE__, LogMsg::postDebug)("QRT_TEST", "%d", 5);
    MsgBuilder<0>(__FILE__, __LINE__, LogMsg::postDebug)("%d", 6);
    EXPECT_THAT(texts, ElementsAre("5", "6"));
}

TEST_F(LogMessages, goToTheSinkThatWasSetLast) {
    int first = 0;
    int second = 0;
    LogMsg::setSink([&](LogMsg const&) { ++first; });
    LogMsg::setSink([&](LogMsg const&) { ++second; });
    LogMsg::postDebug(message);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
}

TEST_F(LogMessages, goToQtAgainAfterAnEmptySink) {
    int calls = 0;
    LogMsg::setSink([&](LogMsg const&) { ++calls; });
    LogMsg::setSink({});
    LogMsg::postDebug(message);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(caught().size(), 1u);
}

TEST_F(LogMessages, letGoOfAReplacedSink) {
    const auto held = std::make_shared<int>(0);
    LogMsg::setSink([held](LogMsg const&) {});
    EXPECT_GT(held.use_count(), 1);
    LogMsg::setSink({});
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(LogMessages, keepASinkAliveThatReplacesItself) {
    const auto log = std::make_shared<std::vector<std::string>>();
    LogMsg::setSink([log](LogMsg const& received) {
        LogMsg::setSink({});
        log->push_back(received.text());  // what the sink captured is still there
    });
    LogMsg::postDebug(message);
    EXPECT_THAT(*log, ElementsAre("the text"));
    LogMsg::postDebug(message);
    EXPECT_EQ(log->size(), 1u);
    EXPECT_EQ(caught().size(), 1u);
}

TEST_F(LogMessages, mayReachTheSinkFromSeveralThreadsAtOnce) {
    std::latch inside(2);
    LogMsg::setSink([&](LogMsg const&) { inside.arrive_and_wait(); });
    std::jthread other([&] { LogMsg::postDebug(message); });
    LogMsg::postDebug(message);  // returns only if both threads were inside the sink at one time
    other.join();
    EXPECT_TRUE(inside.try_wait());
}

TEST_F(LogMessages, mayBePostedWhileTheSinkIsReplaced) {
    constexpr int numMessages = 500;
    std::atomic<int> heard{0};
    LogMsg::setSink([&](LogMsg const&) { ++heard; });
    std::latch start(2);
    std::jthread poster([&] {
        start.arrive_and_wait();
        for (int i = 0; i < numMessages; ++i)
            LogMsg::postDebug(message);
    });
    start.arrive_and_wait();
    for (int i = 0; i < numMessages; ++i)
        LogMsg::setSink([&](LogMsg const&) { ++heard; });
    poster.join();
    EXPECT_EQ(heard, numMessages);
}

TEST_F(LogMessages, findTheirCategoryOnManyThreads) {
    constexpr int numThreads = 4;
    QLoggingCategory::setFilterRules("QRT_MANY_*.debug=false");
    std::latch start(numThreads);
    {
        std::vector<std::jthread> threads;
        for (int thread = 0; thread < numThreads; ++thread) {
            threads.emplace_back([&] {
                start.arrive_and_wait();
                for (int i = 0; i < 50; ++i)
                    LogMsg::postDebug(LogMsg("QRT_MANY_" + std::to_string(i), "", 0, ""));
            });
        }
    }
    EXPECT_THAT(caught(), IsEmpty());
}

}  // namespace
}  // namespace QRT_0_81
