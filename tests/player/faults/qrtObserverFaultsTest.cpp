// Observers that do in an update what they had better not.
#include <QCoreApplication>
#include <latch>
#include <stdexcept>

#include "faults/qrtFaultsFixture.h"
#include "harness/qrtFakeSegment.h"
#include "harness/qrtRecordingObserver.h"

namespace QRT_0_81 {

class ObserverFaults : public FaultsFixture {
protected:
    /// A segment whose notifications the player passes on.
    SharedPtr<FakeSegment> startWithSegment() {
        auto segment = FakeSegment::create("insert", {});
        EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        List<SharedPtr<ExternalSegment>> segments;
        segments.append(segment);
        EXPECT_EQ(player->setComposition(FakeComposition::create(0, 100), segments).get(), Status::ok);
        return segment;
    }
};

TEST_F(ObserverFaults, oneThatThrowsCostsTheCallerNothing) {
    start();
    RecordingObserver observer([](Subject&) { throw std::runtime_error("no paint"); });
    player->addObserver(&observer);
    EXPECT_EQ(player->setPref("FAKE_QUALITY", 6).get(), Status::ok);
    EXPECT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    EXPECT_EQ(observer.count(), 2u);
    EXPECT_TRUE(isToldOf("an observer's update failed: no paint"));
    expectWorking();
}

TEST_F(ObserverFaults, oneThatThrowsKeepsNothingFromTheOthers) {
    start();
    RecordingObserver first([](Subject&) { throw std::runtime_error("no paint"); });
    RecordingObserver second([](Subject&) { throw 81; });
    RecordingObserver third;
    for (RecordingObserver* const observer : {&first, &second, &third})
        player->addObserver(observer);
    EXPECT_EQ(player->setPref("FAKE_QUALITY", 6).get(), Status::ok);
    EXPECT_EQ(third.count(), 1u);
    EXPECT_TRUE(isToldOf("an observer's update failed: no paint"));
}

TEST_F(ObserverFaults, oneThatThrowsOnThePlayerThreadCostsNoFrame) {
    const auto segment = startWithSegment();
    RecordingObserver observer([](Subject&) { throw 81; });
    player->addObserver(&observer);
    FaultyGraphEngine::before("renderFrame", [&] { segment->subject.notify(InvalidationHint(1, 2)); });
    EXPECT_EQ(fetch(1).get(), Status::ok);
    EXPECT_EQ(observer.count(), 1u);
    FaultyGraphEngine::behave();
    expectWorking();
}

TEST_F(ObserverFaults, oneMayRemoveTheOthersInItsUpdate) {
    start();
    RecordingObserver victim;
    RecordingObserver remover([&](Subject& subject) { subject.removeObserver(&victim); });
    player->addObserver(&remover);
    player->addObserver(&victim);
    (void)player->setPref("FAKE_QUALITY", 6);
    EXPECT_EQ(remover.count(), 1u);
    EXPECT_EQ(victim.count(), 0u) << "no call after the removal";
}

TEST_F(ObserverFaults, oneMayDestroyTheOthersInItsUpdate) {
    start();
    auto victim = std::make_unique<RecordingObserver>();
    RecordingObserver destroyer([&](Subject&) { victim.reset(); });
    player->addObserver(&destroyer);
    player->addObserver(victim.get());
    (void)player->setPref("FAKE_QUALITY", 6);
    (void)player->setPref("FAKE_QUALITY", 7);
    EXPECT_EQ(destroyer.count(), 2u);
}

TEST_F(ObserverFaults, oneMayDropTheLastReferenceOfThePlayerInItsUpdate) {
    start();
    RecordingObserver dropper([&](Subject&) { player.reset(); });
    player->addObserver(&dropper);
    EXPECT_EQ(player->setPref("FAKE_QUALITY", 6).get(), Status::ok);
    EXPECT_FALSE(player);
    EXPECT_EQ(FakeGraphEngine::countOf("destroyed with its context"), 1);
}

TEST_F(ObserverFaults, oneMayDropItInAnUpdateThatASegmentCausesOnAHostThread) {
    const auto segment = startWithSegment();
    RecordingObserver dropper([&](Subject&) { player.reset(); });
    player->addObserver(&dropper);
    segment->subject.notify(InvalidationHint(0, 9));
    EXPECT_FALSE(player);
    EXPECT_EQ(FakeGraphEngine::countOf("destroyed with its context"), 1);
    segment->subject.notify(InvalidationHint(0, 9));  // nobody listens
    EXPECT_EQ(dropper.count(), 1u);
}

TEST_F(ObserverFaults, oneMayDropItOnThePlayerThreadAndThenItEndsOnTheGuiThread) {
    const auto segment = startWithSegment();
    std::latch dropped(1);
    RecordingObserver dropper([&](Subject&) {
        player.reset();
        dropped.count_down();
    });
    player->addObserver(&dropper);
    FaultyGraphEngine::before("renderFrame", [&] {
        FaultyGraphEngine::before("renderFrame", {});
        segment->subject.notify(InvalidationHint(0, 9));
    });
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    dropped.wait();
    while (FakeGraphEngine::script().numDestroyed == 0)
        QCoreApplication::processEvents();
    EXPECT_EQ(FakeGraphEngine::countOf("destroyed with its context"), 1);
}

}  // namespace QRT_0_81
