// External segments through a whole player: a host's segments render, a graph engine composites them, and what was
// rendered once comes from the cache.
#include <atomic>
#include <climits>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include "harness/qrtCompositingGraphEngine.h"
#include "harness/qrtFakeSegment.h"
#include "harness/qrtPlayerFixture.h"
#include "harness/qrtRecordingObserver.h"
#include "sanitizers/qrtSanitizer.h"

namespace QRT_0_81 {

namespace {

using Pixel = FakeSegment::Pixel;
using Frames = std::vector<int64>;
using ResizeMode = ResourceConstraint::ResizeMode;

const VideoBufferResolution format(192, 128, 4, 8, false);  // ten frames to the mebibyte
const VideoBufferResolution oneMebibyte(512, 512, 4, 8, false);

}  // namespace

class PlayerExternalSegment : public PlayerFixture {
protected:
    PlayerExternalSegment() { player = Player::create(format, CompositingGraphEngine::create); }

    void setBudget(Resource::Type type, size_t mebibytes) {
        ASSERT_EQ(player->setExternalSegmentCacheConstraint(type, ResizeMode::fixed, 0, mebibytes).get(), Status::ok);
    }
    void setBudgets(size_t mebibytes) {
        setBudget(Resource::Type::ram, mebibytes);
        setBudget(Resource::Type::vram, mebibytes);
    }
    Status setSegments(std::vector<SharedPtr<FakeSegment>> const& segments, int identity = 0) {
        List<SharedPtr<ExternalSegment>> list;
        for (auto const& segment : segments)
            list.append(segment);
        const auto composition = FakeComposition::create(0, 100);
        composition->identity = identity;
        return player->setComposition(composition, list);
    }
    void startWith(std::vector<SharedPtr<FakeSegment>> const& segments) {
        ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
        ASSERT_EQ(setSegments(segments).get(), Status::ok);
    }
    /// Drops the player's own frames, so that the next request renders again.
    void flush() { ASSERT_EQ(player->updateComposition(FakeComposition::create(0, 100), "").get(), Status::ok); }

    /// The colours of `numStripes` equal upright stripes of a frame, each read in its middle.
    std::vector<Pixel> stripesOf(int64 frame, int numStripes) {
        SharedPtr<VideoBuffer> buffer;
        const Status status = player->getVideoBuffer(frame, buffer);
        EXPECT_EQ(status.get(), Status::ok);
        if (status.failure()) return {};
        const int width = buffer->getResolution().getWidth();
        const int height = buffer->getResolution().getHeight();
        std::vector<Pixel> stripes;
        for (int stripe = 0; stripe < numStripes; ++stripe) {
            const auto middle =
                static_cast<size_t>((height / 2 * width + (2 * stripe + 1) * width / numStripes / 2) * 4);
            stripes.push_back(pixelAt(buffer, middle));
        }
        return stripes;
    }
    Pixel pixelAt(SharedPtr<VideoBuffer> const& buffer, size_t offset) {
        Pixel pixel;
        void* data = nullptr;
        if (buffer->getType() != VideoBuffer::framebufferKind && buffer->getData(data).success()) {
            for (size_t i = 0; i < 4; ++i)
                pixel.push_back(static_cast<unsigned char const*>(data)[offset + i]);
            return pixel;
        }
        unsigned int texture = 0;
        EXPECT_EQ(buffer->getTexture(texture).get(), Status::ok);
        const auto all =
            host.readTexture(texture, buffer->getResolution().getWidth(), buffer->getResolution().getHeight());
        for (size_t i = 0; i < 4; ++i)
            pixel.push_back(static_cast<int>(std::lround(all[offset + i] * 255.0f)));
        return pixel;
    }
    static Pixel painted(int64 frame, int identity = 0) { return {static_cast<int>(frame & 255), 0, identity, 255}; }

