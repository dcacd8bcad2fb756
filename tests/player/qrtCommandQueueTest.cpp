// How work crosses to the player thread: in what order, and how callers wait for it.
#include "qrtCommandQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QThread>
#include <atomic>
#include <functional>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

#include "foundation/qrtAllocationCounter.h"
#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtPlayerImplInspector.h"
#include "harness/qrtTestCmd.h"
#include "harness/qrtThreadChances.h"
#include "harness/qrtVirtualTable.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;

constexpr VideoBufferResolution smallFormat(16, 8, 4, 8, false);

/// Sets a flag when it ends, as a reference that a command holds would.
struct EndFlag {
    explicit EndFlag(std::atomic<bool>& flag) : isGone(flag) {}
    ~EndFlag() { isGone = true; }
    std::atomic<bool>& isGone;
};

class ReferringCmd final : public CmdSynchronous {
public:
    ReferringCmd(Status* status, CmdCompletion* completion, std::atomic<bool>& isReferenceGone)
        : CmdSynchronous(CmdType::set_pref, status, completion), m_reference(isReferenceGone) {}

private:
    Status run(PlayerImpl&) override { return Status(); }
    const EndFlag m_reference;
};

}  // namespace

/// A queue whose commands run on this thread, and an engine that has no thread.
class CommandQueueTest : public ::testing::Test {
protected:
    void runOne() { queue.take()->execute(engine); }
    void runAll() {
        while (queue.size() != 0)
            runOne();
    }
    std::unique_ptr<Cmd> note(int number) {
        return cmd([this, number] { executed.push_back(number); });
    }

    std::vector<int> executed;
    PlayerImpl engine{smallFormat, nullptr};
    CommandQueue queue;
};

TEST_F(CommandQueueTest, commandsComeOutInTheOrderOfPosting) {
    for (int number = 0; number < 5; ++number)
        queue.pushBack(note(number));
    EXPECT_EQ(queue.size(), 5u);
    runAll();
    EXPECT_THAT(executed, ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(CommandQueueTest, aCommandPostedToTheFrontOvertakesAllThatWait) {
    for (int number = 0; number < 3; ++number)
        queue.pushBack(note(number));
    queue.pushFront(note(10));
    queue.pushBack(note(3));
    runAll();
    EXPECT_THAT(executed, ElementsAre(10, 0, 1, 2, 3));
}

TEST_F(CommandQueueTest, ofTwoCommandsPostedToTheFrontTheLastComesOutFirst) {
    queue.pushFront(note(1));
    queue.pushFront(note(2));
    runAll();
    EXPECT_THAT(executed, ElementsAre(2, 1));
}

/// A step of the production loop as the queue knows it: by its type and by being like all others.
class TestStep final : public Cmd {
public:
    explicit TestStep(std::vector<int>& executed) : Cmd(CmdType::produce_next_video_buffer), m_executed(executed) {}
    void execute(PlayerImpl&) override { m_executed.push_back(0); }
    std::unique_ptr<Cmd> another() const override { return std::make_unique<TestStep>(m_executed); }

private:
    std::vector<int>& m_executed;
};

TEST_F(CommandQueueTest, stepsSideBySideTakeOneEntryAndComeOutOneByOneInTheirPlace) {
    queue.pushBack(note(1));
    for (int i = 0; i < 3; ++i)
        queue.pushBack(std::make_unique<TestStep>(executed));
    queue.pushBack(note(2));
    for (int i = 0; i < 2; ++i)
        queue.pushBack(std::make_unique<TestStep>(executed));
    EXPECT_EQ(queue.size(), 7u);
    EXPECT_EQ(queue.numEntries(), 4u);
    runOne();
    runOne();
    queue.pushFront(note(3));
    EXPECT_EQ(queue.size(), 6u);
    runAll();
    EXPECT_THAT(executed, ElementsAre(1, 0, 3, 0, 0, 2, 0, 0));
    EXPECT_EQ(queue.numEntries(), 0u);
}

TEST_F(CommandQueueTest, anUpdateInFrontOfTwoThatDifferIsNotQueued) {
    for (const int frame : {4, 7, 9, 4})
        queue.pushFrontUpdate(note(frame), frame);
    runAll();
    EXPECT_THAT(executed, ElementsAre(7, 4));
}

TEST_F(CommandQueueTest, anUpdateToTheFrameOfTheNextOneIsNotQueued) {
    for (const int frame : {4, 4, 4})
        queue.pushFrontUpdate(note(frame), frame);
    EXPECT_EQ(queue.size(), 1u);
    EXPECT_TRUE(queue.isUpdateOverruled(4));
    EXPECT_FALSE(queue.isUpdateOverruled(5));
    queue.pushFrontUpdate(note(5), 5);
    EXPECT_TRUE(queue.isUpdateOverruled(6));
    runAll();
    EXPECT_THAT(executed, ElementsAre(5, 4));
    EXPECT_FALSE(queue.isUpdateOverruled(4));
}

TEST_F(CommandQueueTest, updatesBehindAnotherCommandOverruleNone) {
    for (const int frame : {4, 7})
        queue.pushFrontUpdate(note(frame), frame);
    queue.pushFront(note(100));
    EXPECT_FALSE(queue.isUpdateOverruled(4));
    queue.pushFrontUpdate(note(9), 9);
    runAll();
    EXPECT_THAT(executed, ElementsAre(9, 100, 7, 4));
}

TEST_F(CommandQueueTest, aNullCommandIsIgnored) {
    queue.pushBack(nullptr);
    queue.pushFront(nullptr);
    EXPECT_EQ(queue.size(), 0u);
    queue.pushBack(note(1));
    queue.pushBack(nullptr);
    EXPECT_EQ(queue.size(), 1u);
}

TEST_F(CommandQueueTest, growsWithoutLimitAndStartsAnewWhenEmpty) {
    constexpr int many = 10000;
    for (int round = 0; round < 2; ++round) {
        executed.clear();
        for (int number = 0; number < many; ++number)
            queue.pushBack(note(number));
        runAll();
        ASSERT_EQ(executed.size(), static_cast<size_t>(many));
        EXPECT_EQ(executed.front(), 0);
        EXPECT_EQ(executed.back(), many - 1);
        EXPECT_EQ(queue.size(), 0u);
    }
}

TEST_F(CommandQueueTest, takingFromAnEmptyQueueWaitsForAPost) {
    for (const auto post : {&CommandQueue::pushBack, &CommandQueue::pushFront}) {
        std::atomic<bool> isTaken{false};
        std::thread taker([&] {
            const std::unique_ptr<Cmd> command = queue.take();
            isTaken = command != nullptr;
        });
        EXPECT_TRUE(staysFalse(isTaken));
        (queue.*post)(note(1));
        taker.join();
        EXPECT_TRUE(isTaken);
    }
}

TEST_F(CommandQueueTest, isUnlockedWhileACommandRunsAndWhileItEnds) {
    queue.pushBack(cmd([this] { queue.pushBack(note(1)); }, [this] { queue.pushBack(note(2)); }));
    runAll();
    EXPECT_THAT(executed, ElementsAre(1, 2));
}

TEST_F(CommandQueueTest, commandsPostedByManyThreadsAreAllExecutedInPostingOrder) {
    constexpr int numThreads = 4;
    constexpr int numEach = 500;
    std::mutex postingOrder;
    int nextNumber = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < numThreads; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < numEach; ++i) {
                const std::lock_guard lock(postingOrder);
                queue.pushBack(note(nextNumber++));
            }
        });
    }
    for (int i = 0; i < numThreads * numEach; ++i)
        runOne();
    for (std::thread& thread : threads)
        thread.join();
    ASSERT_EQ(executed.size(), static_cast<size_t>(numThreads * numEach));
    for (int i = 0; i < numThreads * numEach; ++i)
        ASSERT_EQ(executed[static_cast<size_t>(i)], i);
}

