// Who is told what: hosts by the player, and the player by its pools and by external segments.
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "harness/qrtFakeSegment.h"
#include "harness/qrtPlayerFixture.h"
#include "harness/qrtRecordingObserver.h"

namespace QRT_0_81 {

namespace {

constexpr char flushed[] = "Flushed player cache";
constexpr char noMoreFrames[] = "PlayerImpl::_produceNextVideoBuffer() has no more frames to produce.";
constexpr char pausedFor260[] = "Stop producing because status failure = 260";

bool isDebugOn() {
    return std::getenv("QRT_DEBUG_PLAYER") != nullptr;
}

}  // namespace

class PlayerObservers : public PlayerFixture {
protected:
    PlayerObservers() { player->addObserver(&observer); }

    /// Starts with the segments given to the composition.
    void startWith(std::vector<SharedPtr<FakeSegment>> const& segments) {
        ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        ASSERT_EQ(setSegments(segments).get(), Status::ok);
        observer.clear();
    }
    Status setSegments(std::vector<SharedPtr<FakeSegment>> const& segments) {
        List<SharedPtr<ExternalSegment>> list;
        for (auto const& segment : segments)
            list.append(segment);
        return player->setComposition(FakeComposition::create(0, 100), list);
    }
    void cacheFrame(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(frame, buffer).get(), Status::ok);
    }

    /// Waits until the run has followed the host's last request: the request posts a step, which runs behind a drain.
    void settle() {
        drain();
        drain();
    }

    RecordingObserver observer;
};

// ---- What the player tells by itself --------------------------------------------------------------------------------

struct OperationCase {
    char const* name;
    std::function<Status(Player&)> call;
    bool notifiesBeforeInitialize;
    bool notifies;
};

class PlayerOperation : public PlayerObservers, public ::testing::WithParamInterface<OperationCase> {
protected:
    void expectUpdates(size_t count) {
        ASSERT_EQ(observer.count(), count);
        for (auto const& update : observer.updates()) {
            EXPECT_TRUE(update.isPlain);
            EXPECT_EQ(update.thread, std::this_thread::get_id());
            EXPECT_NE(update.subject, nullptr);
        }
        observer.clear();
    }
};

TEST_P(PlayerOperation, notifiesOnceOnTheCallersThreadOrNotAtAll) {
    (void)GetParam().call(*player);
    expectUpdates(GetParam().notifiesBeforeInitialize ? 1 : 0);
    start();
    observer.clear();
    (void)GetParam().call(*player);
    expectUpdates(GetParam().notifies ? 1 : 0);
    (void)GetParam().call(*player);  // the same again
    expectUpdates(GetParam().notifies ? 1 : 0);
}

TEST_P(PlayerOperation, notifiesAlsoWhenItIsRefusedWhileProducing) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 9)).get(), Status::ok);
    observer.clear();
    (void)GetParam().call(*player);
    expectUpdates(GetParam().notifies ? 1 : 0);
}

namespace {

const auto composition = FakeComposition::create(0, 100);
const List<SharedPtr<ExternalSegment>> noSegments;

}  // namespace

