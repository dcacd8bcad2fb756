// The thread that takes commands from the queue.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QThread>
#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtPlayerImplInspector.h"
#include "harness/qrtTestCmd.h"
#include "harness/qrtThreadChances.h"

namespace QRT_0_81 {

using ::testing::ElementsAre;

/// An engine with its thread running, and no host context.
class PlayerThreadTest : public ::testing::Test {
protected:
    PlayerThreadTest() {
        FakeGraphEngine::resetScript();
        EXPECT_EQ(engine.initialize(nullptr, nullptr).get(), Status::ok);
    }
    ~PlayerThreadTest() override {
        (void)engine.uninitialize();
        FakeGraphEngine::resetScript();
    }

    CommandQueue& queue() { return PlayerImplInspector::queue(engine); }

    /// Keeps the player thread busy until the latch is released.
    void hold(std::latch& isHeld, std::latch& release) {
        queue().pushFront(cmd([&] {
            isHeld.count_down();
            release.wait();
        }));
        isHeld.wait();
    }

    PlayerImpl engine{VideoBufferResolution(16, 8, 4, 8, false), FakeGraphEngine::create};
};

TEST_F(PlayerThreadTest, commandsRunAndEndOnThePlayerThread) {
    QThread* runsOn = nullptr;
    QThread* endsOn = nullptr;
    std::latch ended(1);
    queue().pushBack(cmd([&] { runsOn = QThread::currentThread(); },
                         [&] {
                             endsOn = QThread::currentThread();
                             ended.count_down();
                         }));
    ended.wait();
    EXPECT_EQ(runsOn, &engine);
    EXPECT_EQ(endsOn, &engine);
}

TEST_F(PlayerThreadTest, tenCommandsBeforeTheTerminatingOneRunFirst) {
    std::latch isHeld(1);
    std::latch release(1);
    hold(isHeld, release);
    std::vector<int> executed;
    for (int number = 0; number < 10; ++number) {
        queue().pushBack(cmd([&executed, number] { executed.push_back(number); }));
    }
    release.count_down();
    EXPECT_EQ(engine.uninitialize().get(), Status::ok);
    EXPECT_THAT(executed, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
}

TEST_F(PlayerThreadTest, twoCallersAreServedInPostingOrderEachWithItsOwnStatus) {
    std::latch isHeld(1);
    std::latch release(1);
    hold(isHeld, release);
    std::vector<int> executed;
    std::vector<int> results(2, -1);
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 2; ++caller) {
        callers.emplace_back([this, caller, &executed, &results] {
            results[static_cast<size_t>(caller)] =
                PlayerImplInspector::execute<TestSynchronousCmd>(engine, [caller, &executed] {
                    executed.push_back(caller);
                    return Status(static_cast<Status::Type>(700 + caller));
                }).get();
        });
        while (queue().size() != static_cast<size_t>(caller) + 1)
            std::this_thread::yield();
    }
    release.count_down();
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_THAT(executed, ElementsAre(0, 1));
    EXPECT_THAT(results, ElementsAre(700, 701));
}

TEST_F(PlayerThreadTest, aCallFromThePlayerThreadItselfFailsInsteadOfWaitingForItself) {
    Status inner;
    const Status outer = PlayerImplInspector::execute<TestSynchronousCmd>(engine, [&] {
        inner = engine.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 3);
        return Status();
    });
    EXPECT_EQ(outer.get(), Status::ok);
    EXPECT_EQ(inner.get(), Status::general_failure);
}

TEST_F(PlayerThreadTest, aCallBehindTheTerminatingCommandIsWokenWithNotInitialized) {
    std::latch isHeld(1);
    std::latch release(1);
    hold(isHeld, release);
    Status status;
    std::thread caller([&] {
        while (queue().size() != 1)
            std::this_thread::yield();  // the terminating command
        status = PlayerImplInspector::execute<TestSynchronousCmd>(engine, [] {
            ADD_FAILURE() << "executed behind the terminating command";
            return Status();
        });
    });
    std::thread releasing([&] {
        while (queue().size() != 2)
            std::this_thread::yield();
        release.count_down();
    });
    EXPECT_EQ(engine.uninitialize().get(), Status::ok);
    caller.join();
    releasing.join();
    EXPECT_EQ(status.get(), Status::not_initialized);
}

TEST_F(PlayerThreadTest, atItsEndThePixelBufferAndTheGraphEngineAreGone) {
    ASSERT_NE(engine.getGraphEngine(), nullptr);
    ASSERT_EQ(engine.setRamOutputs(true).get(), Status::ok);
    ASSERT_EQ(engine.setComposition(FakeComposition::create(0, 10), List<SharedPtr<ExternalSegment>>()).get(),
              Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(engine.getVideoBuffer(0, buffer).get(), Status::ok);
    ASSERT_NE(PlayerImplInspector::pixelBuffer(engine), nullptr);
    ASSERT_EQ(engine.uninitialize().get(), Status::ok);
    EXPECT_EQ(PlayerImplInspector::pixelBuffer(engine), nullptr);
    EXPECT_EQ(engine.getGraphEngine(), nullptr);
    EXPECT_EQ(FakeGraphEngine::script().numDestroyed, 1);
}

}  // namespace QRT_0_81