TEST_F(CommandQueueTest, aQueueThatEndsEndsItsCommandsUnexecuted) {
    int numEnded = 0;
    {
        CommandQueue shortLived;
        for (int i = 0; i < 3; ++i) {
            shortLived.pushBack(cmd([] { ADD_FAILURE() << "executed"; }, [&numEnded] { ++numEnded; }));
        }
    }
    EXPECT_EQ(numEnded, 3);
}

// ---- Synchronous commands -------------------------------------------------------------------------------------------

TEST_F(CommandQueueTest, eachCallerGetsItsOwnStatus) {
    constexpr int numCallers = 8;
    std::vector<int> results(numCallers, -1);
    std::vector<std::thread> callers;
    for (int caller = 0; caller < numCallers; ++caller) {
        callers.emplace_back([this, caller, &results] {
            Status status;
            CmdCompletion completion;
            queue.pushBack(std::make_unique<TestSynchronousCmd>(
                &status, &completion, [caller] { return Status(static_cast<Status::Type>(1000 + caller)); }));
            completion.wait();
            results[static_cast<size_t>(caller)] = status.get();
        });
    }
    for (int i = 0; i < numCallers; ++i)
        runOne();
    for (std::thread& caller : callers)
        caller.join();
    for (int caller = 0; caller < numCallers; ++caller)
        EXPECT_EQ(results[static_cast<size_t>(caller)], 1000 + caller);
}

TEST_F(CommandQueueTest, aCallerWakesWhenItsCommandEndsAndNotWhenItHasRun) {
    Status status = Status::general_failure;
    CmdCompletion completion;
    std::atomic<bool> isReferenceGone{false};
    std::atomic<bool> isAwake{false};
    std::atomic<bool> wasReferenceGone{false};
    std::unique_ptr<Cmd> command = std::make_unique<ReferringCmd>(&status, &completion, isReferenceGone);
    std::thread caller([&] {
        completion.wait();
        wasReferenceGone = isReferenceGone.load();
        isAwake = true;
    });
    command->execute(engine);
    EXPECT_EQ(status.get(), Status::ok);
    EXPECT_TRUE(staysFalse(isAwake));
    command.reset();
    caller.join();
    EXPECT_TRUE(wasReferenceGone);
}

