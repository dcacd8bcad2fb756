// What is told of spans, counters and threads, without an engine.
#include "qrtTrace.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFileInfo>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <latch>
#include <thread>
#include <utility>

#include "foundation/core/qrtPlatform.h"
#include "foundation/qrtAllocationCounter.h"
#include "harness/qrtFileSizeLimit.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtScopedEnvironment.h"
#include "harness/qrtTraceFixture.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr char wish[] = "QRT_TRACE_PLAYER";

}  // namespace

using Traces = TraceFixture;

TEST_F(Traces, holdSpansInEachOther) {
    start();
    {
        TraceSpan outer("outer", 7);
        outer.note("frame", int64{-3});
        outer.note("command", "CmdSetPref");
        const TraceSpan inner("inner", 0);
    }
    const TraceDocument trace = stopAndRead();
    ASSERT_THAT(trace.spans("outer"), SizeIs(1));
    ASSERT_THAT(trace.spans("inner"), SizeIs(1));
    const auto outer = trace.spans("outer").front();
    EXPECT_TRUE(outer.contains(trace.spans("inner").front()));
    EXPECT_EQ(outer.number("player"), 7);
    EXPECT_EQ(outer.number("frame"), -3);
    EXPECT_EQ(outer.texts.at("command"), "CmdSetPref");
    EXPECT_THAT(trace.spans("inner").front().numbers, IsEmpty());
}

TEST_F(Traces, holdCountersByPlayer) {
    start();
    Trace::count("frames of player", 1, {{"free", int64{2}}, {"lent", int64{3}}});
    Trace::count("frames of player", 2, {{"free", int64{4}}});
    const TraceDocument trace = stopAndRead();
    ASSERT_THAT(trace.counts("frames of player 1"), SizeIs(1));
    EXPECT_EQ(trace.counts("frames of player 1").front().numbers,
              (std::map<std::string, int64_t>{{"free", 2}, {"lent", 3}}));
    EXPECT_THAT(trace.counts("frames of player 2"), SizeIs(1));
}

TEST_F(Traces, nameEveryThreadOnce) {
    start();
    const auto work = [] { const TraceSpan span("work", 0); };
    std::thread([&] {
        (void)Platform::setThreadName("by the system");
        work();
        work();
    }).join();
    std::thread([&] {
        Trace::nameThread({"by us", 4});
        work();
    }).join();
    const TraceDocument trace = stopAndRead();
    EXPECT_THAT(trace.threads("by us 4"), SizeIs(1));
#if defined(__linux__)
    EXPECT_THAT(trace.threads("by the system"), SizeIs(1));
#endif
    EXPECT_THAT(trace.spans("work"), SizeIs(3));
}

TEST_F(Traces, nameThreadsAnewInTheNextFile) {
    for (int i = 0; i < 2; ++i) {
        start();
        { const TraceSpan span("work", 0); }
        const TraceDocument trace = stopAndRead();
        const auto isName = [](auto const& event) { return event.name == "thread_name"; };
        EXPECT_EQ(std::count_if(trace.events().begin(), trace.events().end(), isName), 1);
    }
}

TEST_F(Traces, leaveOutWhatBeganBeforeThemOrEndsAfterThem) {
    {
        const TraceSpan early("early", 0);
        start();
    }
    TraceDocument trace("[]");
    {
        const TraceSpan late("late", 0);
        trace = stopAndRead();
    }
    EXPECT_THAT(trace.spans("early"), IsEmpty());
    EXPECT_THAT(trace.spans("late"), IsEmpty());
    EXPECT_EQ(TraceDocument(TraceDocument::textOf(path)).events().size(), trace.events().size());
}

TEST_F(Traces, keepFourNotesOfASpan) {
    start();
    {
        TraceSpan span("work", 0);
        for (char const* const key : {"a", "b", "c", "d", "e"})
            span.note(key, int64{1});
    }
    EXPECT_THAT(stopAndRead().spans("work").front().numbers, SizeIs(4));
}

// ---- On and off

TEST_F(Traces, areOffUnlessTheEnvironmentNamesAFile) {
    const LogCapture log;
    unsetenv(wish);
    Trace::startIfWanted();
    EXPECT_FALSE(Trace::isOn());
    const ScopedEnvironment environment(wish, "");
    Trace::startIfWanted();
    EXPECT_FALSE(Trace::isOn());
    { const TraceSpan span("work", 0); }
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_FALSE(QFileInfo::exists(QString::fromStdString(path)));
}

TEST_F(Traces, areOnWhenTheEnvironmentNamesAFile) {
    const ScopedEnvironment environment(wish, path);
    Trace::startIfWanted();
    EXPECT_TRUE(Trace::isOn());
    { const TraceSpan span("work", 0); }
    EXPECT_THAT(stopAndRead().spans("work"), SizeIs(1));
}

TEST_F(Traces, thatCannotBeWrittenCostAMessageThatNamesTheFile) {
    const LogCapture log;
    const std::string nowhere = pathOf("none/trace.json");
    const ScopedEnvironment environment(wish, nowhere);
    Trace::startIfWanted();
    EXPECT_FALSE(Trace::isOn());
    EXPECT_THAT(log.lines(), ElementsAre("QRT_TRACE_PLAYER: the trace '" + nowhere +
                                         "' cannot be written: No such file or directory"));
}

