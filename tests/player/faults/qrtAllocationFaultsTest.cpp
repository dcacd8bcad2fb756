// Every allocation of the main path finds no memory once, and once it and all after it do. Each time the caller gets an
// answer, nothing is lost, and the player works on.
#include <QGuiApplication>
#include <functional>
#include <iostream>

#include "faults/qrtAllocationFaults.h"
#include "faults/qrtFaultsFixture.h"
#include "harness/qrtCompositingGraphEngine.h"
#include "harness/qrtFakeSegment.h"
#include "harness/qrtRecordingObserver.h"

namespace QRT_0_81 {

using Extent = AllocationFaults::Extent;

namespace {

List<SharedPtr<ExternalSegment>> twoSegments() {
    List<SharedPtr<ExternalSegment>> segments;
    segments.append(FakeSegment::create("a segment with a name that is too long to be stored in place", {}));
    FakeSegment::Traits inMemory;
    inMemory.isRam = true;
    segments.append(FakeSegment::create("another one that is rendered in memory", inMemory));
    return segments;
}

/// Made while memory is plenty: a host's own allocations are not the player's.
List<SharedPtr<ExternalSegment>> hostSegments;

/// Something that a host does; `prepare` makes sure that there is something to be done.
struct Step {
    char const* name;
    std::function<void(Player&)> prepare;
    std::function<Status(Player&)> run;
};

Status fetched(Player& player, int64 frame) {
    SharedPtr<VideoBuffer> buffer;
    return player.getVideoBuffer(frame, buffer);
}

const VideoBufferResolution larger(32, 16, 4, 8, false);

std::vector<Step> const& steps() {
    static const SharedPtr<Composition> composition = FakeComposition::create(0, 100);
    static RecordingObserver observer;
    static const auto nothing = [](Player&) {};
    static const auto emptied = [](Player& player) { (void)player.setComposition(composition, twoSegments()); };
    static const std::vector<Step> all{
        {"setComposition", nothing, [](Player& player) { return player.setComposition(composition, hostSegments); }},
        {"updateComposition", nothing,
         [](Player& player) { return player.updateComposition(composition, "a clip of the second track has moved"); }},
        {"fetchMissed", emptied, [](Player& player) { return fetched(player, 81); }},
        {"fetchCached", [](Player& player) { (void)fetched(player, 81); },
         [](Player& player) { return fetched(player, 81); }},
        {"fetchInMemory",
         [](Player& player) {
             (void)player.setRamOutputs(true);
             emptied(player);
         },
         [](Player& player) { return fetched(player, 7); }},
        {"lookAhead",
         [](Player& player) {
             (void)player.setRamOutputs(false);
             emptied(player);
         },
         [](Player& player) {
             const auto params = playParams(0, 0, 99, 1, PlayParams::loop, PlayParams::all);
             Status status = player.startProducing(params);
             for (int64 frame = 0; frame < 6; ++frame) {
                 if (const Status one = fetched(player, frame); one.failure()) status = one;
             }
             const Status stopped = player.stopProducing();
             return status.failure() ? status : stopped;
         }},
        {"startAndStop", emptied,
         [](Player& player) {
             const Status status = player.startProducing(playParams(0, 0, 99));
             const Status stopped = player.stopProducing();
             return status.failure() ? status : stopped;
         }},
        {"setHeadFrames", [](Player& player) { (void)player.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 2); },
         [](Player& player) { return player.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 3); }},
        {"setPref", nothing, [](Player& player) { return player.setPref("FAKE_QUALITY", 3); }},
        {"getPref", nothing,
         [](Player& player) {
             int value = 0;
             return player.getPref("FAKE_QUALITY", value);
         }},
        {"getPrefs", nothing,
         [](Player& player) {
             Vector<String> names;
             return player.getPrefs(names);
         }},
        {"setVideoResolution", [](Player& player) { (void)player.setVideoResolution(smallRgba8); },
         [](Player& player) { return player.setVideoResolution(larger); }},
        {"setRamOutputs",
         [](Player& player) {
             (void)player.setVideoResolution(smallRgba8);
             (void)player.setRamOutputs(false);
         },
         [](Player& player) { return player.setRamOutputs(true); }},
        {"setVideoFrameRate", [](Player& player) { (void)player.setRamOutputs(false); },
         [](Player& player) { return player.setVideoFrameRate(Rational(24, 1)); }},
        {"setAudioFormat", nothing,
         [](Player& player) { return player.setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new StereoFloat)); }},
        {"fillAudioBuffer", nothing,
         [](Player& player) {
             char samples[64] = {};
             return player.fillAudioBuffer(samples, sizeof samples, 48000);
         }},
        {"getCacheStats", [](Player& player) { (void)fetched(player, 5); },
         [](Player& player) {
             ConstSharedPtr<CacheStats> stats;
             return player.getCacheStats(CacheStats::CacheType::producer, stats);
         }},
        {"observers", [](Player& player) { player.removeObserver(&observer); },
         [](Player& player) {
             observer.clear();
             player.addObserver(&observer);
             const Status status = player.setPref("FAKE_QUALITY", 3);
             player.removeObserver(&observer);
             const bool isTold = observer.count() == 1;
             return status.success() && !isTold ? Status(Status::general_failure) : status;
         }},
        {"setExternalSegmentCacheConstraint",
         [](Player& player) {
             (void)player.setExternalSegmentCacheConstraint(Resource::Type::ram,
                                                            ResourceConstraint::ResizeMode::automatic, 0, 2);
         },
         [](Player& player) {
             return player.setExternalSegmentCacheConstraint(Resource::Type::ram,
                                                             ResourceConstraint::ResizeMode::automatic, 0, 1);
         }},
    };
    return all;
}

}  // namespace