INSTANTIATE_TEST_SUITE_P(
    Setters, PlayerOperation,
    ::testing::Values(
        OperationCase{"setPref", [](Player& p) { return p.setPref("FAKE_QUALITY", 4); }, true, true},
        OperationCase{"setRamOutputs", [](Player& p) { return p.setRamOutputs(true); }, true, true},
        OperationCase{"setVideoResolution",
                      [](Player& p) { return p.setVideoResolution(VideoBufferResolution(8, 8, 4, 8, false)); }, true,
                      true},
        OperationCase{"setVideoResolutionInvalid",
                      [](Player& p) { return p.setVideoResolution(VideoBufferResolution()); }, true, true},
        OperationCase{"setVideoFrameRate", [](Player& p) { return p.setVideoFrameRate(Rational(25, 1)); }, false, true},
        OperationCase{"setComposition", [](Player& p) { return p.setComposition(composition, noSegments); }, false,
                      true},
        OperationCase{"updateComposition", [](Player& p) { return p.updateComposition(composition, "x"); }, false,
                      true},
        OperationCase{"setAudioFormat", [](Player& p) { return p.setAudioFormat(nullptr); }, false, true}),
    [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Others, PlayerOperation,
    ::testing::Values(OperationCase{"setDefaultSourceVideoFrameRate",
                                    [](Player& p) { return p.setDefaultSourceVideoFrameRate(Rational(25, 1)); }, false,
                                    false},
                      OperationCase{"setExternalSegmentCacheConstraint",
                                    [](Player& p) {
                                        return p.setExternalSegmentCacheConstraint(
                                            Resource::Type::ram, ResourceConstraint::ResizeMode::fixed, 0, 1);
                                    },
                                    false, false},
                      OperationCase{"getPref",
                                    [](Player& p) {
                                        int value = 0;
                                        return p.getPref("FAKE_QUALITY", value);
                                    },
                                    false, false},
                      OperationCase{"getVideoBuffer",
                                    [](Player& p) {
                                        SharedPtr<VideoBuffer> buffer;
                                        return p.getVideoBuffer(20, buffer);
                                    },
                                    false, false},
                      OperationCase{"runs",
                                    [](Player& p) {
                                        (void)p.startProducing(playParams(0, 0, 9));
                                        return p.stopProducing();
                                    },
                                    false, false},
                      OperationCase{"uninitialize", [](Player& p) { return p.uninitialize(); }, false, false}),
    [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

TEST_F(PlayerObservers, updateCompositionWithoutOneNotifiesNobody) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(player->updateComposition(composition, "x").get(), 273);
    EXPECT_EQ(observer.count(), 0u);
}

TEST_F(PlayerObservers, areToldOfAnExchangeOnlyWhenTheOldFramesAreGone) {
    start();
    const std::vector<std::function<void()>> exchanges{
        [&] { (void)setComposition(FakeComposition::create(0, 50)); },
        [&] { (void)player->updateComposition(composition, "x"); },
        [&] { (void)player->setVideoFrameRate(Rational(24, 1)); },
        [&] { (void)player->setRamOutputs(true); },
        [&] { (void)player->setVideoResolution(VideoBufferResolution(8, 8, 4, 8, false)); },
    };
    for (auto const& exchange : exchanges) {
        cacheFrame(3);
        bool wasCached = true;
        RecordingObserver looking([&](Subject&) { wasCached = player->isVideoBufferReady(3); });
        player->addObserver(&looking);
        exchange();
        EXPECT_EQ(looking.count(), 1u);
        EXPECT_FALSE(wasCached);
    }
}

TEST_F(PlayerObservers, areToldInTheOrderOfRegistrationEachOnceAndNoLongerOnceRemoved) {
    RecordingObserver second;
    player->addObserver(&second);
    player->addObserver(&second);
    player->addObserver(nullptr);
    (void)player->setPref("FAKE_QUALITY", 1);
    EXPECT_EQ(observer.count(), 1u);
    EXPECT_EQ(second.count(), 1u);
    player->removeObserver(&observer);
    player->removeObserver(nullptr);
    (void)player->setPref("FAKE_QUALITY", 2);
    EXPECT_EQ(observer.count(), 1u);
    EXPECT_EQ(second.count(), 2u);
}

TEST_F(PlayerObservers, mayRemoveThemselvesInTheirUpdate) {
    RecordingObserver* self = nullptr;
    RecordingObserver once([&](Subject& subject) { subject.removeObserver(self); });
    self = &once;
    player->addObserver(&once);
    (void)player->setPref("FAKE_QUALITY", 1);
    (void)player->setPref("FAKE_QUALITY", 2);
    EXPECT_EQ(once.count(), 1u);
    EXPECT_EQ(observer.count(), 2u);
}

TEST_F(PlayerObservers, mayCallThePlayerBackInTheirUpdate) {
    start();
    int depth = 0;
    RecordingObserver calling([&](Subject&) {
        if (++depth < 3) (void)player->setPref("FAKE_QUALITY", depth);
        SharedPtr<VideoBuffer> buffer;
        EXPECT_EQ(player->getVideoBuffer(5, buffer).get(), Status::ok);
    });
    player->addObserver(&calling);
    (void)player->setRamOutputs(true);
    EXPECT_EQ(calling.count(), 3u);
}

TEST_F(PlayerObservers, mayDieBeforeThePlayerAndAfterIt) {
    {
        RecordingObserver shortLived;
        player->addObserver(&shortLived);
    }
    (void)player->setPref("FAKE_QUALITY", 1);
    EXPECT_EQ(observer.count(), 1u);
    player.reset();  // `observer` lives on
}

// ---- What external segments tell the player -------------------------------------------------------------------------

TEST_F(PlayerObservers, anInvalidationFlushesTheCacheAndIsPassedOn) {
    const auto segment = FakeSegment::create("a", {});
    startWith({segment});
    cacheFrame(3);
    LogCapture log;
    const InvalidationHint hint(90, 91);  // whatever it says: the whole cache goes
    segment->subject.notify(hint);
    EXPECT_FALSE(player->isVideoBufferReady(3));
    EXPECT_EQ(log.count(flushed), isDebugOn() ? 1u : 0u);
    ASSERT_EQ(observer.count(), 1u);
    EXPECT_EQ(observer.updates()[0].hint, &hint);
    EXPECT_NE(observer.updates()[0].subject, &segment->subject) << "the player passes it on as its own";
    EXPECT_EQ(observer.updates()[0].thread, std::this_thread::get_id());
}

TEST_F(PlayerObservers, anInvalidationOfAnEmptyCacheIsPassedOnSilently) {
    const auto segment = FakeSegment::create("a", {});
    startWith({segment});
    LogCapture log;
    segment->subject.notify(InvalidationHint(0, 9));
    EXPECT_EQ(log.count(flushed), 0u);
    EXPECT_EQ(observer.count(), 1u);
}

TEST_F(PlayerObservers, anyOtherHintOfASegmentIsPassedOnAndCostsNoFrame) {
    struct OtherHint final : NotificationHint {};
    const auto segment = FakeSegment::create("a", {});
    startWith({segment});
    cacheFrame(3);
    const OtherHint other;
    segment->subject.notify(other);
    segment->subject.notify(NotificationHint());
    EXPECT_TRUE(player->isVideoBufferReady(3));
    ASSERT_EQ(observer.count(), 2u);
    EXPECT_EQ(observer.updates()[0].hint, &other);
}

TEST_F(PlayerObservers, anInvalidationDuringRenderingArrivesOnThePlayerThread) {
    const auto segment = FakeSegment::create("a", {});
    startWith({segment});
    FakeGraphEngine::callBeforeRender([&](int64) { segment->subject.notify(InvalidationHint(0, 9)); });
    cacheFrame(3);
    ASSERT_EQ(observer.count(), 1u);
    EXPECT_NE(observer.updates()[0].thread, std::this_thread::get_id());
}

TEST_F(PlayerObservers, segmentsWithoutASubjectAndNullEntriesAreSkipped) {
    const auto silent = FakeSegment::create("silent", {0, false, false, false});
    const auto speaking = FakeSegment::create("speaking", {});
    startWith({nullptr, silent, speaking, nullptr});
    cacheFrame(3);
    silent->subject.notify(InvalidationHint(0, 9));
    EXPECT_EQ(observer.count(), 0u);
    EXPECT_TRUE(player->isVideoBufferReady(3));
    speaking->subject.notify(InvalidationHint(0, 9));
    EXPECT_EQ(observer.count(), 1u);
}

TEST_F(PlayerObservers, aSegmentThatIsGivenTwiceIsHeardOnce) {
    const auto segment = FakeSegment::create("a", {});
    startWith({segment, segment});
    segment->subject.notify(NotificationHint());
    EXPECT_EQ(observer.count(), 1u);
}

TEST_F(PlayerObservers, onlySegmentsOfThePresentCompositionAreHeard) {
    const auto before = FakeSegment::create("before", {});
    const auto both = FakeSegment::create("both", {});
    const auto after = FakeSegment::create("after", {});
    startWith({before, both});
    ASSERT_EQ(setSegments({both, after}).get(), Status::ok);
    observer.clear();
    before->subject.notify(NotificationHint());
    EXPECT_EQ(observer.count(), 0u);
    both->subject.notify(NotificationHint());
    after->subject.notify(NotificationHint());
    EXPECT_EQ(observer.count(), 2u);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    both->subject.notify(NotificationHint());
    EXPECT_EQ(observer.count(), 2u);
}

TEST_F(PlayerObservers, segmentsOfACompositionThatWasAdoptedInPartAreHeardThoseOfARefusedOneAreNot) {
    const auto partly = FakeSegment::create("partly", {});
    const auto refused = FakeSegment::create("refused", {});
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    FakeGraphEngine::answer("setComposition", 269);
    EXPECT_EQ(setSegments({partly}).get(), 269);
    observer.clear();
    partly->subject.notify(NotificationHint());
    EXPECT_EQ(observer.count(), 1u);
    FakeGraphEngine::answer("setComposition", 270);
    EXPECT_EQ(setSegments({refused}).get(), 270);
    observer.clear();
    partly->subject.notify(NotificationHint());
    refused->subject.notify(NotificationHint());
    EXPECT_EQ(observer.count(), 0u);
}

TEST_F(PlayerObservers, segmentsAreHeardWithAndWithoutACacheOfTheirFrames) {
    ASSERT_EQ(
        player->setExternalSegmentCacheConstraint(Resource::Type::ram, ResourceConstraint::ResizeMode::fixed, 0, 1)
            .get(),
        Status::ok);
    const auto segment = FakeSegment::create("a", {});
    startWith({segment});
    cacheFrame(3);
    segment->subject.notify(InvalidationHint(0, 0));
    EXPECT_EQ(observer.count(), 1u);
    EXPECT_FALSE(player->isVideoBufferReady(3));
}

TEST_F(PlayerObservers, segmentsMayDieBeforeThePlayerAndSpeakAfterIt) {
    const auto survivor = FakeSegment::create("survivor", {});
    {
        const auto shortLived = FakeSegment::create("shortLived", {});
        startWith({shortLived, survivor});
        ASSERT_EQ(setSegments({survivor}).get(), Status::ok);
        observer.clear();
    }
    survivor->subject.notify(NotificationHint());
    EXPECT_EQ(observer.count(), 1u);
    player.reset();
    survivor->subject.notify(InvalidationHint(0, 9));
    EXPECT_EQ(observer.count(), 1u);
}

TEST_F(PlayerObservers, anUpdateThatWaitsForThePlayerDoesNotKeepAnExchangeWaiting) {
    // A segment speaks on a thread of its own, and the host's observer asks the player something, while another host
    // thread exchanges the composition, which ends the registration with that very segment.
    const auto segment = FakeSegment::create("a", {});
    startWith({segment});
    FakeGraphEngine::clearJournal();
    std::latch updating(1);
    RecordingObserver asking([&](Subject&) {
        updating.count_down();
        while (FakeGraphEngine::countOf("setComposition 0 segments 16x8 24/1") == 0)
            std::this_thread::yield();
        drain();
    });
    player->addObserver(&asking);
    std::thread speaking([&] { segment->subject.notify(InvalidationHint(0, 9)); });
    updating.wait();
    player->removeObserver(&observer);
    const SharedPtr<Composition> other = FakeComposition::create(0, 10);
    std::thread exchanging([&] { (void)player->setComposition(other, noSegments); });
    speaking.join();
    player->removeObserver(&asking);
    exchanging.join();
}

// ---- What the pools tell the player ---------------------------------------------------------------------------------

TEST_F(PlayerObservers, hostsHearNothingOfThePools) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    observer.clear();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    waitUntilReady(2);
    cacheFrame(50);  // takes buffers from both pools, and gives some back
    drain();
    EXPECT_EQ(observer.count(), 0u);
}

TEST_F(PlayerObservers, aBufferThatComesBackRestartsAPausedRun) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    std::vector<SharedPtr<VideoBuffer>> held(4);
    for (const int64 frame : {0, 1, 2}) {
        waitUntilReady(frame);
        ASSERT_EQ(player->getVideoBuffer(frame, held[static_cast<size_t>(frame)]).get(), Status::ok);
        settle();
    }
    // The host's jump takes the last framebuffer: nothing is left to look ahead with.
    LogCapture log;
    ASSERT_EQ(player->getVideoBuffer(50, held[3]).get(), Status::ok);
    log.waitFor(pausedFor260);
    settle();
    const size_t numPauses = log.count(pausedFor260);
    EXPECT_FALSE(player->isVideoBufferReady(51));
    // One is not enough, since the last is kept for a waiting host; but it does wake the run.
    held[0].reset();
    log.waitFor(pausedFor260, numPauses + 1);
    EXPECT_FALSE(player->isVideoBufferReady(51));
    held[1].reset();
    waitUntilReady(51);
}

