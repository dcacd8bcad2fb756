// What a wrapper drops when its segment declares frames invalid.
#include <climits>
#include <thread>

#include "foundation/core/qrtNotificationHint.h"
#include "harness/qrtExternalSegmentWrapperFixture.h"

namespace QRT_0_81 {

class ExternalSegmentWrapperInvalidation : public ExternalSegmentWrapperFixture {
protected:
    void cache(Frames const& frames) {
        for (const int64 frame : frames) {
            ASSERT_EQ(segment->isRamSegment() ? renderToRam(frame) : renderToTexture(frame), Status::ok);
        }
    }
    /// Which of the frames are answered without the segment.
    Frames cachedOf(Frames const& frames) {
        Frames cached;
        for (const int64 frame : frames) {
            if (manager.getTextureFrame("clip", frame, small, 1, texture.name()).success() ||
                manager.getRamFrame("clip", frame, small, block.data(), block.size()).success()) {
                cached.push_back(frame);
            }
        }
        return cached;
    }
};

TEST_F(ExternalSegmentWrapperInvalidation, dropsTheFramesFromStartToEndOfTheSegmentsKindOnly) {
    for (auto const& traits : {textureTraits, ramTraits}) {
        setBudget(Resource::Type::ram, 0);
        setBudget(Resource::Type::vram, 0);
        switchOn();
        wrap(traits);
        cache({9, 10, 11, 12, 13});
        segment->subject.notify(InvalidationHint(10, 12));
        EXPECT_EQ(cachedOf({9, 10, 11, 12, 13}), (Frames{9, 13}));
    }
    // Textures that a memory segment rendered are of the other kind.
    ASSERT_EQ(renderToTexture(9), Status::ok);
    segment->subject.notify(InvalidationHint(9, 9));
    EXPECT_EQ(manager.getTextureFrame("clip", 9, small, 1, texture.name()).get(), Status::ok);
    EXPECT_EQ(manager.getRamFrame("clip", 9, small, block.data(), block.size()).get(), Status::not_in_cache);
}

TEST_F(ExternalSegmentWrapperInvalidation, sparesOtherSegments) {
    switchOn();
    wrap(textureTraits);
    const auto neighbour = FakeSegment::create("clip2", textureTraits);
    const SharedPtr<ExternalSegment> neighbourWrapper(new ExternalSegmentWrapper(&manager, neighbour));
    cache({1});
    ASSERT_EQ(neighbourWrapper->renderToTexture(texture.name(), 1, small, Time(1, rate)).get(), Status::ok);
    segment->subject.notify(InvalidationHint(INT_MIN, INT_MAX));
    ASSERT_EQ(neighbourWrapper->renderToTexture(texture.name(), 1, small, Time(1, rate)).get(), Status::ok);
    EXPECT_EQ(neighbour->renderedFrames(), Frames{1});
}

TEST_F(ExternalSegmentWrapperInvalidation, withTheStartAboveTheEndDropsNothing) {
    switchOn();
    wrap(textureTraits);
    cache({10, 11, 12});
    segment->subject.notify(InvalidationHint(12, 10));
    segment->subject.notify(InvalidationHint(INT_MAX, INT_MIN));
    EXPECT_EQ(cachedOf({10, 11, 12}), (Frames{10, 11, 12}));
}

TEST_F(ExternalSegmentWrapperInvalidation, byAnyOtherHintDropsNothing) {
    struct OtherHint final : NotificationHint {};
    switchOn();
    wrap(textureTraits);
    cache({10});
    segment->subject.notify(NotificationHint());
    segment->subject.notify(OtherHint());
    EXPECT_EQ(cachedOf({10}), Frames{10});
}

TEST_F(ExternalSegmentWrapperInvalidation, ofTheWholeOfIntCostsNoMoreThanTheCacheIsLarge) {
    // A handler that went from frame to frame would ask for the identifier, or erase, four thousand million times.
    switchOn();
    wrap(textureTraits);
    cache({INT_MIN, -1, 0, INT_MAX, int64{INT_MAX} + 1});
    segment->numIdCalls = 0;
    segment->subject.notify(InvalidationHint(INT_MIN, INT_MAX));
    EXPECT_LE(segment->numIdCalls, 5);
    EXPECT_EQ(cachedOf({INT_MIN, -1, 0, INT_MAX, int64{INT_MAX} + 1}), Frames{int64{INT_MAX} + 1});
    segment->subject.notify(InvalidationHint(INT_MAX - 1, INT_MAX));  // the last number ends the range, too
}

TEST_F(ExternalSegmentWrapperInvalidation, asksTheSegmentForNothingWhileTheCacheOfItsKindIsEmpty) {
    switchOn();
    wrap(textureTraits);
    ASSERT_EQ(renderToRam(1), Status::ok);  // of the other kind
    segment->numIdCalls = 0;
    segment->subject.notify(InvalidationHint(0, 100));
    EXPECT_EQ(segment->numIdCalls, 0);
}

TEST_F(ExternalSegmentWrapperInvalidation, mayComeFromAnyThreadWhileFramesAreRendered) {
    switchOn();
    wrap(textureTraits);
    std::thread invalidating([this] {
        for (int i = 0; i < 200; ++i)
            segment->subject.notify(InvalidationHint(i % 2 == 0 ? INT_MIN : 3, INT_MAX));
    });
    for (int64 i = 0; i < 200; ++i) {
        ASSERT_EQ(renderToTexture(i % 5), Status::ok);
        ASSERT_EQ(texture.pixel(8, 4), pictureOf(i % 5));
    }
    invalidating.join();
    segment->subject.notify(InvalidationHint(INT_MIN, INT_MAX));
    EXPECT_TRUE(manager.isEmpty(true));
}

}  // namespace QRT_0_81