TEST_F(Traces, whoseDiskIsFullEndWithAMessageAndCanBeRead) {
    const LogCapture log;
    const FileSizeLimit limit(100'000);
    start();
    for (int i = 0; Trace::isOn(); ++i) {
        ASSERT_LT(i, 100'000);
        const TraceSpan span("work", 0);
    }
    EXPECT_THAT(log.lines(), ElementsAre("QRT_TRACE_PLAYER: the trace ends here: File too large"));
    Trace::stop();
    const TraceDocument trace(TraceDocument::textOf(path) + "]");
    EXPECT_GT(trace.spans("work").size(), 100u);
}

// ---- What they cost and survive

TEST_F(Traces, needNoMemory) {
    if (!AllocationCounter::works()) GTEST_SKIP() << "not with the allocator of a sanitizer";
    start();
    const AllocationCounter allocations;
    for (int i = 0; i < 1000; ++i) {
        TraceSpan span("work", 1);
        span.note("frame", int64{i});
        Trace::count("frames of player", 1, {{"frames", int64{i}}});
    }
    Trace::flush();
    EXPECT_EQ(allocations.count(), 0u);
}

TEST_F(Traces, holdWhatAllThreadsDo) {
    constexpr int numThreads = 8;
    constexpr int numRounds = 200;
    start();
    std::latch together(numThreads);
    std::vector<std::thread> threads;
    for (int player = 1; player <= numThreads; ++player) {
        threads.emplace_back([&together, player] {
            together.arrive_and_wait();
            for (int i = 0; i < numRounds; ++i) {
                TraceSpan span("work", player);
                span.note("round", int64{i});
                const TraceSpan inner("part of it", player);
                Trace::count("rounds of player", player, {{"rounds", int64{i}}});
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const TraceDocument trace = stopAndRead();
    EXPECT_THAT(trace.spans("work"), SizeIs(numThreads * numRounds));
    EXPECT_THAT(trace.spans("part of it"), SizeIs(numThreads * numRounds));
    for (int player = 1; player <= numThreads; ++player)
        EXPECT_THAT(trace.counts("rounds of player " + std::to_string(player)), SizeIs(numRounds));
}

TEST_F(Traces, beginAndEndWhileThreadsAreAtWork) {
    constexpr int numSpansOfRound = 400;
    std::atomic<int> numSpansToDo{0};
    std::atomic<bool> isDone{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            while (!isDone) {
                if (numSpansToDo <= 0 || numSpansToDo.fetch_sub(1) <= 0) {
                    std::this_thread::yield();
                    continue;
                }
                const TraceSpan span("work", 0);
                Trace::count("work of player", 1, {{"rounds", int64{1}}});
            }
        });
    }
    for (int round = 0; round < 20; ++round) {
        start();
        numSpansToDo = numSpansOfRound;
        while (numSpansToDo > numSpansOfRound / 2)
            std::this_thread::yield();
        const TraceDocument trace = stopAndRead();
        EXPECT_FALSE(trace.counts("work of player 1").empty());
        // Those that were left of the round before may be among them.
        EXPECT_LE(trace.spans("work").size(), size_t{2} * numSpansOfRound);
    }
    isDone = true;
    for (std::thread& thread : threads)
        thread.join();
}

/// What a child process of this one answers that does something and exits.
template <class Work>
int answerOfChild(Work const& work) {
    const pid_t child = fork();
    if (child == 0) std::_Exit(work() ? 0 : 1);
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

TEST_F(Traces, areLeftToTheirProcessByAChildThatIsForked) {
    start();
    { const TraceSpan span("before", 0); }
    EXPECT_EQ(answerOfChild([] {
                  { const TraceSpan span("in the child", 0); }
                  const bool isOn = Trace::isOn();
                  Trace::stop();  // as when it exits
                  return !isOn;
              }),
              0);
    { const TraceSpan span("after", 0); }
    const TraceDocument trace = stopAndRead();
    EXPECT_THAT(trace.spans("before"), SizeIs(1));
    EXPECT_THAT(trace.spans("in the child"), IsEmpty());
    EXPECT_THAT(trace.spans("after"), SizeIs(1));
}

TEST_F(Traces, holdNoForkedChildUpWhileThreadsAreAtWork) {
    start();
    std::atomic<bool> isDone{false};
    std::thread thread([&isDone] {
        while (!isDone) {
            const TraceSpan span("work", 0);
            Trace::flush();
        }
    });
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(answerOfChild([] { return Trace::stop(), true; }), 0);
    isDone = true;
    thread.join();
    EXPECT_FALSE(stopAndRead().spans("work").empty());
}

#if defined(__GLIBC__)
TEST_F(Traces, canBeReadWhateverTheProcessIsCalled) {
    std::string longName(600, 'x');
    char* const name = std::exchange(program_invocation_short_name, longName.data());
    start();
    program_invocation_short_name = name;
    { const TraceSpan span("work", 0); }
    EXPECT_THAT(stopAndRead().spans("work"), SizeIs(1));
}
#endif

TEST_F(Traces, canBeReadWhenTheProcessDies) {
    GTEST_FLAG_SET(death_test_style, "fast");  // it is this process's file
    EXPECT_EXIT(
        {
            if (!Trace::start(path.c_str())) std::_Exit(2);
            { const TraceSpan span("work", 0); }
            Trace::flush();
            { const TraceSpan span("lost", 0); }
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    const TraceDocument trace(TraceDocument::textOf(path) + "]");
    EXPECT_THAT(trace.spans("work"), SizeIs(1));
}

}  // namespace QRT_0_81
