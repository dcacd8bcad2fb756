#include "graph/qrtPlannedFrames.h"

#include <gtest/gtest.h>

#include "host/qrtFakePictureSource.h"

namespace qrtplay {
namespace {

const Rational plannedRate(25, 1);

/// Plans of one picture each over a store that keeps `room` of them.
class PlannedFramesTest : public ::testing::Test {
protected:
    void openStore(size_t room) {
        const auto open = [this](size_t, std::unique_ptr<PictureSource>& source) {
            source = media->makeSource();
            return Outcome();
        };
        store = std::make_unique<PictureStore>(1, open, room * fakePictureBytes());
    }
    static PictureStore::Wish wish(int64 frame) { return {0, ExactTime::ofFrame(frame, plannedRate)}; }
    void decode(int64 frame) {
        PictureStore::Answer answer;
        EXPECT_TRUE(store->picture(wish(frame), answer).success());
    }
    std::vector<int64> told() {
        const auto stats = CacheStats::create();
        planned.collect(*store, *stats);
        std::vector<int64> frames;
        for (CacheStats::FrameRange const& range : stats->getFrameRanges())
            for (int64 frame = range.first; frame <= range.last; ++frame)
                frames.push_back(frame);
        return frames;
    }

    std::shared_ptr<FakeMedia> media = std::make_shared<FakeMedia>(FakeMedia::Shape{});
    std::unique_ptr<PictureStore> store;
    PlannedFrames planned;
};

TEST_F(PlannedFramesTest, aFrameIsToldOnceItsPictureIsThereHoweverOftenItWasAskedForBefore) {
    openStore(10);
    decode(5);  // opens the media
    planned.add(0, {wish(0)});
    EXPECT_TRUE(told().empty());
    EXPECT_TRUE(told().empty());
    decode(0);
    EXPECT_EQ(told(), std::vector<int64>{0});
}

TEST_F(PlannedFramesTest, aFrameThatHasLostItsPictureIsForgotten) {
    openStore(1);
    planned.add(0, {wish(0)});
    decode(0);
    EXPECT_EQ(told(), std::vector<int64>{0});
    decode(1);
    EXPECT_TRUE(told().empty());
    EXPECT_FALSE(planned.contains(0));
}

TEST_F(PlannedFramesTest, aFrameThatIsExpectedOnceMoreIsNotForgotten) {
    openStore(1);
    planned.add(0, {wish(0)});
    decode(0);
    EXPECT_EQ(told(), std::vector<int64>{0});
    decode(1);
    planned.expect(0);
    EXPECT_TRUE(told().empty());
    decode(0);
    EXPECT_EQ(told(), std::vector<int64>{0});
}

}  // namespace
}  // namespace qrtplay
