// What stands in front of a host's segment: it passes through, or answers from the cache.
#include "qrtExternalSegmentWrapper.h"

#include <climits>
#include <cstdlib>
#include <string>
#include <vector>

#include "foundation/core/qrtNotificationHint.h"
#include "harness/qrtExternalSegmentWrapperFixture.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtVirtualTable.h"

namespace QRT_0_81 {

class ExternalSegmentWrapperTest : public ExternalSegmentWrapperFixture {};

// ---- Passing through ------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentWrapperTest, alwaysAnswersForItsSegmentWhoItIs) {
    for (const bool isOn : {false, true}) {
        if (isOn) switchOn();
        for (auto const& traits : {textureTraits, ramTraits, FakeSegment::Traits{1, false, false, false}}) {
            wrap(traits);
            EXPECT_EQ(&wrapper->getId(), &segment->getId());
            EXPECT_EQ(wrapper->getSubject(), traits.hasSubject ? &segment->subject : nullptr);
            EXPECT_EQ(wrapper->isRamSegment(), traits.isRam);
        }
    }
}

TEST_F(ExternalSegmentWrapperTest, isNothingButAPassageWhileBothKindsAreOff) {
    for (auto const& traits : {ownTextureTraits, ownMemoryTraits, textureTraits}) {
        wrap(traits);
        EXPECT_EQ(wrapper->hasOwnBuffers(), traits.hasOwnBuffers);
        for (int request = 0; request < 2; ++request) {
            EXPECT_EQ(wrapper->renderToTexture(texture.name(), 1, small, Time(-3, rate)).get(), Status::ok);
            EXPECT_EQ(renderToRam(7), Status::ok);
        }
        const unsigned int ownTexture = wrapper->getOwnTexture(9);
        EXPECT_EQ(ownTexture, segment->getOwnTexture(0));
        void* const ownMemory = wrapper->getOwnRamBuffer(small);
        EXPECT_EQ(ownMemory, segment->getOwnRamBuffer(small));
        const std::string toTexture = "renderToTexture " + std::to_string(texture.name()) + " 1 16x8 frame -3";
        const std::string toRam = "renderToRam 512 16x8 frame 7";
        EXPECT_EQ(segment->journal(), (Journal{"hasOwnBuffers", toTexture, toRam, toTexture, toRam, "getOwnTexture 9",
                                               "getOwnTexture 0", "getOwnRamBuffer 16x8", "getOwnRamBuffer 16x8"}));
        segment->renderStatus = 77;
        EXPECT_EQ(renderToTexture(1), 77);
        EXPECT_EQ(renderToRam(1), 77);
    }
    EXPECT_TRUE(manager.isEmpty(true));
    EXPECT_TRUE(manager.isEmpty(false));
}

TEST_F(ExternalSegmentWrapperTest, withCachingOnKeepsTheSegmentsOwnStorageOutOfReach) {
    switchOn();
    for (auto const& traits : {ownTextureTraits, ownMemoryTraits}) {
        wrap(traits);
        EXPECT_FALSE(wrapper->hasOwnBuffers());
        EXPECT_EQ(wrapper->getOwnTexture(1), 0u);
        EXPECT_EQ(wrapper->getOwnRamBuffer(small), nullptr);
        EXPECT_EQ(segment->journal(), Journal{});
    }
}

TEST_F(ExternalSegmentWrapperTest, isSwitchedOnByTheConstraintOfItsSegmentsKindAlone) {
    setBudget(Resource::Type::ram, 1);
    wrap(ownTextureTraits);
    EXPECT_TRUE(wrapper->hasOwnBuffers());
    wrap(ownMemoryTraits);
    EXPECT_FALSE(wrapper->hasOwnBuffers());
    setBudget(Resource::Type::ram, 0);
    setBudget(Resource::Type::vram, 1);
    EXPECT_TRUE(wrapper->hasOwnBuffers());
    wrap(ownTextureTraits);
    EXPECT_FALSE(wrapper->hasOwnBuffers());
}