TEST_F(CommandQueueTest, discardingWakesTheCallersAndLeavesTheirStatus) {
    constexpr int numCallers = 3;
    std::atomic<int> numRun{0};
    std::vector<Status> results(numCallers);
    std::latch posted(numCallers);
    std::vector<std::thread> callers;
    for (size_t caller = 0; caller < numCallers; ++caller) {
        callers.emplace_back([&, caller] {
            Status status = Status::not_producing;
            CmdCompletion completion;
            queue.pushBack(std::make_unique<TestSynchronousCmd>(&status, &completion, [&numRun] {
                ++numRun;
                return Status();
            }));
            posted.count_down();
            completion.wait();
            results[caller] = status;
        });
    }
    posted.wait();
    queue.discardAll();
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(numRun, 0);
    EXPECT_EQ(queue.size(), 0u);
    for (Status const& status : results)
        EXPECT_EQ(status.get(), Status::not_producing);
}

TEST_F(CommandQueueTest, discardingEndsCommandsWithTheQueueUnlocked) {
    size_t sizeAtTheEnd = 99;
    queue.pushBack(cmd({}, [&] { sizeAtTheEnd = queue.size(); }));
    queue.discardAll();
    EXPECT_EQ(sizeAtTheEnd, 0u);
}

TEST(CmdCompletionTest, countsSoThatASignalBeforeTheWaitIsNotLost) {
    CmdCompletion completion;
    completion.signal();
    completion.signal();
    completion.wait();
    completion.wait();
    std::atomic<bool> isAwake{false};
    std::thread waiter([&] {
        completion.wait();
        isAwake = true;
    });
    EXPECT_TRUE(staysFalse(isAwake));
    completion.signal();
    waiter.join();
    EXPECT_TRUE(isAwake);
}

TEST(CmdTypeTest, theCodesAreThoseThatTracesKnow) {
    EXPECT_EQ(static_cast<int>(CmdType::start_producing), 1);
    EXPECT_EQ(static_cast<int>(CmdType::stop_producing), 2);
    EXPECT_EQ(static_cast<int>(CmdType::set_composition), 4);
    EXPECT_EQ(static_cast<int>(CmdType::update_composition), 5);
    EXPECT_EQ(static_cast<int>(CmdType::set_video_resolution), 6);
    EXPECT_EQ(static_cast<int>(CmdType::set_video_frame_rate), 7);
    EXPECT_EQ(static_cast<int>(CmdType::set_audio_format), 9);
    EXPECT_EQ(static_cast<int>(CmdType::set_ram_outputs), 10);
    EXPECT_EQ(static_cast<int>(CmdType::set_pref), 11);
    EXPECT_EQ(static_cast<int>(CmdType::get_pref), 12);
    EXPECT_EQ(static_cast<int>(CmdType::start_producing_audio), 13);
    EXPECT_EQ(static_cast<int>(CmdType::produce_video_buffer), 14);
    EXPECT_EQ(static_cast<int>(CmdType::produce_next_video_buffer), 15);
    EXPECT_EQ(static_cast<int>(CmdType::update_current_frame_number), 16);
    EXPECT_EQ(static_cast<int>(CmdType::terminate), 17);
}

TEST_F(CommandQueueTest, slot1OfACommandExecutesItAndSlot0EndsIt) {
    bool isExecuted = false;
    bool isEnded = false;
    Cmd* const command = cmd([&] { isExecuted = true; }, [&] { isEnded = true; }).release();
    callSlot<void, Cmd, PlayerImpl*>(1, command, &engine);  // a reference travels as a pointer
    EXPECT_TRUE(isExecuted);
    EXPECT_FALSE(isEnded);
    deleteThroughSlot0(command);
    EXPECT_TRUE(isEnded);
}

TEST_F(CommandQueueTest, needsNoMemoryBeyondTheCommandsThemselves) {
    if (!AllocationCounter::works()) GTEST_SKIP() << "allocations are not counted in sanitizer builds";
    CommandQueue commands;
    std::unique_ptr<Cmd> command = cmd({});
    const auto passThrough = [&](void (CommandQueue::*post)(std::unique_ptr<Cmd>)) {
        constexpr int more = 100;  // than one block of a deque holds
        for (int i = 0; i < more; ++i) {
            (commands.*post)(std::move(command));
            command = commands.take();
        }
    };
    passThrough(&CommandQueue::pushBack);
    passThrough(&CommandQueue::pushFront);
    const AllocationCounter allocations;
    passThrough(&CommandQueue::pushBack);
    passThrough(&CommandQueue::pushFront);
    EXPECT_EQ(allocations.count(), 0u);
    EXPECT_TRUE(command);
}

}  // namespace QRT_0_81
