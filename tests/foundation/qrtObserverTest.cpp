#include "foundation/core/qrtObserver.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "foundation/core/qrtSubject.h"
#include "foundation/qrtTestObserver.h"

namespace QRT_0_81 {
namespace {

TEST(Observer, stopsObservingEverySubject) {
    Subject first;
    Subject second;
    int calls = 0;
    TestObserver observer(calls);
    first.addObserver(&observer);
    second.addObserver(&observer);
    observer.stopObserving();
    first.notify(NotificationHint());
    second.notify(NotificationHint());
    EXPECT_EQ(calls, 0);
}

TEST(Observer, mayStopTwiceAndStartAgain) {
    Subject subject;
    int calls = 0;
    TestObserver observer(calls);
    observer.stopObserving();
    subject.addObserver(&observer);
    observer.stopObserving();
    observer.stopObserving();
    subject.addObserver(&observer);
    subject.notify(NotificationHint());
    EXPECT_EQ(calls, 1);
}

TEST(Observer, mayStopInsideItsOwnUpdate) {
    Subject subject;
    int calls = 0;
    std::unique_ptr<TestObserver> observer;
    observer = std::make_unique<TestObserver>([&](Subject*, NotificationHint const&) {
        ++calls;
        observer->stopObserving();
    });
    subject.addObserver(observer.get());
    subject.notify(NotificationHint());
    subject.notify(NotificationHint());
    EXPECT_EQ(calls, 1);
}

TEST(Observer, unregistersWhenItDiesWithoutHavingStopped) {
    struct Plain final : Observer {
        explicit Plain(int& counter) : calls(counter) {}
        void update(Subject*, NotificationHint const&) override { ++calls; }
        int& calls;
    };
    int calls = 0;
    Subject subject;
    std::unique_ptr<Observer> observer = std::make_unique<Plain>(calls);
    subject.addObserver(observer.get());
    subject.notify(NotificationHint());
    observer.reset();
    subject.notify(NotificationHint());
    EXPECT_EQ(calls, 1);
}

TEST(Observer, cannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<TestObserver>);
    EXPECT_FALSE(std::is_copy_assignable_v<TestObserver>);
}

}  // namespace
}  // namespace QRT_0_81