TEST_F(ExternalSegmentWrapperTest, hasItsOperationsInTheOrderOfTheirSlots) {
    wrap(ownTextureTraits);
    ExternalSegment* const object = wrapper.get();
    callSlot<void>(1, object);
    EXPECT_EQ(callSlot<uint32>(3, object), 2u);
    EXPECT_FALSE(callSlot<bool>(2, object));
    EXPECT_EQ((callSlot<String const&>(4, object)), String("clip"));
    EXPECT_EQ(callSlot<Subject*>(5, object), &segment->subject);
    EXPECT_FALSE(callSlot<bool>(6, object));
    EXPECT_TRUE(callSlot<bool>(7, object));
    EXPECT_EQ((callSlot<void*, ExternalSegment, VideoBufferResolution const&>(8, object, small)),
              segment->getOwnRamBuffer(small));
    const Time time(4, rate);
    EXPECT_EQ((callSlot<Status, ExternalSegment, unsigned int, unsigned int, VideoBufferResolution const&, Time const&>(
                   10, object, texture.name(), 1, small, time)
                   .get()),
              Status::ok);
    EXPECT_EQ((callSlot<unsigned int, ExternalSegment, unsigned int>(9, object, 1)), segment->getOwnTexture(1));
    block.assign(smallSize, 0);
    EXPECT_EQ((callSlot<Status, ExternalSegment, void*, unsigned int, VideoBufferResolution const&, Time const&>(
                   11, object, block.data(), smallSize, small, time)
                   .get()),
              Status::ok);
    EXPECT_EQ(segment->renderedFrames(), (Frames{4, 4}));
}

TEST_F(ExternalSegmentWrapperTest, isASegmentFirstAndAnObserverSecond) {
    wrap(textureTraits);
    auto* const whole = dynamic_cast<ExternalSegmentWrapper*>(wrapper.get());
    EXPECT_EQ(static_cast<void*>(static_cast<ExternalSegment*>(whole)), static_cast<void*>(whole));
    EXPECT_LT(static_cast<void*>(whole), static_cast<void*>(static_cast<Observer*>(whole)));
    // The handler is slot 1 of the observer's table.
    switchOn();
    ASSERT_EQ(renderToTexture(10), Status::ok);
    const InvalidationHint hint(10, 10);
    callSlot<void, Observer, Subject*, NotificationHint const&>(1, static_cast<Observer*>(whole), nullptr, hint);
    EXPECT_TRUE(manager.isEmpty(true));
}

// ---- Rendering through the cache ------------------------------------------------------------------------------------

TEST_F(ExternalSegmentWrapperTest, aSecondRequestIsAnsweredFromTheCache) {
    switchOn();
    LogCapture log;
    wrap(textureTraits);
    for (int request = 0; request < 3; ++request) {
        ASSERT_EQ(renderToTexture(48), Status::ok);
        EXPECT_EQ(texture.pixel(15, 7), pictureOf(48));
    }
    EXPECT_EQ(segment->renderedFrames(), Frames{48});
    wrap(ramTraits);
    for (int request = 0; request < 3; ++request) {
        ASSERT_EQ(renderToRam(-2), Status::ok);
        EXPECT_EQ(block, filledWith(pictureOf(-2)));
    }
    EXPECT_EQ(segment->renderedFrames(), Frames{-2});

    const bool isDebugOn = std::getenv("QRT_DEBUG_PLAYER") != nullptr;
    const size_t once = isDebugOn ? 1 : 0;
    EXPECT_EQ(log.count("ExternalSegment VRAM: Rendered new frameNumber = 48"), once);
    EXPECT_EQ(log.count("ExternalSegment VRAM: Returned from cache frameNumber = 48"), 2 * once);
    EXPECT_EQ(log.count("ExternalSegment RAM: Rendered new frameNumber = -2"), once);
    EXPECT_EQ(log.count("ExternalSegment RAM: Returned from cache frameNumber = -2"), 2 * once);
    for (LogMsg const& message : log.messages()) {
        EXPECT_EQ(message.channel(), "QRT_PLAYER");
        if (message.text().find("ExternalSegment ") != std::string::npos) {
            EXPECT_EQ(message.file(), "src/player/private/qrtExternalSegmentWrapper");
            EXPECT_EQ(message.text().compare(0, 10, "thread_id="), 0);
        }
    }
}

TEST_F(ExternalSegmentWrapperTest, anotherFrameFormatOrTargetIsRenderedAnew) {
    switchOn();
    wrap(textureTraits);
    ASSERT_EQ(renderToTexture(1), Status::ok);
    ASSERT_EQ(renderToTexture(2), Status::ok);
    const TestTexture flat(host.gl(), false, 16, 8);
    ASSERT_EQ(wrapper->renderToTexture(flat.name(), 0, small, Time(2, rate)).get(), Status::ok);
    EXPECT_EQ(flat.pixel(3, 3), pictureOf(2));
    const VideoBufferResolution smaller(8, 8, 4, 8, false);
    ASSERT_EQ(wrapper->renderToTexture(texture.name(), 1, smaller, Time(1, rate)).get(), Status::ok);
    EXPECT_EQ(segment->renderedFrames(), (Frames{1, 2, 2, 1}));
}