    const SharedPtr<FakeSegment> drawing = FakeSegment::create("drawing", {50, false, false, true});
    const SharedPtr<FakeSegment> filling = FakeSegment::create("filling", {60, true, false, true});
};

TEST_F(PlayerExternalSegment, aDrawnAndAFilledOneAreInThePicture) {
    for (const size_t budget : {0u, 1u}) {
        for (const bool ramOutputs : {false, true}) {
            setBudgets(budget);
            ASSERT_EQ(player->setRamOutputs(ramOutputs).get(), Status::ok);
            startWith({drawing, filling});
            for (const int64 frame : {0, 7, 99}) {
                EXPECT_EQ(stripesOf(frame, 3),
                          (std::vector<Pixel>{painted(frame), drawing->pixelOf(frame), filling->pixelOf(frame)}));
            }
            ASSERT_EQ(player->uninitialize().get(), Status::ok);
        }
    }
}

TEST_F(PlayerExternalSegment, onesWithBuffersOfTheirOwnAreInThePictureToo) {
    const auto own = FakeSegment::create("own", {70, false, true, true});
    const auto ownMemory = FakeSegment::create("ownMemory", {80, true, true, true});
    for (const size_t budget : {1u, 0u}) {  // without a budget the graph engine takes the picture from the segments
        setBudgets(budget);
        startWith({own, ownMemory});
        EXPECT_EQ(stripesOf(9, 3), (std::vector<Pixel>{painted(9), own->pixelOf(9), ownMemory->pixelOf(9)}));
        flush();
        EXPECT_EQ(stripesOf(9, 3), (std::vector<Pixel>{painted(9), own->pixelOf(9), ownMemory->pixelOf(9)}));
        ASSERT_EQ(player->uninitialize().get(), Status::ok);
    }
}

TEST_F(PlayerExternalSegment, withoutABudgetIsRenderedForEveryPicture) {
    startWith({drawing, filling});
    for (int round = 0; round < 2; ++round) {
        (void)stripesOf(7, 3);
        flush();
    }
    EXPECT_EQ(drawing->renderedFrames(), (Frames{7, 7}));
    EXPECT_EQ(filling->renderedFrames(), (Frames{7, 7}));
}

TEST_F(PlayerExternalSegment, withABudgetIsRenderedOnceAndThenComesFromTheCache) {
    setBudgets(1);
    startWith({drawing, filling});
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(stripesOf(7, 3), (std::vector<Pixel>{painted(7), drawing->pixelOf(7), filling->pixelOf(7)}));
        flush();
    }
    EXPECT_EQ(drawing->renderedFrames(), Frames{7});
    EXPECT_EQ(filling->renderedFrames(), Frames{7});
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), (Frames{7, 7, 7})) << "the picture itself is rendered each time";
}

TEST_F(PlayerExternalSegment, theBudgetOfOneKindDoesNothingForTheOther) {
    setBudget(Resource::Type::ram, 1);
    startWith({drawing, filling});
    for (int round = 0; round < 2; ++round) {
        (void)stripesOf(7, 3);
        flush();
    }
    EXPECT_EQ(drawing->renderedFrames(), (Frames{7, 7}));
    EXPECT_EQ(filling->renderedFrames(), Frames{7});
}

TEST_F(PlayerExternalSegment, aBudgetForOneFrameKeepsTheLastOne) {
    player = Player::create(oneMebibyte, CompositingGraphEngine::create);
    setBudgets(1);
    startWith({drawing, filling});
    for (const int64 frame : {1, 2})
        (void)stripesOf(frame, 3);
    flush();
    for (const int64 frame : {2, 1}) {
        EXPECT_EQ(stripesOf(frame, 3),
                  (std::vector<Pixel>{painted(frame), drawing->pixelOf(frame), filling->pixelOf(frame)}));
    }
    EXPECT_EQ(drawing->renderedFrames(), (Frames{1, 2, 1}));
    EXPECT_EQ(filling->renderedFrames(), (Frames{1, 2, 1}));
}

TEST_F(PlayerExternalSegment, aBudgetTooSmallForAFrameFailsThePicture) {
    player = Player::create(VideoBufferResolution(1024, 512, 4, 8, false), CompositingGraphEngine::create);
    setBudgets(1);
    startWith({drawing});
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(7, buffer).get(), 260);
    EXPECT_FALSE(buffer);
}

TEST_F(PlayerExternalSegment, aFailureToRenderIsTheHostsToSee) {
    for (const size_t budget : {0u, 1u}) {
        setBudgets(budget);
        startWith({drawing, filling});
        filling->renderStatus = 4711;
        SharedPtr<VideoBuffer> buffer;
        EXPECT_EQ(player->getVideoBuffer(7, buffer).get(), 4711);
        filling->renderStatus = 0;
        EXPECT_EQ(stripesOf(7, 3)[2], filling->pixelOf(7));
        ASSERT_EQ(player->uninitialize().get(), Status::ok);
    }
}

TEST_F(PlayerExternalSegment, anInvalidationRendersItsFramesAnewAndNoOthers) {
    setBudgets(1);
    startWith({drawing, filling});
    for (const int64 frame : {4, 5, 6})
        (void)stripesOf(frame, 3);
    drawing->revision = 1;
    filling->revision = 1;
    drawing->subject.notify(InvalidationHint(5, 5));
    const Pixel oldFill{5, 60, 0, 255};
    EXPECT_EQ(stripesOf(4, 3)[1], (Pixel{4, 50, 0, 255})) << "frame 4 as it was";
    EXPECT_EQ(stripesOf(5, 3)[1], (Pixel{5, 50, 1, 255})) << "frame 5 as it is now";
    EXPECT_EQ(stripesOf(5, 3)[2], oldFill) << "the other segment has said nothing";
    filling->subject.notify(InvalidationHint(INT_MIN, INT_MAX));
    EXPECT_EQ(stripesOf(5, 3)[2], (Pixel{5, 60, 1, 255}));
}

