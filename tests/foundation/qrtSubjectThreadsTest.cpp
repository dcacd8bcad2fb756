// Notification and removal on several threads. Threads meet at latches; an update that is "under way" ends only after
// it has given the removal every chance to return too early.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <thread>
#include <vector>

#include "foundation/core/qrtSubject.h"
#include "foundation/qrtTestObserver.h"
#include "foundation/qrtTestSupport.h"

namespace QRT_0_81 {
namespace {

/// An observer with an update under way on another thread: first the test's `beginning`, then a wait for a removal
/// that returns too early.
class UpdateUnderWay {
public:
    explicit UpdateUnderWay(std::function<void()> beginning = {})
        : m_observer(std::make_unique<TestObserver>([this, beginning](Subject*, NotificationHint const&) {
              if (beginning) beginning();
              m_begun.count_down();
              m_refrained = staysFalse(m_removed);
          })) {
        m_subject->addObserver(m_observer.get());
    }

    [[nodiscard]] Subject& subject() { return *m_subject; }
    [[nodiscard]] TestObserver& observer() { return *m_observer; }
    void destroyObserver() { m_observer.reset(); }
    void destroySubject() { m_subject.reset(); }

    /// Starts the update, runs `removal` on `numThreads` threads meanwhile, and says whether none of them returned
    /// before the update did.
    [[nodiscard]] bool isAwaitedBy(std::function<void()> const& removal, int numThreads = 1) {
        std::jthread notifier([subject = m_subject.get()] { subject->notify(NotificationHint()); });
        m_begun.wait();
        {
            std::latch start(numThreads);
            std::vector<std::jthread> removers;
            for (int i = 0; i < numThreads; ++i) {
                removers.emplace_back([&] {
                    start.arrive_and_wait();
                    removal();
                    m_removed = true;
                });
            }
        }
        notifier.join();
        return m_refrained;
    }

private:
    std::latch m_begun{1};
    std::atomic<bool> m_removed{false};
    std::atomic<bool> m_refrained{false};
    std::unique_ptr<Subject> m_subject = std::make_unique<Subject>();
    std::unique_ptr<TestObserver> m_observer;
};

TEST(SubjectThreads, aRemovalWaitsForACallUnderWay) {
    UpdateUnderWay update;
    EXPECT_TRUE(update.isAwaitedBy([&] { update.subject().removeObserver(&update.observer()); }));
}

TEST(SubjectThreads, twoRemovalsAtOnceBothWaitForACallUnderWay) {
    UpdateUnderWay update;
    EXPECT_TRUE(update.isAwaitedBy([&] { update.subject().removeObserver(&update.observer()); }, 2));
}

TEST(SubjectThreads, aRemovalWaitsForACallThatHasRemovedItsOwnObserver) {
    UpdateUnderWay update([&] { update.subject().removeObserver(&update.observer()); });
    EXPECT_TRUE(update.isAwaitedBy([&] { update.subject().removeObserver(&update.observer()); }));
}

TEST(SubjectThreads, aRemovalEndsWhatACallUnderWayHasAddedAnew) {
    std::atomic<int> calls{0};
    UpdateUnderWay update([&] {
        ++calls;
        update.subject().removeObserver(&update.observer());
        update.subject().addObserver(&update.observer());
    });
    EXPECT_TRUE(update.isAwaitedBy([&] { update.subject().removeObserver(&update.observer()); }));
    update.subject().notify(NotificationHint());
    EXPECT_EQ(calls, 1);
}

TEST(SubjectThreads, anObserverThatStopsWaitsForACallUnderWay) {
    UpdateUnderWay update;
    EXPECT_TRUE(update.isAwaitedBy([&] { update.observer().stopObserving(); }));
}

TEST(SubjectThreads, anObserversEndWaitsForACallUnderWay) {
    UpdateUnderWay update;
    EXPECT_TRUE(update.isAwaitedBy([&] { update.destroyObserver(); }));
}

TEST(SubjectThreads, anObserverThatStopsWaitsForACallThatHasRemovedIt) {
    UpdateUnderWay update([&] { update.subject().removeObserver(&update.observer()); });
    EXPECT_TRUE(update.isAwaitedBy([&] { update.observer().stopObserving(); }));
}

TEST(SubjectThreads, anObserverThatStopsWaitsForACallThatHasStoppedIt) {
    UpdateUnderWay update([&] { update.observer().stopObserving(); });
    EXPECT_TRUE(update.isAwaitedBy([&] { update.observer().stopObserving(); }));
}

TEST(SubjectThreads, anObserverThatStopsWaitsForACallThatHasDestroyedTheSubject) {
    UpdateUnderWay update([&] { update.destroySubject(); });
    EXPECT_TRUE(update.isAwaitedBy([&] { update.observer().stopObserving(); }));
}

TEST(SubjectThreads, theRemovalOfAnotherObserverWaitsForNothing) {
    Subject subject;
    std::latch begun(1);
    std::latch removed(1);
    TestObserver busy([&](Subject*, NotificationHint const&) {
        begun.count_down();
        removed.wait();  // for ever, if that removal waited for this call
    });
    int calls = 0;
    TestObserver other(calls);
    subject.addObserver(&busy);
    subject.addObserver(&other);
    std::jthread notifier([&] { subject.notify(NotificationHint()); });
    begun.wait();
    subject.removeObserver(&other);
    removed.count_down();
    notifier.join();
    EXPECT_EQ(calls, 0);
}

TEST(SubjectThreads, noCallComesAfterARemovalHasReturned) {
    for (int round = 0; round < 200; ++round) {
        Subject subject;
        std::atomic<bool> removed{false};
        std::atomic<bool> calledAfterwards{false};
        TestObserver observer([&](Subject*, NotificationHint const&) {
            if (removed) calledAfterwards = true;
        });
        subject.addObserver(&observer);
        std::latch start(2);
        std::jthread notifier([&] {
            start.arrive_and_wait();
            for (int i = 0; i < 20; ++i)
                subject.notify(NotificationHint());
        });
        start.arrive_and_wait();
        subject.removeObserver(&observer);
        removed = true;
        notifier.join();
        ASSERT_FALSE(calledAfterwards);
    }
}

TEST(SubjectThreads, updatesOfOneObserverRunAtOnce) {
    Subject subject;
    std::latch inside(2);
    TestObserver observer([&](Subject*, NotificationHint const&) { inside.arrive_and_wait(); });
    subject.addObserver(&observer);
    std::jthread other([&] { subject.notify(NotificationHint()); });
    subject.notify(NotificationHint());  // returns only if both updates were inside at one time
    other.join();
    EXPECT_TRUE(inside.try_wait());
}

TEST(SubjectThreads, noLockIsHeldDuringAnUpdate) {
    Subject subject;
    int otherCalls = 0;
    bool nested = false;
    TestObserver observer([&](Subject* from, NotificationHint const& hint) {
        if (nested) return;
        nested = true;
        std::jthread([&] {  // another thread can do everything while this one is inside
            TestObserver other(otherCalls);
            from->addObserver(&other);
            from->notify(hint);
            from->removeObserver(&other);
        })
            .join();
    });
    subject.addObserver(&observer);
    subject.notify(NotificationHint());
    EXPECT_EQ(otherCalls, 1);
}

TEST(SubjectThreads, updatesThatRemoveTheirObserverDoNotWaitForEachOther) {
    Subject subject;
    std::latch inside(2);
    std::atomic<int> returned{0};
    std::unique_ptr<TestObserver> observer;
    observer = std::make_unique<TestObserver>([&](Subject* from, NotificationHint const&) {
        inside.arrive_and_wait();
        from->removeObserver(observer.get());
        ++returned;
    });
    subject.addObserver(observer.get());
    std::jthread other([&] { subject.notify(NotificationHint()); });
    subject.notify(NotificationHint());
    other.join();
    EXPECT_EQ(returned, 2);
}

TEST(SubjectThreads, updatesThatRemoveTheirObserverFromEachOthersSubjectDoNotWaitForEachOther) {
    Subject first;
    Subject second;
    std::latch inside(2);
    std::atomic<int> returned{0};
    std::unique_ptr<TestObserver> observer;
    observer = std::make_unique<TestObserver>([&](Subject* from, NotificationHint const&) {
        inside.arrive_and_wait();
        (from == &first ? second : first).removeObserver(observer.get());
        ++returned;
    });
    first.addObserver(observer.get());
    second.addObserver(observer.get());
    std::jthread other([&] { second.notify(NotificationHint()); });
    first.notify(NotificationHint());
    other.join();
    EXPECT_EQ(returned, 2);
}

TEST(SubjectThreads, bothEndsMayDieAtOnce) {
    for (int round = 0; round < 300; ++round) {
        int calls = 0;
        auto subject = std::make_unique<Subject>();
        auto first = std::make_unique<TestObserver>(calls);
        auto second = std::make_unique<TestObserver>(calls);
        subject->addObserver(first.get());
        subject->addObserver(second.get());
        std::latch start(3);
        std::jthread one([&] {
            start.arrive_and_wait();
            first.reset();
        });
        std::jthread two([&] {
            start.arrive_and_wait();
            second.reset();
        });
        start.arrive_and_wait();
        subject.reset();
    }
}

TEST(SubjectThreads, observersMayComeAndGoWhileASubjectNotifies) {
    constexpr int numThreads = 3;
    Subject subject;
    std::atomic<bool> done{false};
    std::latch start(numThreads + 1);
    std::jthread notifier([&] {
        start.arrive_and_wait();
        while (!done)
            subject.notify(NotificationHint());
    });
    {
        std::vector<std::jthread> hosts;
        for (int i = 0; i < numThreads; ++i) {
            hosts.emplace_back([&] {
                start.arrive_and_wait();
                for (int round = 0; round < 200; ++round) {
                    std::atomic<int> calls{0};
                    TestObserver observer([&calls](Subject*, NotificationHint const&) { ++calls; });
                    subject.addObserver(&observer);
                    subject.notify(NotificationHint());
                    EXPECT_GE(calls, 1);
                    if (round % 2 == 0) subject.removeObserver(&observer);
                }
            });
        }
    }
    done = true;
}

TEST(SubjectThreads, oneObserverMayBeAddedFromManyThreadsAndIsStillCalledOnce) {
    constexpr int numThreads = 4;
    for (int round = 0; round < 100; ++round) {
        Subject subject;
        int calls = 0;
        TestObserver observer(calls);
        std::latch start(numThreads);
        {
            std::vector<std::jthread> threads;
            for (int i = 0; i < numThreads; ++i) {
                threads.emplace_back([&] {
                    start.arrive_and_wait();
                    subject.addObserver(&observer);
                });
            }
        }
        subject.notify(NotificationHint());
        ASSERT_EQ(calls, 1);
    }
}

TEST(SubjectThreads, subjectsMayDieWhileTheirObserverStops) {
    constexpr int numSubjects = 3;
    for (int round = 0; round < 100; ++round) {
        int calls = 0;
        TestObserver observer(calls);
        std::latch registered(numSubjects);
        std::latch start(numSubjects + 1);
        std::vector<std::jthread> owners;
        for (int i = 0; i < numSubjects; ++i) {
            owners.emplace_back([&] {
                Subject subject;
                subject.addObserver(&observer);
                registered.count_down();
                start.arrive_and_wait();
            });
        }
        registered.wait();
        start.arrive_and_wait();
        observer.stopObserving();
    }
}

}  // namespace
}  // namespace QRT_0_81