TEST_F(ExternalSegmentWrapperTest, theFrameIsTheTickCountWhateverTheRate) {
    switchOn();
    wrap(textureTraits);
    ASSERT_EQ(wrapper->renderToTexture(texture.name(), 1, small, Time(30, Rational(30, 1))).get(), Status::ok);
    ASSERT_EQ(wrapper->renderToTexture(texture.name(), 1, small, Time(30, Rational(25, 1))).get(), Status::ok);
    EXPECT_EQ(segment->renderedFrames(), Frames{30});
}

TEST_F(ExternalSegmentWrapperTest, ofASegmentWithBuffersOfItsOwnBringsThePictureThroughTheCache) {
    switchOn();
    wrap(ownTextureTraits);
    for (int request = 0; request < 2; ++request) {
        ASSERT_EQ(renderToTexture(9), Status::ok);
        EXPECT_EQ(texture.pixel(15, 7), pictureOf(9));
    }
    EXPECT_EQ(segment->renderedFrames(), Frames{9});
    wrap(ownMemoryTraits);
    for (int request = 0; request < 2; ++request) {
        ASSERT_EQ(renderToRam(9), Status::ok);
        EXPECT_EQ(block, filledWith(pictureOf(9)));
    }
    EXPECT_EQ(segment->renderedFrames(), Frames{9});
}

TEST_F(ExternalSegmentWrapperTest, asksForTheSegmentsOwnPictureOnlyAfterItHasRendered) {
    switchOn();
    wrap(ownTextureTraits);
    ASSERT_EQ(renderToTexture(9), Status::ok);
    EXPECT_EQ(segment->journal(), (Journal{"renderToTexture " + std::to_string(texture.name()) + " 1 16x8 frame 9",
                                           "hasOwnBuffers", "getOwnTexture 1"}));
    wrap(ownMemoryTraits);
    ASSERT_EQ(renderToRam(9), Status::ok);
    EXPECT_EQ(segment->journal(), (Journal{"renderToRam 512 16x8 frame 9", "hasOwnBuffers", "getOwnRamBuffer 16x8"}));
}

// ---- Failures -------------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentWrapperTest, passesAFailureToRenderOnAndCachesNothing) {
    switchOn();
    for (auto const& traits : {textureTraits, ramTraits}) {
        wrap(traits);
        segment->renderStatus = 4242;
        EXPECT_EQ(traits.isRam ? renderToRam(1) : renderToTexture(1), 4242);
        EXPECT_TRUE(manager.isEmpty(!traits.isRam));
        segment->renderStatus = 0;
        EXPECT_EQ(traits.isRam ? renderToRam(1) : renderToTexture(1), Status::ok);
        EXPECT_EQ(segment->renderedFrames(), (Frames{1, 1}));
    }
}

TEST_F(ExternalSegmentWrapperTest, passesAFailureToStoreOnThoughTheSegmentHasRendered) {
    // Too large for the budget.
    switchOn();
    const VideoBufferResolution large(1024, 1024, 4, 8, false);
    const TestTexture largeTexture(host.gl(), true, 1024, 1024);
    wrap(textureTraits);
    EXPECT_EQ(wrapper->renderToTexture(largeTexture.name(), 1, large, Time(1, rate)).get(), 260);
    EXPECT_EQ(segment->renderedFrames(), Frames{1});
    wrap(ramTraits);
    Block largeBlock(large.getBufferSize());
    EXPECT_EQ(
        wrapper->renderToRam(largeBlock.data(), static_cast<unsigned int>(largeBlock.size()), large, Time(1, rate))
            .get(),
        260);
    EXPECT_EQ(segment->renderedFrames(), Frames{1});
}

TEST_F(ExternalSegmentWrapperTest, countsEveryFailureToLookUpAsAMiss) {
    // A format that the pool refuses: the look-up's failure is swallowed, the segment renders, and the store reports
    // it.
    switchOn();
    wrap(textureTraits);
    EXPECT_EQ(
        wrapper->renderToTexture(texture.name(), 1, VideoBufferResolution(16, 8, 2, 8, false), Time(1, rate)).get(),
        262);
    EXPECT_EQ(segment->renderedFrames(), Frames{1});
}

TEST_F(ExternalSegmentWrapperTest, passesAFailureToCopyBackOn) {
    // A block smaller than a frame is stored, but no look-up for its size finds the frame again.
    switchOn();
    wrap(ownMemoryTraits);
    EXPECT_EQ(renderToRam(1, 100), 1536);
    wrap(ramTraits);
    EXPECT_EQ(renderToRam(1, 100), Status::ok) << "the picture is in the caller's block: nothing to copy back";
}

