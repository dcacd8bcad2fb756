#include "media/qrtDecodedFrameCache.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace qrtplay {
namespace {

using ::testing::ElementsAre;

FramePtr picture() {
    AvPtr<AVFrame> frame(av_frame_alloc());
    frame->width = 64;
    frame->height = 64;
    frame->format = AV_PIX_FMT_GRAY8;
    EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
    return FramePtr(frame.release(), AvDeleter());
}

TEST(DecodedFrameCache, keepsWhatItIsGiven) {
    DecodedFrameCache cache;
    const FramePtr seven = picture();
    cache.put(7, seven);
    EXPECT_EQ(cache.get(7), seven);
    EXPECT_EQ(cache.get(8), nullptr);
    cache.put(3, picture());
    EXPECT_THAT(cache.frames(), ElementsAre(3, 7));
    cache.put(5, nullptr);
    EXPECT_THAT(cache.frames(), ElementsAre(3, 7));
}

TEST(DecodedFrameCache, dropsTheLeastRecentlyUsedWhenTheBudgetIsSpent) {
    DecodedFrameCache cache;
    cache.put(1, picture());
    const size_t one = cache.sizeInBytes();
    EXPECT_GE(one, size_t{64 * 64});
    cache.setBudget(3 * one);
    cache.put(2, picture());
    cache.put(3, picture());
    EXPECT_NE(cache.get(1), nullptr);
    cache.put(4, picture());
    EXPECT_THAT(cache.frames(), ElementsAre(1, 3, 4));
    EXPECT_LE(cache.sizeInBytes(), cache.budgetInBytes());
}

TEST(DecodedFrameCache, keepsOnePictureWhateverTheBudget) {
    DecodedFrameCache cache;
    cache.put(1, picture());
    cache.put(2, picture());
    cache.setBudget(0);
    EXPECT_THAT(cache.frames(), ElementsAre(2));
    cache.put(3, picture());
    EXPECT_THAT(cache.frames(), ElementsAre(3));
}

TEST(DecodedFrameCache, countsAReplacedPictureOnce) {
    DecodedFrameCache cache;
    cache.put(1, picture());
    const size_t one = cache.sizeInBytes();
    const FramePtr other = picture();
    cache.put(1, other);
    EXPECT_EQ(cache.sizeInBytes(), one);
    EXPECT_EQ(cache.get(1), other);
    cache.clear();
    EXPECT_EQ(cache.sizeInBytes(), 0u);
    EXPECT_TRUE(cache.frames().empty());
}

TEST(DecodedFrameCache, canBeLookedAtWhileItIsFilled) {
    DecodedFrameCache cache;
    std::atomic<bool> done{false};
    std::thread reader([&] {
        while (!done) {
            const auto frames = cache.frames();
            EXPECT_TRUE(std::is_sorted(frames.begin(), frames.end()));
            cache.setBudget(size_t{1} << 20);
        }
    });
    for (int64 frame = 0; frame < 2000; ++frame) cache.put(frame % 50, picture());
    done = true;
    reader.join();
    EXPECT_EQ(cache.frames().size(), 50u);
}

}  // namespace
}  // namespace qrtplay
