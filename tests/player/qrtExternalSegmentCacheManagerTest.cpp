// The frame cache of external segments: its budgets, what is found, and what is stale.
#include "qrtExternalSegmentCacheManager.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <string>
#include <thread>
#include <type_traits>

#include "harness/qrtAllocationFault.h"
#include "harness/qrtExternalSegmentCacheFixture.h"
#include "harness/qrtLogCapture.h"
#include "qrtVideoBufferPrivate.h"

namespace QRT_0_81 {

class ExternalSegmentCacheManagerTest : public ExternalSegmentCacheFixture {};

// ---- Constraints ----------------------------------------------------------------------------------------------------

struct Constraint {
    ResizeMode mode = ResizeMode::automatic;
    size_t first = 99;
    size_t second = 99;
    bool operator==(Constraint const& other) const = default;
};

namespace {

Constraint constraintOf(ExternalSegmentCacheManager const& manager, Resource::Type type) {
    Constraint constraint;
    manager.getConstraint(type, constraint.mode, constraint.first, constraint.second);
    return constraint;
}

}  // namespace

TEST_F(ExternalSegmentCacheManagerTest, isOffAndEmptyAtFirst) {
    static_assert(std::has_virtual_destructor_v<ExternalSegmentCacheManager>);
    for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram, otherType}) {
        EXPECT_EQ(constraintOf(manager, type), (Constraint{ResizeMode::fixed, 0, 0}));
    }
    EXPECT_FALSE(manager.isEnabled());
    for (const bool vram : {false, true}) {
        EXPECT_FALSE(manager.isEnabled(vram));
        EXPECT_TRUE(manager.isEmpty(vram));
    }
}

TEST_F(ExternalSegmentCacheManagerTest, aConstraintIsReportedAsItWasSetForItsKindAlone) {
    EXPECT_EQ(manager.setConstraint(Resource::Type::ram, ResizeMode::automatic, 7, 3).get(), Status::ok);
    EXPECT_EQ(constraintOf(manager, Resource::Type::ram), (Constraint{ResizeMode::automatic, 7, 3}));
    EXPECT_EQ(constraintOf(manager, Resource::Type::vram), (Constraint{ResizeMode::fixed, 0, 0}));
    EXPECT_EQ(manager.setConstraint(Resource::Type::vram, static_cast<ResizeMode>(-4), 1, 2).get(), Status::ok);
    EXPECT_EQ(constraintOf(manager, Resource::Type::vram), (Constraint{static_cast<ResizeMode>(-4), 1, 2}));
    EXPECT_EQ(constraintOf(manager, otherType), (Constraint{static_cast<ResizeMode>(-4), 1, 2}));
    EXPECT_EQ(constraintOf(manager, Resource::Type::ram), (Constraint{ResizeMode::automatic, 7, 3}));
}

TEST_F(ExternalSegmentCacheManagerTest, theSecondSizeAloneSwitchesAKindOn) {
    (void)manager.setConstraint(Resource::Type::ram, ResizeMode::automatic, 5, 0);
    EXPECT_FALSE(manager.isEnabled());
    (void)manager.setConstraint(Resource::Type::ram, ResizeMode::fixed, 0, 1);
    EXPECT_TRUE(manager.isEnabled());
    EXPECT_TRUE(manager.isEnabled(false));
    EXPECT_FALSE(manager.isEnabled(true));
    (void)manager.setConstraint(Resource::Type::ram, ResizeMode::fixed, 0, 0);
    (void)manager.setConstraint(Resource::Type::vram, ResizeMode::fixed, 0, 1);
    EXPECT_TRUE(manager.isEnabled());
    EXPECT_FALSE(manager.isEnabled(false));
    EXPECT_TRUE(manager.isEnabled(true));
}