TEST_F(ExternalSegmentWrapperTest, passesAFailureToCopyATextureBackOnThoughTheFrameIsCachedThen) {
    switchOn();
    wrap(ownTextureTraits);
    const LogCapture log;
    EXPECT_EQ(wrapper->renderToTexture(0, 1, small, Time(1, rate)).get(), 3);
    EXPECT_EQ(log.count("ExternalSegment VRAM: Rendered new frameNumber = 1"), 0u);
    EXPECT_EQ(renderToTexture(1), Status::ok);
    EXPECT_EQ(texture.pixel(15, 7), pictureOf(1));
    EXPECT_EQ(segment->renderedFrames(), Frames{1});
}

TEST_F(ExternalSegmentWrapperTest, usesTheCacheOfTheCallsKindWhateverTheSegmentsKind) {
    setBudget(Resource::Type::ram, 1);
    wrap(ramTraits);
    EXPECT_EQ(renderToTexture(1), 1536) << "caching is on, but there are no textures to cache in";
    EXPECT_EQ(segment->renderedFrames(), Frames{1});
    setBudget(Resource::Type::vram, 1);
    EXPECT_EQ(renderToTexture(1), Status::ok);
    EXPECT_EQ(renderToTexture(1), Status::ok);
    EXPECT_EQ(segment->renderedFrames(), (Frames{1, 1}));
    EXPECT_TRUE(manager.isEmpty(false));
    wrap(textureTraits);
    EXPECT_EQ(renderToRam(2), Status::ok);
    EXPECT_EQ(renderToRam(2), Status::ok);
    EXPECT_EQ(segment->renderedFrames(), Frames{2});
    setBudget(Resource::Type::ram, 0);
    wrap(textureTraits, "other");
    EXPECT_EQ(renderToRam(2), 260) << "the budget of the call's kind is used up by nothing at all";
}

// ---- Life -----------------------------------------------------------------------------------------------------------

TEST_F(ExternalSegmentWrapperTest, holdsOneReferenceOnItsSegmentForItsLife) {
    wrap(textureTraits);
    EXPECT_EQ(segment->refcount(), 2u);
    wrapper.reset();
    EXPECT_EQ(segment->refcount(), 1u);
}

TEST_F(ExternalSegmentWrapperTest, observesItsSegmentUntilItsEnd) {
    switchOn();
    wrap(textureTraits);
    ASSERT_EQ(renderToTexture(1), Status::ok);
    segment->subject.notify(InvalidationHint(1, 1));
    ASSERT_TRUE(manager.isEmpty(true));
    ASSERT_EQ(renderToTexture(1), Status::ok);
    wrapper.reset();
    segment->subject.notify(InvalidationHint(1, 1));
    EXPECT_FALSE(manager.isEmpty(true));
}

TEST_F(ExternalSegmentWrapperTest, wrapsASegmentWithoutASubject) {
    switchOn();
    wrap({5, false, false, false});
    ASSERT_EQ(renderToTexture(1), Status::ok);
    segment->subject.notify(InvalidationHint(1, 1));  // nobody may have registered with what was not offered
    EXPECT_FALSE(manager.isEmpty(true));
    wrapper.reset();
}

TEST_F(ExternalSegmentWrapperTest, outlivesTheManagerThatItWasMadeWithAndThenPassesThrough) {
    wrapper.reset();
    segment = FakeSegment::create("clip", textureTraits);
    {
        ExternalSegmentCacheManager engines(FramebufferReaper::create());
        (void)engines.setConstraint(Resource::Type::vram, ResourceConstraint::ResizeMode::fixed, 0, 1);
        wrapper = SharedPtr<ExternalSegment>(new ExternalSegmentWrapper(&engines, segment));
        ASSERT_EQ(renderToTexture(1), Status::ok);
        engines.close();
    }
    ASSERT_EQ(renderToTexture(1), Status::ok);
    EXPECT_EQ(segment->renderedFrames(), (Frames{1, 1}));
    segment->subject.notify(InvalidationHint(INT_MIN, INT_MAX));
}

TEST_F(ExternalSegmentWrapperTest, followsTheConstraintsWhileItLives) {
    wrap(textureTraits);
    ASSERT_EQ(renderToTexture(1), Status::ok);
    switchOn();
    ASSERT_EQ(renderToTexture(1), Status::ok);
    ASSERT_EQ(renderToTexture(1), Status::ok);
    EXPECT_EQ(segment->renderedFrames(), (Frames{1, 1}));
    setBudget(Resource::Type::vram, 0);
    ASSERT_EQ(renderToTexture(1), Status::ok);
    EXPECT_EQ(segment->renderedFrames(), (Frames{1, 1, 1}));
}

}  // namespace QRT_0_81
