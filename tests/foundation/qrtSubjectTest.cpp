#include "foundation/core/qrtSubject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "foundation/qrtAllocationCounter.h"
#include "foundation/qrtTestObserver.h"

namespace QRT_0_81 {
namespace {

using ::testing::ElementsAre;

/// Observers that write their names into one log when they are called.
class SubjectNotification : public ::testing::Test {
protected:
    [[nodiscard]] TestObserver::Action writing(std::string name) {
        return [this, name = std::move(name)](Subject*, NotificationHint const&) { log.push_back(name); };
    }

    std::vector<std::string> log;
    const NotificationHint hint{};
};

TEST_F(SubjectNotification, carriesTheSubjectAndTheHintToTheObserverOnTheNotifyingThread) {
    Subject subject;
    const InvalidationHint sent(3, 9);
    Subject* seenSubject = nullptr;
    NotificationHint const* seenHint = nullptr;
    std::thread::id seenThread;
    TestObserver observer([&](Subject* from, NotificationHint const& received) {
        seenSubject = from;
        seenHint = &received;
        seenThread = std::this_thread::get_id();
    });
    subject.addObserver(&observer);
    std::thread::id notifyingThread;
    std::jthread([&] {
        notifyingThread = std::this_thread::get_id();
        subject.notify(sent);
        EXPECT_EQ(seenHint, &sent) << "notification must be synchronous";
    }).join();
    EXPECT_EQ(seenSubject, &subject);
    EXPECT_EQ(seenThread, notifyingThread);
}

TEST_F(SubjectNotification, withoutObserversDoesNothing) {
    Subject subject;
    subject.notify(hint);
    EXPECT_TRUE(log.empty());
}

TEST_F(SubjectNotification, callsObserversInTheOrderOfRegistration) {
    Subject subject;
    TestObserver a(writing("a"));
    TestObserver b(writing("b"));
    TestObserver c(writing("c"));
    subject.addObserver(&b);
    subject.addObserver(&a);
    subject.addObserver(&c);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("b", "a", "c"));
}

TEST_F(SubjectNotification, reachesAnObserverThatWasAddedTwiceOnce) {
    Subject subject;
    TestObserver observer(writing("twice"));
    subject.addObserver(&observer);
    subject.addObserver(&observer);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("twice"));
    subject.removeObserver(&observer);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("twice")) << "one removal is enough";
}

TEST_F(SubjectNotification, keepsThePlaceOfAnObserverThatIsAddedAgain) {
    Subject subject;
    TestObserver a(writing("a"));
    TestObserver b(writing("b"));
    subject.addObserver(&a);
    subject.addObserver(&b);
    subject.addObserver(&a);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("a", "b"));
}

TEST_F(SubjectNotification, isNotChangedByNullObservers) {
    Subject subject;
    TestObserver observer(writing("one"));
    subject.addObserver(&observer);
    subject.addObserver(nullptr);
    subject.removeObserver(nullptr);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("one"));
}

TEST_F(SubjectNotification, isNotChangedByRemovingAnUnknownObserver) {
    Subject subject;
    TestObserver known(writing("known"));
    TestObserver unknown(writing("unknown"));
    subject.addObserver(&known);
    subject.removeObserver(&unknown);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("known"));
}

TEST_F(SubjectNotification, leavesOutARemovedObserverUntilItIsAddedAgain) {
    Subject subject;
    TestObserver a(writing("a"));
    TestObserver b(writing("b"));
    subject.addObserver(&a);
    subject.addObserver(&b);
    subject.removeObserver(&a);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("b"));
    subject.addObserver(&a);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("b", "b", "a"));
}

TEST_F(SubjectNotification, isIndependentOfOtherSubjects) {
    Subject first;
    Subject second;
    TestObserver observer(
        [&](Subject* from, NotificationHint const&) { log.emplace_back(from == &first ? "first" : "second"); });
    first.addObserver(&observer);
    second.addObserver(&observer);
    second.notify(hint);
    first.notify(hint);
    first.removeObserver(&observer);
    first.notify(hint);
    second.notify(hint);
    EXPECT_THAT(log, ElementsAre("second", "first", "second"));
}

TEST_F(SubjectNotification, reachesAnObserverAddedDuringItOnlyTheNextTime) {
    Subject subject;
    TestObserver late(writing("late"));
    TestObserver early([&](Subject* from, NotificationHint const&) {
        log.emplace_back("early");
        from->addObserver(&late);
    });
    subject.addObserver(&early);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("early"));
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("early", "early", "late"));
}

TEST_F(SubjectNotification, leavesOutAnObserverRemovedBeforeItsTurn) {
    Subject subject;
    TestObserver second(writing("second"));
    TestObserver first([&](Subject* from, NotificationHint const&) { from->removeObserver(&second); });
    TestObserver third(writing("third"));
    subject.addObserver(&first);
    subject.addObserver(&second);
    subject.addObserver(&third);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("third"));
}

TEST_F(SubjectNotification, leavesOutAnObserverDestroyedBeforeItsTurn) {
    Subject subject;
    auto second = std::make_unique<TestObserver>(writing("second"));
    TestObserver first([&](Subject*, NotificationHint const&) { second.reset(); });
    TestObserver third(writing("third"));
    subject.addObserver(&first);
    subject.addObserver(second.get());
    subject.addObserver(&third);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("third"));
}

