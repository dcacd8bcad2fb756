#include "graph/qrtReadyPictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace qrtplay {
namespace {

/// A grey picture, full range.
ReadyPictures::Order orderOf(int level, int side = 16) {
    std::shared_ptr<AVFrame> picture(av_frame_alloc(), AvDeleter());
    picture->format = AV_PIX_FMT_GRAY8;
    picture->width = side;
    picture->height = side;
    EXPECT_EQ(av_frame_get_buffer(picture.get(), 0), 0);
    std::fill_n(picture->buf[0]->data, picture->buf[0]->size, static_cast<std::uint8_t>(level));
    CpuForm form{side, side, {}, AVCHROMA_LOC_UNSPECIFIED};
    form.colour.range = AVCOL_RANGE_JPEG;
    return {picture, form};
}

TEST(ReadyPictures, areThoseThatWereOrdered) {
    ReadyPictures ready;
    std::vector<ReadyPictures::Order> orders;
    for (int level = 0; level < 200; ++level)
        orders.push_back(orderOf(level));
    for (size_t next = 0; next < orders.size(); ++next) {
        const size_t end = std::min(orders.size(), next + 1 + ReadyPictures::mostAhead);
        const auto at = [&](size_t index) { return orders.begin() + static_cast<std::ptrdiff_t>(index); };
        ready.prepare({at(next), at(end)});
        const auto pixels = ready.take(orders[next]);
        ASSERT_TRUE(pixels);
        ASSERT_EQ(int{pixels->bytes[0]}, static_cast<int>(next));
        ASSERT_EQ(int{pixels->bytes[3]}, 255);
    }
}

TEST(ReadyPictures, areMadeWhenNobodyHasOrderedThem) {
    ReadyPictures ready;
    const auto pixels = ready.take(orderOf(77));
    ASSERT_TRUE(pixels);
    EXPECT_EQ(int{pixels->bytes[0]}, 77);
}

TEST(ReadyPictures, areNotMadeAnewForAFrameThatIsShownAgain) {
    ReadyPictures ready;
    const ReadyPictures::Order order = orderOf(5);
    ready.prepare({order});
    const auto first = ready.take(order);
    ready.prepare({order});
    EXPECT_EQ(ready.take(order), first);
}

TEST(ReadyPictures, takeNoMoreMemoryThanIsOrderedAndInUse) {
    ReadyPictures ready;
    constexpr size_t bytes = 16 * 16 * 4;
    for (int level = 0; level < 100; ++level) {
        const ReadyPictures::Order order = orderOf(level);
        ready.prepare({order});
        EXPECT_TRUE(ready.take(order));
    }
    EXPECT_LE(ready.sizeInBytes(), 4 * bytes);  // two kept, one in use, one whose thread has yet to let go of it
    const auto large = orderOf(1, 64);
    auto pixels = ready.take(large);
    ready.clear();
    EXPECT_GE(ready.sizeInBytes(), size_t{64 * 64 * 4}) << "what is in use counts";
    EXPECT_EQ(int{pixels->bytes[64 * 64 * 4 - 4]}, 1) << "and stays";
}

TEST(PixelPool, lendsTheSameMemoryAgain) {
    PixelPool pool;
    auto lent = pool.lend(8, 4);
    std::uint8_t const* const bytes = lent->bytes.get();
    EXPECT_NE(pool.lend(8, 4)->bytes.get(), bytes);
    lent.reset();
    lent = pool.lend(8, 4);
    EXPECT_EQ(lent->bytes.get(), bytes);
    EXPECT_NE(pool.lend(4, 8)->bytes.get(), nullptr);
}

TEST(PixelPool, mayEndBeforeWhatItHasLent) {
    std::shared_ptr<RgbaPixels> lent;
    {
        PixelPool pool;
        lent = pool.lend(8, 4);
    }
    lent->bytes[8 * 4 * 4 - 1] = 1;
    lent.reset();
}

}  // namespace
}  // namespace qrtplay