TEST_F(ExternalSegmentCacheManagerTest, theSameConstraintAgainKeepsTheFrames) {
    for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram}) {
        (void)manager.setConstraint(type, ResizeMode::automatic, 3, 1);
    }
    ASSERT_EQ(putRam("a", 1).get(), Status::ok);
    ASSERT_EQ(putTexture("a", 1).get(), Status::ok);
    for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram}) {
        EXPECT_EQ(manager.setConstraint(type, ResizeMode::automatic, 3, 1).get(), Status::ok);
    }
    EXPECT_EQ(getRam("a", 1), Status::ok);
    EXPECT_EQ(getTexture("a", 1), Status::ok);
}

TEST_F(ExternalSegmentCacheManagerTest, anyChangeEmptiesTheCacheOfItsKindAlone) {
    constexpr Constraint before{ResizeMode::fixed, 3, 1};
    constexpr std::array changes{Constraint{ResizeMode::automatic, 3, 1}, Constraint{ResizeMode::fixed, 4, 1},
                                 Constraint{ResizeMode::fixed, 3, 2}, Constraint{ResizeMode::fixed, 3, 0}};
    for (const bool vram : {false, true}) {
        for (Constraint const& change : changes) {
            for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram}) {
                (void)manager.setConstraint(type, before.mode, before.first, before.second);
            }
            ASSERT_EQ(putRam("a", 1).get(), Status::ok);
            ASSERT_EQ(putTexture("a", 1).get(), Status::ok);
            EXPECT_EQ(manager
                          .setConstraint(vram ? Resource::Type::vram : Resource::Type::ram, change.mode, change.first,
                                         change.second)
                          .get(),
                      Status::ok);
            EXPECT_TRUE(manager.isEmpty(vram));
            EXPECT_FALSE(manager.isEmpty(!vram));
        }
    }
}

TEST_F(ExternalSegmentCacheManagerTest, aTypeThatIsNeitherKindIsStoredAsVramAndTouchesNoPoolAndNoCache) {
    setBudget(Resource::Type::vram, 1);
    ASSERT_EQ(putTexture("a", 1, {1, 1, 1, 1}, oneMebibyte).get(), Status::ok);
    EXPECT_EQ(manager.setConstraint(otherType, ResizeMode::automatic, 8, 2).get(), Status::ok);
    EXPECT_EQ(constraintOf(manager, Resource::Type::vram), (Constraint{ResizeMode::automatic, 8, 2}));
    EXPECT_EQ(constraintOf(manager, Resource::Type::ram), (Constraint{ResizeMode::fixed, 0, 0}));
    EXPECT_EQ(getTexture("a", 1, {1, 1, 1, 1}, oneMebibyte), Status::ok);
    // The budget that counts is still the old one: a second frame takes the first one's place.
    ASSERT_EQ(putTexture("a", 2, {2, 2, 2, 2}, oneMebibyte).get(), Status::ok);
    EXPECT_EQ(getTexture("a", 1, {1, 1, 1, 1}, oneMebibyte), Status::not_in_cache);
}

TEST_F(ExternalSegmentCacheManagerTest, aTypeThatIsNeitherKindMakesNoPoolEither) {
    EXPECT_EQ(manager.setConstraint(otherType, ResizeMode::fixed, 0, 2).get(), Status::ok);
    EXPECT_TRUE(manager.isEnabled(true));
    EXPECT_EQ(putTexture("a", 1).get(), Status::not_in_cache);
    EXPECT_EQ(getTexture("a", 1), Status::not_in_cache);
    EXPECT_EQ(manager.invalidate(true, "a", 1).get(), Status::ok);
}

// ---- Frames in memory -----------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentCacheManagerTest, aFrameInMemoryComesBackByteForByte) {
    setBudget(Resource::Type::ram, 1);
    Block block(smallSize);
    for (size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<unsigned char>(i * 7);
    ASSERT_EQ(manager.putRamFrame("a", -3, small, block.data(), block.size()).get(), Status::ok);
    Block copy(smallSize);
    EXPECT_EQ(manager.getRamFrame("a", -3, small, copy.data(), copy.size()).get(), Status::ok);
    EXPECT_EQ(copy, block);
}

