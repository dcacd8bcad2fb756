// The order of the virtual operations is part of the binary interface: hosts built against an earlier library call by
// position. These tests call through the raw table.
#include "foundation/core/qrtObserver.h"
#include "harness/qrtPlayerFixture.h"
#include "harness/qrtVirtualTable.h"

namespace QRT_0_81 {

struct PlayerInspector {
    static GraphEngineInterface const* graphEngine(Player const& player) { return player.getGraphEngine(); }
};

namespace {

/// The table entry of a slot. In the Itanium C++ ABI the virtual destructor, slot 0, takes two entries.
template <class Function>
Function* entry(Player const* player, int slot) {
    void** const table = *reinterpret_cast<void** const*>(player);
    return reinterpret_cast<Function*>(table[slot == 0 ? 0 : slot + 1]);
}

class CountingObserver final : public Observer {
public:
    ~CountingObserver() override { stopObserving(); }
    void update(Subject*, NotificationHint const&) override { ++numUpdates; }
    int numUpdates = 0;
};

class SomeAudioFormat final : public AudioFormatInterface {
public:
    [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override { return sampleFrames * 4; }
    [[nodiscard]] int32 getSampleRate() const override { return 48000; }
};

}  // namespace

class PlayerSlotOrder : public PlayerFixture {
protected:
    template <class Result, class... Arguments>
    Result call(int slot, Arguments... arguments) {
        return entry<Result(Player*, Arguments...)>(player.get(), slot)(player.get(), arguments...);
    }
};

TEST_F(PlayerSlotOrder, slots1To3ReachThePreferences) {
    EXPECT_EQ((call<Status, String const&, int>(1, Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, 7).get()), Status::ok);
    int value = 0;
    EXPECT_EQ((call<Status, String const&, int&>(2, Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, value).get()), Status::ok);
    EXPECT_EQ(value, 7);
    Vector<String> names;
    EXPECT_EQ((call<Status, Vector<String>&>(3, names).get()), Status::ok);
    ASSERT_EQ(names.size(), 3u);
    EXPECT_EQ(names[2], Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES);
}

TEST_F(PlayerSlotOrder, slots4To9ReachLifeCompositionAndFrames) {
    EXPECT_EQ((call<Status, void*, void*>(4, host.nativeContext(), host.nativeWindow()).get()), Status::ok);
    const SharedPtr<Composition> composition = FakeComposition::create(0, 10);
    const List<SharedPtr<ExternalSegment>> none;
    EXPECT_EQ(
        (call<Status, SharedPtr<Composition> const&, List<SharedPtr<ExternalSegment>> const&>(6, composition, none)
             .get()),
        Status::ok);
    EXPECT_EQ((call<Status, SharedPtr<Composition> const&, String const&>(7, composition, "moved a clip").get()),
              Status::ok);
    EXPECT_EQ(FakeGraphEngine::countOf("updateComposition moved a clip"), 1);
    EXPECT_FALSE((call<bool, int64>(8, 4)));
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ((call<Status, int64, SharedPtr<VideoBuffer>&>(9, 4, buffer).get()), Status::ok);
    EXPECT_EQ(frameIn(buffer), 4);
    EXPECT_TRUE((call<bool, int64>(8, 4)));
    buffer.reset();
    EXPECT_EQ((call<Status>(5).get()), Status::ok);
    EXPECT_EQ((call<Status>(5).get()), Status::not_initialized);
}

TEST_F(PlayerSlotOrder, slots10To12ReachAudioAndProduction) {
    start();
    char samples[8] = {};
    EXPECT_EQ((call<Status, char*, uint64, uint64>(10, samples, 8, 123).get()), Status::ok);
    EXPECT_EQ(FakeGraphEngine::countOf("fillAudio no format 8 at 123"), 1);
    const SharedPtr<PlayParams> params = playParams(0, 0, 50);
    EXPECT_EQ((call<Status, SharedPtr<PlayParams> const&>(11, params).get()), Status::ok);
    EXPECT_EQ((call<Status, SharedPtr<PlayParams> const&>(11, params).get()), Status::already_producing);
    EXPECT_EQ((call<Status>(12).get()), Status::ok);
    EXPECT_EQ((call<Status>(12).get()), Status::not_producing);
}

TEST_F(PlayerSlotOrder, slots13To18ReachTheVideoFormat) {
    start();
    const VideoBufferResolution resolution(20, 10, 3, 8, false);
    EXPECT_EQ((call<Status, VideoBufferResolution const&>(13, resolution).get()), Status::ok);
    EXPECT_EQ((call<VideoBufferResolution>(14)), resolution);
    const Rational rate(30, 1);
    EXPECT_EQ((call<Status, Rational const&>(15, rate).get()), Status::ok);
    EXPECT_EQ((call<Rational>(16)), rate);
    const Rational sourceRate(50, 1);
    EXPECT_EQ((call<Status, Rational const&>(17, sourceRate).get()), Status::ok);
    EXPECT_EQ((call<Rational>(18)), sourceRate);
    EXPECT_EQ((call<Rational>(16)), rate);
}

TEST_F(PlayerSlotOrder, slots19And20ReachTheExternalSegmentCache) {
    EXPECT_EQ((call<Status, Resource::Type, ResourceConstraint::ResizeMode, uint64, uint64>(
                   19, Resource::Type::vram, ResourceConstraint::ResizeMode::automatic, 3, 5)
                   .get()),
              Status::ok);
    ResourceConstraint::ResizeMode mode{};
    uint64 first = 0;
    uint64 second = 0;
    call<void, Resource::Type, ResourceConstraint::ResizeMode&, uint64&, uint64&>(20, Resource::Type::vram, mode, first,
                                                                                  second);
    EXPECT_EQ(mode, ResourceConstraint::ResizeMode::automatic);
    EXPECT_EQ(first, 3u);
    EXPECT_EQ(second, 5u);
}

TEST_F(PlayerSlotOrder, slots21To24ReachAudioFormatAndRamOutputs) {
    const ConstSharedPtr<AudioFormatInterface> format(new SomeAudioFormat);
    EXPECT_EQ((call<Status, ConstSharedPtr<AudioFormatInterface> const&>(21, format).get()), Status::ok);
    EXPECT_EQ((call<ConstSharedPtr<AudioFormatInterface>>(22)), format);
    EXPECT_EQ((call<Status, bool>(23, true).get()), Status::ok);
    EXPECT_TRUE((call<bool>(24)));
}

TEST_F(PlayerSlotOrder, slots25To28ReachStatisticsObserversAndTokenResolver) {
    ConstSharedPtr<CacheStats> stats;
    EXPECT_EQ((call<Status, CacheStats::CacheType, ConstSharedPtr<CacheStats>&>(25, CacheStats::CacheType::graph_engine,
                                                                                stats)
                   .get()),
              Status::ok);
    ASSERT_TRUE(stats);
    EXPECT_EQ(stats->getFrameRanges()[0].first, 100);

    CountingObserver observer;
    call<void, Observer*>(26, &observer);
    (void)player->setPref("FAKE_QUALITY", 9);
    EXPECT_EQ(observer.numUpdates, 1);
    call<void, Observer*>(27, &observer);
    (void)player->setPref("FAKE_QUALITY", 8);
    EXPECT_EQ(observer.numUpdates, 1);

    EXPECT_TRUE((call<SharedPtr<TokenResolver>>(28)));
}

TEST_F(PlayerSlotOrder, slot0IsTheDestructorAndThePreferencesTableIsTheMainOne) {
    EXPECT_EQ(static_cast<void const*>(static_cast<Prefs const*>(player.get())),
              static_cast<void const*>(player.get()));
    struct Released final : Player {  // a player outside of any pointer, so that the table's own entry may delete it
        Released() : Player(smallRgba8, FakeGraphEngine::create) {}
    };
    Player* const released = new Released;
    void** const table = *reinterpret_cast<void***>(released);
    constexpr int deletingDestructor = 1;
    ASSERT_EQ(FakeGraphEngine::script().numDestroyed, 0);
    reinterpret_cast<void (*)(Player*)>(table[deletingDestructor])(released);
    EXPECT_EQ(FakeGraphEngine::script().numDestroyed, 1);
}

TEST_F(PlayerSlotOrder, theSecondTableIsThatOfReferenceCountingAndItsDestructorEndsTheWholePlayer) {
    struct Released final : Player {
        Released() : Player(smallRgba8, FakeGraphEngine::create) {}
    };
    RefCountedMT* const counted = new Released;
    EXPECT_NE(static_cast<void const*>(counted), static_cast<void const*>(static_cast<Player*>(counted)));
    callSlot<void>(1, counted);
    callSlot<void>(1, counted);
    EXPECT_EQ(callSlot<uint32>(3, counted), 2u);
    EXPECT_FALSE(callSlot<bool>(2, counted));
    EXPECT_TRUE(callSlot<bool>(2, counted));
    ASSERT_EQ(FakeGraphEngine::script().numDestroyed, 0);
    deleteThroughSlot0(counted);
    EXPECT_EQ(FakeGraphEngine::script().numDestroyed, 1);
}

TEST_F(PlayerSlotOrder, aPlayerHoldsNothingBesideItsTwoBasesButOnePointer) {
    EXPECT_EQ(sizeof(Player), sizeof(Prefs) + sizeof(RefCountedMT) + sizeof(void*));
}

TEST_F(PlayerSlotOrder, friendsReachTheGraphEngineOfTheMoment) {
    auto const* const first = PlayerInspector::graphEngine(*player);
    EXPECT_NE(dynamic_cast<FakeGraphEngine const*>(first), nullptr);
    start();
    EXPECT_EQ(PlayerInspector::graphEngine(*player), first);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(PlayerInspector::graphEngine(*player), nullptr);
}

}  // namespace QRT_0_81
