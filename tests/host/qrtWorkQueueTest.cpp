#include "encode/qrtWorkQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <vector>

namespace qrtplay {
namespace {

TEST(WorkQueue, doesAllJobsBeforeItFinishes) {
    std::atomic<int> done = 0;
    WorkQueue queue(3, 2);
    for (int i = 0; i < 100; ++i)
        queue.push([&done] { ++done; });
    queue.finish();
    EXPECT_EQ(done, 100);
}

TEST(WorkQueue, keepsTheOrderOnOneThread) {
    std::vector<int> order;
    {
        WorkQueue queue(1, 4);
        for (int i = 0; i < 50; ++i)
            queue.push([&order, i] { order.push_back(i); });
    }
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(order.at(static_cast<size_t>(i)), i);
}

TEST(WorkQueue, letsNoMoreJobsWaitThanThereIsRoomFor) {
    std::latch begun(1);
    std::latch goOn(1);
    std::atomic<bool> third = false;
    WorkQueue queue(1, 1);
    queue.push([&] {
        begun.count_down();
        goOn.wait();
    });
    begun.wait();
    queue.push([] {});  // the one that may wait
    std::thread pusher([&] {
        queue.push([] {});
        third = true;
    });
    EXPECT_FALSE(third);
    goOn.count_down();
    pusher.join();
    EXPECT_TRUE(third);
    queue.finish();
}

}  // namespace
}  // namespace qrtplay