TEST_F(ExternalSegmentCacheManagerTest, framesAreToldApartBySegmentAndNumber) {
    setBudget(Resource::Type::ram, 1);
    ASSERT_EQ(putRam("a", 1, 11).get(), Status::ok);
    ASSERT_EQ(putRam("a", -1, 12).get(), Status::ok);
    ASSERT_EQ(putRam("b", 1, 13).get(), Status::ok);
    EXPECT_EQ(getRam("a", 1, 11), Status::ok);
    EXPECT_EQ(getRam("a", -1, 12), Status::ok);
    EXPECT_EQ(getRam("b", 1, 13), Status::ok);
    EXPECT_EQ(getRam("b", -1), Status::not_in_cache);
}

TEST_F(ExternalSegmentCacheManagerTest, theKeyIsTheIdentifierAnUnderscoreAndTheNumber) {
    EXPECT_EQ(ExternalSegmentCacheManager::cacheKey("clip3", 48), String("clip3_48"));
    EXPECT_EQ(ExternalSegmentCacheManager::cacheKey("clip_3", 0), String("clip_3_0"));
    EXPECT_EQ(ExternalSegmentCacheManager::cacheKey("", -7), String("_-7"));
    EXPECT_EQ(ExternalSegmentCacheManager::cacheKey("a", LLONG_MIN), String("a_-9223372036854775808"));
}

TEST_F(ExternalSegmentCacheManagerTest, aFrameStoredAgainReplacesTheOldOne) {
    setBudget(Resource::Type::ram, 1);
    ASSERT_EQ(putRam("a", 1, 11).get(), Status::ok);
    ASSERT_EQ(putRam("a", 1, 22).get(), Status::ok);
    EXPECT_EQ(getRam("a", 1, 22), Status::ok);
}

TEST_F(ExternalSegmentCacheManagerTest, aLookUpWithAnotherByteSizeDropsTheFrame) {
    setBudget(Resource::Type::ram, 1);
    ASSERT_EQ(putRam("a", 1).get(), Status::ok);
    Block block(smallSize - 1);
    EXPECT_EQ(manager.getRamFrame("a", 1, small, block.data(), block.size()).get(), 1536);
    EXPECT_TRUE(manager.isEmpty(false));
    EXPECT_EQ(getRam("a", 1), Status::not_in_cache);
}

TEST_F(ExternalSegmentCacheManagerTest, aLookUpWithAnotherFormatDropsTheFrame) {
    setBudget(Resource::Type::ram, 1);
    const VideoBufferResolution integers(16, 8, 4, 16, false);
    const VideoBufferResolution floats(16, 8, 4, 16, true);  // as large, and no reason for the pool to be rebuilt
    ASSERT_EQ(putRam("a", 1, 5, integers).get(), Status::ok);
    EXPECT_EQ(getRam("a", 1, 5, floats), 1536);
    EXPECT_TRUE(manager.isEmpty(false));
}

TEST_F(ExternalSegmentCacheManagerTest, aRecordIsAsLargeAsThePoolsBlocksWhateverWasStored) {
    setBudget(Resource::Type::ram, 1);
    const Block part(10, 9);
    ASSERT_EQ(manager.putRamFrame("a", 1, small, part.data(), part.size()).get(), Status::ok);
    Block whole(smallSize);
    ASSERT_EQ(manager.getRamFrame("a", 1, small, whole.data(), whole.size()).get(), Status::ok);
    EXPECT_EQ(Block(whole.begin(), whole.begin() + 10), part);
    const Block more(smallSize + 100, 8);  // the rest is left out
    ASSERT_EQ(manager.putRamFrame("a", 2, small, more.data(), more.size()).get(), Status::ok);
    EXPECT_EQ(getRam("a", 2, 8), Status::ok);
}