class AllocationFaultsFixture : public FaultsFixture {
protected:
    AllocationFaultsFixture() {
        player = Player::create(smallRgba8, CompositingGraphEngine::create);
        hostSegments = twoSegments();
    }
    void TearDown() override {
        FaultsFixture::TearDown();
        hostSegments.clear();
    }

    /// Tries with the first allocation failing, the second, ..., until there is none left to fail; how many failed.
    size_t forEachAllocation(Extent extent,
                             std::function<void(size_t n, Extent extent, size_t& numFailed)> const& run) {
        for (size_t n = 1;; ++n) {
            size_t numFailed = 0;
            run(n, extent, numFailed);
            if (HasFatalFailure() || numFailed == 0) return n - 1;
        }
    }

    /// The identity of the composition that a frame shows; the picture begins with its stripe.
    [[nodiscard]] float identityIn(SharedPtr<VideoBuffer> const& buffer) const {
        const VideoBufferResolution format = buffer->getResolution();
        unsigned int texture = 0;
        if (buffer->getTexture(texture).success())
            return host.readTexture(texture, format.getWidth(), format.getHeight())[2];
        void* data = nullptr;
        return buffer->getData(data).success() ? static_cast<unsigned char const*>(data)[2] : -1.0f;
    }
    /// What is cached is of the composition that would be rendered now.
    void expectNoFrameOfAnotherComposition(int64 cachedBefore) {
        SharedPtr<VideoBuffer> cached;
        SharedPtr<VideoBuffer> rendered;
        if (fetch(cachedBefore, cached).failure() || fetch(cachedBefore + 1, rendered).failure()) return;
        EXPECT_EQ(identityIn(cached), identityIn(rendered));
    }
    void expectFrame(int64 frame) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(fetch(frame, buffer).get(), Status::ok);
        ASSERT_TRUE(buffer);
        EXPECT_EQ(buffer->getResolution(), player->getVideoResolution());
    }
};

class AllocationFaultsIn : public AllocationFaultsFixture, public ::testing::WithParamInterface<Step> {};

TEST_P(AllocationFaultsIn, eachIsAnswered) {
    start();
    for (const auto type : {Resource::Type::ram, Resource::Type::vram}) {
        (void)player->setExternalSegmentCacheConstraint(type, ResourceConstraint::ResizeMode::automatic, 0, 1);
    }
    size_t total = 0;
    const SharedPtr<FakeComposition> composition = FakeComposition::create(0, 100);
    composition->identity = 17;
    constexpr int64 cachedBefore = 95;
    for (const Extent extent : {Extent::once, Extent::fromThenOn}) {
        total += forEachAllocation(extent, [&](size_t n, Extent how, size_t& numFailed) {
            ASSERT_EQ(player->setComposition(composition, twoSegments()).get(), Status::ok);
            GetParam().prepare(*player);
            expectFrame(cachedBefore);
            log.clear();
            Status status;
            {
                const AllocationFaults faults(n, how);
                status = GetParam().run(*player);
                numFailed = faults.count();
            }
            if (numFailed == 0) {
                EXPECT_EQ(status.get(), Status::ok);
            } else if (status.failure() && how == Extent::once) {
                EXPECT_FALSE(log.messages().empty()) << "allocation " << n;
            }
            for (auto const& line : log.lines())
                EXPECT_FALSE(line.empty()) << "allocation " << n;
            (void)player->stopProducing();  // for which there may have been no memory
            expectNoFrameOfAnotherComposition(cachedBefore);
            ASSERT_EQ(player->setComposition(composition, twoSegments()).get(), Status::ok);
            expectFrame(static_cast<int64>(n % 90));
        });
    }
    std::cout << total << " allocations failed\n";
    ASSERT_EQ(player->setVideoResolution(smallRgba8).get(), Status::ok);
    ASSERT_EQ(player->setRamOutputs(false).get(), Status::ok);
    expectWorking();
    EXPECT_EQ(player->uninitialize().get(), Status::ok);
}

INSTANTIATE_TEST_SUITE_P(Steps, AllocationFaultsIn, ::testing::ValuesIn(steps()),
                         [](auto const& step) { return step.param.name; });

TEST_F(AllocationFaultsFixture, ofAWholeLifeLeaveNothingBehind) {
    player.reset();
    FakeGraphEngine::resetScript();
    const int numTextures = host.countTextures();
    size_t total = 0;
    for (const Extent extent : {Extent::once, Extent::fromThenOn}) {
        total += forEachAllocation(extent, [&](size_t n, Extent how, size_t& numFailed) {
            const AllocationFaults faults(n, how);
            player = Player::create(smallRgba8, CompositingGraphEngine::create);
            if (player) {
                if (player->initialize(host.nativeContext(), host.nativeWindow()).success()) {
                    (void)setComposition(FakeComposition::create(0, 100));
                    (void)fetch(3);
                }
                const Status ended = player->uninitialize();
                EXPECT_TRUE(ended.success() || ended == Status::not_initialized) << "allocation " << n;
            }
            player.reset();
            numFailed = faults.count();
            EXPECT_EQ(FakeGraphEngine::script().numDestroyed, FakeGraphEngine::script().numCreated);
        });
    }
    std::cout << total << " allocations failed\n";
    EXPECT_EQ(host.countTextures(), numTextures);
}

}  // namespace QRT_0_81