TEST_F(SubjectNotification, mayRemoveTheObserverThatItCalls) {
    Subject subject;
    std::unique_ptr<TestObserver> once;
    once = std::make_unique<TestObserver>([&](Subject* from, NotificationHint const&) {
        log.emplace_back("once");
        from->removeObserver(once.get());
    });
    TestObserver next(writing("next"));
    subject.addObserver(once.get());
    subject.addObserver(&next);
    subject.notify(hint);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("once", "next", "next"));
}

TEST_F(SubjectNotification, mayRemoveTheObserverThatItCallsAfterAnotherNotificationFromInside) {
    Subject subject;
    Subject inner;
    TestObserver innerObserver(writing("inner"));
    inner.addObserver(&innerObserver);
    std::unique_ptr<TestObserver> once;
    once = std::make_unique<TestObserver>([&](Subject* from, NotificationHint const& received) {
        inner.notify(received);
        from->removeObserver(once.get());  // must not wait for the call that it is in
        log.emplace_back("removed");
    });
    subject.addObserver(once.get());
    subject.notify(hint);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("inner", "removed"));
}

TEST_F(SubjectNotification, mayRemoveAndAddTheObserverThatItCalls) {
    Subject subject;
    std::unique_ptr<TestObserver> observer;
    observer = std::make_unique<TestObserver>([&](Subject* from, NotificationHint const&) {
        log.emplace_back("again");
        from->removeObserver(observer.get());
        from->addObserver(observer.get());
    });
    subject.addObserver(observer.get());
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("again")) << "an observer added during a notification hears the next one";
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("again", "again"));
    subject.removeObserver(observer.get());
    subject.notify(hint);
    EXPECT_EQ(log.size(), 2u);
}

TEST_F(SubjectNotification, mayDestroyTheObserverThatItCalls) {
    Subject subject;
    std::unique_ptr<TestObserver> observer;
    observer = std::make_unique<TestObserver>([&](Subject*, NotificationHint const&) { observer.reset(); });
    TestObserver next(writing("next"));
    subject.addObserver(observer.get());
    subject.addObserver(&next);
    subject.notify(hint);
    EXPECT_EQ(observer, nullptr);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("next", "next"));
}

TEST_F(SubjectNotification, mayDestroyItsSubjectAndThenReachesNobodyElse) {
    auto subject = std::make_unique<Subject>();
    TestObserver first([&](Subject*, NotificationHint const&) {
        log.emplace_back("first");
        subject.reset();
    });
    TestObserver second(writing("second"));
    subject->addObserver(&first);
    subject->addObserver(&second);
    subject->notify(hint);
    EXPECT_EQ(subject, nullptr);
    EXPECT_THAT(log, ElementsAre("first"));
}

TEST_F(SubjectNotification, maySendAnotherFromInside) {
    Subject subject;
    int depth = 0;
    TestObserver nesting([&](Subject* from, NotificationHint const& received) {
        log.push_back("depth " + std::to_string(depth));
        if (++depth < 3) from->notify(received);
    });
    subject.addObserver(&nesting);
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("depth 0", "depth 1", "depth 2"));
}

TEST_F(SubjectNotification, passesOnWhatAnUpdateThrowsAndLeavesTheObserverRegistered) {
    Subject subject;
    bool throwing = true;
    TestObserver observer([&](Subject*, NotificationHint const&) {
        if (throwing) throw std::runtime_error("no");
        log.emplace_back("calm");
    });
    subject.addObserver(&observer);
    EXPECT_THROW(subject.notify(hint), std::runtime_error);
    throwing = false;
    subject.notify(hint);
    EXPECT_THAT(log, ElementsAre("calm"));
}

TEST_F(SubjectNotification, thatEndedWithAThrowKeepsNoRemovalWaiting) {
    Subject subject;
    TestObserver observer([](Subject*, NotificationHint const&) { throw std::runtime_error("no"); });
    subject.addObserver(&observer);
    EXPECT_THROW(subject.notify(hint), std::runtime_error);
    std::jthread([&] { subject.removeObserver(&observer); }).join();  // returns
    EXPECT_NO_THROW(subject.notify(hint));
}

TEST_F(SubjectNotification, allocatesNothing) {
    if (!AllocationCounter::works()) GTEST_SKIP() << "allocations are not counted in sanitizer builds";
    struct Silent final : Observer {
        ~Silent() override { stopObserving(); }
        void update(Subject*, NotificationHint const&) override { ++calls; }
        int calls = 0;
    };
    Subject subject;
    Silent a;
    Silent b;
    subject.addObserver(&a);
    subject.addObserver(&b);
    const AllocationCounter allocations;
    subject.notify(hint);
    EXPECT_EQ(allocations.count(), 0u);
    EXPECT_EQ(a.calls + b.calls, 2);
}

TEST(Subject, cannotBeCopied) {
    EXPECT_FALSE(std::is_copy_constructible_v<Subject>);
    EXPECT_FALSE(std::is_copy_assignable_v<Subject>);
}

TEST(Subject, mayDieBeforeItsObservers) {
    int calls = 0;
    TestObserver observer(calls);
    {
        Subject subject;
        subject.addObserver(&observer);
        subject.notify(NotificationHint());
    }
    Subject next;
    next.addObserver(&observer);
    next.notify(NotificationHint());
    EXPECT_EQ(calls, 2);
}

TEST(Subject, mayOutliveItsObservers) {
    int calls = 0;
    Subject subject;
    {
        TestObserver observer(calls);
        subject.addObserver(&observer);
        subject.notify(NotificationHint());
    }
    subject.notify(NotificationHint());
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace QRT_0_81