TEST_F(ExternalSegmentCacheManagerTest, aNullPointerOrASizeOfZeroStoresNothing) {
    setBudget(Resource::Type::ram, 1);
    const Block block(smallSize);
    EXPECT_EQ(manager.putRamFrame("a", 1, small, nullptr, smallSize).get(), 3);
    EXPECT_EQ(manager.putRamFrame("a", 1, small, block.data(), 0).get(), 3);
    EXPECT_TRUE(manager.isEmpty(false));
    ASSERT_EQ(putRam("a", 1).get(), Status::ok);
    EXPECT_EQ(manager.getRamFrame("a", 1, small, nullptr, smallSize).get(), 3);
    EXPECT_EQ(getRam("a", 1), Status::ok) << "a bad destination costs no frame";
}

// ---- Textures -------------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentCacheManagerTest, aTextureComesBackPixelForPixelForBothTargets) {
    setBudget(Resource::Type::vram, 1);
    for (const bool rectangle : {true, false}) {
        const Pixel colour = rectangle ? Pixel{10, 20, 30, 40} : Pixel{50, 60, 70, 80};
        ASSERT_EQ(putTexture("a", 5, colour, small, rectangle).get(), Status::ok);
        EXPECT_EQ(getTexture("a", 5, colour, small, rectangle), Status::ok);
    }
}

TEST_F(ExternalSegmentCacheManagerTest, aLookUpForTheOtherTargetDropsTheTexture) {
    setBudget(Resource::Type::vram, 1);
    ASSERT_EQ(putTexture("a", 5, {1, 2, 3, 4}, small, true).get(), Status::ok);
    EXPECT_EQ(getTexture("a", 5, {1, 2, 3, 4}, small, false), 1536);
    EXPECT_TRUE(manager.isEmpty(true));
}

TEST_F(ExternalSegmentCacheManagerTest, aLookUpWithAnotherFormatDropsTheTexture) {
    setBudget(Resource::Type::vram, 1);
    ASSERT_EQ(putTexture("a", 5).get(), Status::ok);
    EXPECT_EQ(getTexture("a", 5, {1, 2, 3, 4}, VideoBufferResolution(16, 9, 4, 8, false)), 1536);
    EXPECT_TRUE(manager.isEmpty(true));
}

TEST_F(ExternalSegmentCacheManagerTest, texture0StoresNothing) {
    setBudget(Resource::Type::vram, 1);
    EXPECT_EQ(manager.putTextureFrame("a", 5, small, 1, 0).get(), 3);
    EXPECT_TRUE(manager.isEmpty(true));
    ASSERT_EQ(putTexture("a", 5).get(), Status::ok);
    EXPECT_EQ(manager.getTextureFrame("a", 5, small, 1, 0).get(), 3);
    EXPECT_EQ(getTexture("a", 5), Status::ok);
}

TEST_F(ExternalSegmentCacheManagerTest, aTextureThatDoesNotExistStoresNothing) {
    setBudget(Resource::Type::vram, 1);
    EXPECT_EQ(manager.putTextureFrame("a", 5, small, 1, 4711).get(), 1);
    EXPECT_TRUE(manager.isEmpty(true));
}

TEST_F(ExternalSegmentCacheManagerTest, aFormatThatThePoolRefusesIsPassedOn) {
    setBudget(Resource::Type::vram, 1);
    const VideoBufferResolution twoChannels(16, 8, 2, 8, false);
    EXPECT_EQ(manager.putTextureFrame("a", 5, twoChannels, 1, 1).get(), 262);
    EXPECT_EQ(manager.getTextureFrame("a", 5, twoChannels, 1, 1).get(), 262);
    ASSERT_EQ(putTexture("a", 5).get(), Status::ok) << "the next good format finds the pool whole";
}

// ---- Off ------------------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentCacheManagerTest, offItFindsNothing) {
    EXPECT_EQ(getRam("a", 1), 1536);
    EXPECT_EQ(getTexture("a", 1), 1536);
}

TEST_F(ExternalSegmentCacheManagerTest, aKindThatNeverHadABudgetStoresNothing) {
    EXPECT_EQ(putRam("a", 1).get(), 1536);
    EXPECT_EQ(putTexture("a", 1).get(), 1536);
    setBudget(Resource::Type::ram, 1);
    EXPECT_EQ(putTexture("a", 1).get(), 1536) << "the other kind's budget is not its own";
}