TEST_F(PlayerExternalSegment, anInvalidationMakesARunRenderItsWindowAnew) {
    setBudgets(1);
    startWith({drawing});
    ASSERT_EQ(player->startProducing(playParams(10, 0, 99)).get(), Status::ok);
    waitUntilReady(12);
    drawing->revision = 3;
    drawing->subject.notify(InvalidationHint(0, 99));
    for (const int64 frame : {10, 11, 12})
        EXPECT_EQ(stripesOf(frame, 2)[1], (Pixel{static_cast<int>(frame), 50, 3, 255}));
}

// ---- The graph engine's list ----------------------------------------------------------------------------------------

TEST_F(PlayerExternalSegment, theGraphEngineGetsTheHostsListUnlessItIsWrapped) {
    startWith({drawing, nullptr, filling});
    EXPECT_EQ(FakeGraphEngine::countOf("setComposition 3 segments 192x128 24/1"), 1);
    EXPECT_EQ(drawing->refcount(), 4u);  // this test's, the player's (to hear it) and the graph engine's two
    setBudgets(1);
    ASSERT_EQ(setSegments({drawing, nullptr, filling}).get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::countOf("setComposition 2 segments 192x128 24/1"), 1) << "null entries are left out";
    ASSERT_EQ(setSegments({}).get(), Status::ok);
    EXPECT_EQ(FakeGraphEngine::countOf("setComposition 0 segments 192x128 24/1"), 1);
    EXPECT_EQ(drawing->refcount(), 1u);
}

TEST_F(PlayerExternalSegment, isWrappedOrNotForAsLongAsItsCompositionIsSet) {
    startWith({drawing});
    setBudgets(1);  // too late for this composition
    for (int round = 0; round < 2; ++round) {
        (void)stripesOf(7, 2);
        flush();
    }
    EXPECT_EQ(drawing->renderedFrames(), (Frames{7, 7}));
    ASSERT_EQ(setSegments({drawing}).get(), Status::ok);
    for (int round = 0; round < 2; ++round) {
        (void)stripesOf(7, 2);
        flush();
    }
    EXPECT_EQ(drawing->renderedFrames(), (Frames{7, 7, 7}));
    setBudgets(0);  // the wrapper stays, and passes everything through
    (void)stripesOf(7, 2);
    EXPECT_EQ(drawing->renderedFrames(), (Frames{7, 7, 7, 7}));
}

TEST_F(PlayerExternalSegment, ofARefusedCompositionIsLetGoOf) {
    setBudgets(1);
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    FakeGraphEngine::answer("setComposition", 270);
    EXPECT_EQ(setSegments({drawing}).get(), 270);
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(0, buffer).get(), 265);
    FakeGraphEngine::answer("setComposition", 269);
    EXPECT_EQ(setSegments({drawing}).get(), 269);
    EXPECT_EQ(stripesOf(3, 2)[1], drawing->pixelOf(3));
}

TEST_F(PlayerExternalSegment, anExchangeOfCompositionsShowsTheNewSegmentsOnly) {
    setBudgets(1);
    startWith({drawing});
    EXPECT_EQ(stripesOf(3, 2)[1], drawing->pixelOf(3));
    const auto other = FakeSegment::create("other", {90, false, false, true});
    ASSERT_EQ(setSegments({other}, 1).get(), Status::ok);
    EXPECT_EQ(stripesOf(3, 2), (std::vector<Pixel>{painted(3, 1), other->pixelOf(3)}));
    EXPECT_EQ(drawing->refcount(), 1u);
    // A segment that comes back under its name finds the frames that it rendered before.
    ASSERT_EQ(setSegments({drawing}, 2).get(), Status::ok);
    EXPECT_EQ(stripesOf(3, 2), (std::vector<Pixel>{painted(3, 2), drawing->pixelOf(3)}));
    EXPECT_EQ(drawing->renderedFrames(), Frames{3});
}

TEST_F(PlayerExternalSegment, anExchangeDuringDeliveryNeverDeliversAnOldFrameAfterwards) {
    setBudgets(1);
    startWith({drawing, filling});
    std::atomic<bool> isDone{false};
    std::thread otherHost([&] {
        while (!isDone) {
            SharedPtr<VideoBuffer> buffer;
            (void)player->getVideoBuffer(5, buffer);
        }
    });
    for (int identity = 1; identity <= 30; ++identity) {
        const auto segment = FakeSegment::create(std::to_string(identity).c_str(),
                                                 {static_cast<std::uint8_t>(100 + identity), false, false, true});
        ASSERT_EQ(setSegments({segment}, identity).get(), Status::ok);
        ASSERT_EQ(stripesOf(5, 2), (std::vector<Pixel>{painted(5, identity), segment->pixelOf(5)}));
    }
    isDone = true;
    otherHost.join();
}

