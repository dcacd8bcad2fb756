#include "media/qrtPictureCache.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

FramePtr picture() {
    AvPtr<AVFrame> frame(av_frame_alloc());
    frame->width = 64;
    frame->height = 64;
    frame->format = AV_PIX_FMT_GRAY8;
    EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
    return FramePtr(frame.release(), AvDeleter());
}

/// A cache for the frames of one media, with room for a few.
class PictureCacheTest : public ::testing::Test {
protected:
    static constexpr size_t room = 3;

    PictureCacheTest() : one(PictureCache::bytesOf(*picture())), cache(room * one) {}

    void put(int64 frame) { (void)cache.put({0, frame}, picture()); }
    std::vector<int64> frames() const {
        std::vector<int64> kept;
        for (int64 frame = 0; frame < 20; ++frame) {
            if (cache.contains({0, frame})) kept.push_back(frame);
        }
        return kept;
    }

    const size_t one;
    PictureCache cache;
};

TEST_F(PictureCacheTest, keepsWhatItIsGivenForEachMedia) {
    const FramePtr seven = picture();
    const FramePtr other = picture();
    EXPECT_THAT(cache.put({0, 7}, seven), IsEmpty());
    EXPECT_THAT(cache.put({1, 7}, other), IsEmpty());
    EXPECT_EQ(cache.get({0, 7}), seven);
    EXPECT_EQ(cache.get({1, 7}), other);
    EXPECT_EQ(cache.get({0, 8}), nullptr);
    EXPECT_EQ(cache.bytesAt({0, 7}), one);
    EXPECT_EQ(cache.bytesAt({0, 8}), 0u);
    EXPECT_THAT(cache.put({0, 8}, nullptr), IsEmpty());
    EXPECT_FALSE(cache.contains({0, 8}));
}

TEST_F(PictureCacheTest, dropsTheLeastRecentlyUsedWhenTheBudgetIsSpent) {
    for (const int64 frame : {1, 2, 3})
        put(frame);
    EXPECT_NE(cache.get({0, 1}), nullptr);
    put(4);
    EXPECT_THAT(frames(), ElementsAre(1, 3, 4));
    EXPECT_LE(cache.sizeInBytes(), cache.budgetInBytes());
}

TEST_F(PictureCacheTest, keepsWhatIsWishedForLongerThanWhatIsNot) {
    cache.setWishes({{0, 1}, {0, 2}});
    for (const int64 frame : {1, 2, 3, 4, 5})
        put(frame);
    EXPECT_THAT(frames(), ElementsAre(1, 2, 5));
}

TEST_F(PictureCacheTest, dropsTheLeastUrgentOfWhatIsWishedFor) {
    cache.setWishes({{0, 9}, {0, 8}, {0, 7}, {0, 6}});
    for (const int64 frame : {6, 7, 8, 9})
        put(frame);
    EXPECT_THAT(frames(), ElementsAre(7, 8, 9));
}

TEST_F(PictureCacheTest, forgetsWishesWhenThereAreOthers) {
    cache.setWishes({{0, 1}, {0, 2}, {0, 3}});
    for (const int64 frame : {1, 2, 3})
        put(frame);
    cache.setWishes({{0, 2}, {0, 4}});
    put(4);
    put(5);
    EXPECT_THAT(frames(), ElementsAre(2, 4, 5));
}

TEST_F(PictureCacheTest, keepsFewOfThoseThatNobodyWishesFor) {
    cache.setWishes({{0, 1}, {0, 2}});
    EXPECT_THAT(cache.setRoomForOthers(0), IsEmpty());
    for (const int64 frame : {3, 1, 4})
        put(frame);
    EXPECT_THAT(frames(), ElementsAre(1, 4)) << "the last one is on its way to who has asked for it";
    put(2);
    EXPECT_THAT(frames(), ElementsAre(1, 2, 4));
    cache.setWishes({{0, 2}});
    EXPECT_EQ(cache.setRoomForOthers(0).size(), 1u);
    EXPECT_THAT(frames(), ElementsAre(2, 4));
    EXPECT_EQ(cache.sizeInBytes(), 2 * one);
}

TEST_F(PictureCacheTest, keepsOnePictureWhateverTheBudget) {
    put(1);
    put(2);
    EXPECT_EQ(cache.setBudget(0).size(), 1u);
    EXPECT_THAT(frames(), ElementsAre(2));
    put(3);
    EXPECT_THAT(frames(), ElementsAre(3));
}

TEST_F(PictureCacheTest, countsAReplacedPictureOnce) {
    const FramePtr first = picture();
    const FramePtr second = picture();
    (void)cache.put({0, 1}, first);
    EXPECT_THAT(cache.put({0, 1}, second), ElementsAre(first));
    EXPECT_EQ(cache.sizeInBytes(), one);
    EXPECT_EQ(cache.get({0, 1}), second);
}

TEST_F(PictureCacheTest, handsOutWhatGivesWay) {
    const FramePtr first = picture();
    (void)cache.put({0, 1}, first);
    put(2);
    put(3);
    EXPECT_THAT(cache.put({0, 4}, picture()), ElementsAre(first));
    EXPECT_EQ(cache.clear().size(), room);
    EXPECT_EQ(cache.sizeInBytes(), 0u);
    EXPECT_THAT(frames(), IsEmpty());
}

}  // namespace
}  // namespace qrtplay