TEST_F(ExternalSegmentCacheManagerTest, aKindSwitchedOffAgainHasRoomForNothing) {
    for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram}) {
        setBudget(type, 1);
        setBudget(type, 0);
    }
    EXPECT_EQ(putRam("a", 1).get(), 260);
    EXPECT_EQ(putTexture("a", 1).get(), 260);
    EXPECT_EQ(getRam("a", 1), 1536);
}

// ---- Budgets --------------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentCacheManagerTest, withRoomForOneFrameTheSecondEvictsTheFirst) {
    setBudget(Resource::Type::ram, 1);
    setBudget(Resource::Type::vram, 1);
    for (const int64 frame : {1, 2}) {
        const auto value = static_cast<unsigned char>(frame);
        ASSERT_EQ(putRam("a", frame, value, oneMebibyte).get(), Status::ok);
        ASSERT_EQ(putTexture("a", frame, {value, value, value, value}, oneMebibyte).get(), Status::ok);
    }
    EXPECT_EQ(getRam("a", 1, 1, oneMebibyte), 1536);
    EXPECT_EQ(getRam("a", 2, 2, oneMebibyte), Status::ok);
    EXPECT_EQ(getTexture("a", 1, {1, 1, 1, 1}, oneMebibyte), 1536);
    EXPECT_EQ(getTexture("a", 2, {2, 2, 2, 2}, oneMebibyte), Status::ok);
}

TEST_F(ExternalSegmentCacheManagerTest, aFullBudgetGivesUpOneFrameTheLeastRecentlyUsed) {
    setBudget(Resource::Type::ram, 1);
    for (const int64 frame : {1, 2, 3, 4})
        ASSERT_EQ(putRam("a", frame, 7, quarterMebibyte).get(), Status::ok);
    ASSERT_EQ(getRam("a", 1, 7, quarterMebibyte), Status::ok);
    ASSERT_EQ(putRam("a", 5, 7, quarterMebibyte).get(), Status::ok);
    EXPECT_EQ(getRam("a", 2, 7, quarterMebibyte), 1536);
    for (const int64 frame : {1, 3, 4, 5})
        EXPECT_EQ(getRam("a", frame, 7, quarterMebibyte), Status::ok);
}

TEST_F(ExternalSegmentCacheManagerTest, aFrameLargerThanTheBudgetIsRefusedWith260) {
    const VideoBufferResolution tooLarge(512, 513, 4, 8, false);
    setBudget(Resource::Type::ram, 1);
    setBudget(Resource::Type::vram, 1);
    EXPECT_EQ(putRam("a", 1, 1, tooLarge).get(), 260);
    EXPECT_EQ(putTexture("a", 1, {1, 1, 1, 1}, tooLarge).get(), 260);
    // Neither does it find room by evicting what is there.
    for (const int64 frame : {1, 2, 3})
        ASSERT_EQ(putRam("a", frame).get(), Status::ok);
    EXPECT_EQ(putRam("a", 4, 1, tooLarge).get(), 260);
    EXPECT_TRUE(manager.isEmpty(false));
}

TEST_F(ExternalSegmentCacheManagerTest, aFrameForWhichNoObjectCanBeMadeIsType1AndCostsNoOther) {
    setBudget(Resource::Type::ram, 1);
    setBudget(Resource::Type::vram, 1);
    ASSERT_EQ(putRam("a", 1).get(), Status::ok);
    ASSERT_EQ(putTexture("a", 1).get(), Status::ok);
    {
        const AllocationFault fault(sizeof(VideoBufferPrivate));
        EXPECT_EQ(putRam("a", 2).get(), 1);
        EXPECT_EQ(putTexture("a", 2).get(), 1);
    }
    EXPECT_EQ(getRam("a", 1), Status::ok);
    EXPECT_EQ(getTexture("a", 1), Status::ok);
    EXPECT_EQ(getRam("a", 2), 1536);
}