// ---- Constraints ----------------------------------------------------------------------------------------------------

TEST_F(PlayerExternalSegment, constraintsAreReportedAsSetAndZeroAtFirst) {
    ResizeMode mode = ResizeMode::automatic;
    size_t first = 9;
    size_t second = 9;
    for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram}) {
        player->getExternalSegmentCacheConstraint(type, mode, first, second);
        EXPECT_EQ(mode, ResizeMode::fixed);
        EXPECT_EQ(first, 0u);
        EXPECT_EQ(second, 0u);
        EXPECT_EQ(player->setExternalSegmentCacheConstraint(type, ResizeMode::automatic, 6, 7).get(), Status::ok);
        player->getExternalSegmentCacheConstraint(type, mode, first, second);
        EXPECT_EQ(mode, ResizeMode::automatic);
        EXPECT_EQ(first, 6u);
        EXPECT_EQ(second, 7u);
    }
}

TEST_F(PlayerExternalSegment, constraintsAreSetAndReadWithoutWaitingForThePlayerThread) {
    startWith({drawing});
    std::latch rendering(1);
    std::latch proceed(1);
    FakeGraphEngine::callBeforeRender([&](int64) {
        rendering.count_down();
        proceed.wait();
    });
    std::thread waitingHost([&] {
        SharedPtr<VideoBuffer> buffer;
        (void)player->getVideoBuffer(1, buffer);
    });
    rendering.wait();
    setBudgets(3);
    ResizeMode mode{};
    size_t first = 0;
    size_t second = 0;
    player->getExternalSegmentCacheConstraint(Resource::Type::vram, mode, first, second);
    EXPECT_EQ(second, 3u);
    proceed.count_down();
    waitingHost.join();
}

TEST_F(PlayerExternalSegment, aThousandChangesOfTheBudgetDuringARunLeaveNoTextureBehind) {
    setBudgets(1);
    startWith({drawing});
    const int numTextures = host.countTextures();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99, 1, PlayParams::loop)).get(), Status::ok);
    constexpr int64 numChanges = isUnderSanitizer ? 100 : 1000;
    for (int64 i = 0; i < numChanges; ++i) {
        setBudget(Resource::Type::vram, static_cast<size_t>(1 + i % 2));
        if (i % 10 != 0) continue;
        ASSERT_EQ(stripesOf(i / 10, 2)[1], drawing->pixelOf(i / 10));
    }
    setBudget(Resource::Type::vram, 0);
    ASSERT_EQ(player->stopProducing().get(), Status::ok);
    drain();
    drain();  // what the first one's end gives back is deleted behind it
    EXPECT_EQ(host.countTextures(), numTextures);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(host.countTextures(), 0);
    EXPECT_EQ(host.countFramebuffers(), 0);
}

TEST_F(PlayerExternalSegment, theCacheOfTexturesEndsWithThePlayersLifeAndStartsAnewWithTheNext) {
    setBudgets(1);
    for (int life = 0; life < 2; ++life) {
        startWith({drawing, filling});
        EXPECT_EQ(stripesOf(3, 3), (std::vector<Pixel>{painted(3), drawing->pixelOf(3), filling->pixelOf(3)}));
        EXPECT_GT(host.countTextures(), 4);
        ASSERT_EQ(player->uninitialize().get(), Status::ok);
        EXPECT_EQ(host.countTextures(), 0);
    }
    EXPECT_EQ(drawing->renderedFrames(), (Frames{3, 3}));
}

TEST_F(PlayerExternalSegment, mayBeInvalidatedOnAnyThreadWhileItIsPlayed) {
    setBudgets(1);
    startWith({drawing, filling});
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99, 1, PlayParams::loop)).get(), Status::ok);
    std::thread invalidating([&] {
        for (int i = 0; i < 300; ++i) {
            drawing->subject.notify(InvalidationHint(INT_MIN, INT_MAX));
            filling->subject.notify(InvalidationHint(i, i + 3));
        }
    });
    for (int64 frame = 0; frame < 100; ++frame) {
        ASSERT_EQ(stripesOf(frame, 3),
                  (std::vector<Pixel>{painted(frame), drawing->pixelOf(frame), filling->pixelOf(frame)}));
    }
    invalidating.join();
}

}  // namespace QRT_0_81