TEST_F(PlayerObservers, aBlockOfMemoryThatComesBackRestartsAPausedRunToo) {
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    std::vector<SharedPtr<VideoBuffer>> held(4);
    for (const int64 frame : {0, 1, 2}) {
        waitUntilReady(frame);
        ASSERT_EQ(player->getVideoBuffer(frame, held[static_cast<size_t>(frame)]).get(), Status::ok);
        settle();
    }
    LogCapture log;
    ASSERT_EQ(player->getVideoBuffer(50, held[3]).get(), Status::ok);
    log.waitFor(pausedFor260);
    settle();
    std::thread([&] {  // on any thread
        held[0].reset();
        held[1].reset();
    })
        .join();
    waitUntilReady(51);
}

TEST_F(PlayerObservers, whatAFailedStepGivesBackItselfDoesNotRestartTheRun) {
    // Else the step would be tried again for ever.
    start();
    LogCapture log;
    FakeGraphEngine::answer("renderFrame", 99);
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    for (int round = 0; round < 10; ++round)
        drain();
    EXPECT_EQ(log.count("Stop producing because status failure = 99"), 1u);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), std::vector<int64>{0});
}

TEST_F(PlayerObservers, aStepThatFindsNoMemoryForItsFrameDoesNotRestartTheRunWithTheFramebufferItGivesBack) {
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    start();
    std::vector<SharedPtr<VideoBuffer>> held(3);
    for (const int64 frame : {0, 1, 2}) {
        ASSERT_EQ(player->getVideoBuffer(frame, held[static_cast<size_t>(frame)]).get(), Status::ok);
    }
    LogCapture log;
    ASSERT_EQ(player->startProducing(playParams(1, 0, 99)).get(), Status::ok);  // frame 3 is next
    for (int round = 0; round < 10; ++round)
        drain();
    EXPECT_EQ(log.count(pausedFor260), 1u);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), (std::vector<int64>{0, 1, 2, 3}));
}

TEST_F(PlayerObservers, aBufferThatComesBackWithoutARunDoesNothing) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(7, buffer).get(), Status::ok);
    ASSERT_EQ(player->setVideoFrameRate(Rational(24, 1)).get(), Status::ok);  // the cache lets go of the frame
    FakeGraphEngine::clearJournal();
    LogCapture log;
    buffer.reset();
    drain();
    EXPECT_EQ(log.count(noMoreFrames), 0u);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), std::vector<int64>{});
}

}  // namespace QRT_0_81