// ---- Life -----------------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentCacheManagerTest, aCopyRefersToTheSameFrames) {
    ExternalSegmentCacheManager copy(manager);
    setBudget(Resource::Type::ram, 1);
    EXPECT_TRUE(copy.isEnabled(false));
    ASSERT_EQ(putRam("a", 1, 3).get(), Status::ok);
    Block block(smallSize);
    EXPECT_EQ(copy.getRamFrame("a", 1, small, block.data(), block.size()).get(), Status::ok);
    copy.close();
    EXPECT_FALSE(manager.isEnabled());
    EXPECT_TRUE(manager.isEmpty(false));
}

TEST_F(ExternalSegmentCacheManagerTest, texturesThatAreReleasedAreMadeAnewWhenNextNeeded) {
    setBudget(Resource::Type::vram, 1);
    ASSERT_EQ(putTexture("a", 1).get(), Status::ok);
    EXPECT_NE(reaper->numAlive(), 0u);
    manager.releaseTextures();
    EXPECT_EQ(reaper->numAlive(), 0u);
    EXPECT_EQ(getTexture("a", 1), Status::not_in_cache);
    ASSERT_EQ(putTexture("a", 1).get(), Status::ok);
    EXPECT_EQ(getTexture("a", 1), Status::ok);
}

TEST_F(ExternalSegmentCacheManagerTest, itsEndDropsTheFramesInMemoryThenTheTexturesThenThePools) {
    LogCapture log;
    {
        ExternalSegmentCacheManager ending(reaper);
        (void)ending.setConstraint(Resource::Type::ram, ResizeMode::fixed, 0, 1);
        (void)ending.setConstraint(Resource::Type::vram, ResizeMode::fixed, 0, 1);
        const TestTexture texture(host.gl(), true, 512, 512);
        const Block block = blockOf(oneMebibyte, 1);
        ASSERT_EQ(ending.putTextureFrame("a", 1, oneMebibyte, 1, texture.name()).get(), Status::ok);
        ASSERT_EQ(ending.putRamFrame("a", 1, oneMebibyte, block.data(), block.size()).get(), Status::ok);
        log.clear();
    }
    const bool isDebugOn = std::getenv("QRT_DEBUG_PLAYER") != nullptr;
    EXPECT_EQ(log.lines(),
              isDebugOn ? (std::vector<std::string>{"Releasing a buffer remaining 1", "Releasing an FBO remaining 1",
                                                    "ResourcePoolFBO::uninitialize()-numDeletedFBO=1"})
                        : std::vector<std::string>{});
    EXPECT_EQ(reaper->numAlive(), 0u);
}

TEST_F(ExternalSegmentCacheManagerTest, aThousandChangesOfTheBudgetWhileFramesAreStoredLeaveNoTextureBehind) {
    setBudget(Resource::Type::ram, 1);  // on until the other thread has ended its work
    std::thread changing([&] {
        for (size_t i = 0; i < 1000; ++i)
            (void)manager.setConstraint(Resource::Type::vram, ResizeMode::fixed, i, 1 + i % 2);
        (void)manager.setConstraint(Resource::Type::vram, ResizeMode::fixed, 0, 0);
        (void)manager.setConstraint(Resource::Type::ram, ResizeMode::fixed, 0, 0);
    });
    const TestTexture texture(host.gl(), true, 512, 512);
    while (manager.isEnabled()) {
        (void)manager.putTextureFrame("a", 1, oneMebibyte, 1, texture.name());
        (void)manager.getTextureFrame("a", 1, oneMebibyte, 1, texture.name());
        (void)manager.invalidate(true, "a", INT_MIN, INT_MAX);
        reaper->reap();
    }
    changing.join();
    EXPECT_TRUE(manager.isEmpty(true));
    reaper->reap();
    EXPECT_EQ(reaper->numAlive(), 0u);
}

}  // namespace QRT_0_81
