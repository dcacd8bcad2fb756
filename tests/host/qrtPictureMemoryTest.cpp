#include "media/qrtPictureMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

namespace qrtplay {
namespace {

/// Asks for memory as decoders of a format and size do.
class PictureMemoryTest : public ::testing::Test {
protected:
    static AvPtr<AVCodecContext> decoder(int width, int height, AVPixelFormat format) {
        AvPtr<AVCodecContext> made(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_H264)));
        made->width = made->coded_width = width;
        made->height = made->coded_height = height;
        made->pix_fmt = format;
        usePictureMemory(*made);
        return made;
    }
    static AvPtr<AVFrame> picture(AVCodecContext& decoder) {
        AvPtr<AVFrame> frame(av_frame_alloc());
        frame->width = decoder.width;
        frame->height = decoder.height;
        frame->format = decoder.pix_fmt;
        EXPECT_EQ(decoder.get_buffer2(&decoder, frame.get(), 0), 0);
        return frame;
    }
};

TEST_F(PictureMemoryTest, hasRoomForEveryPlane) {
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_GRAY8, AV_PIX_FMT_NV12}) {
        const auto odd = decoder(333, 77, format);
        const auto frame = picture(*odd);
        const int planes = av_pix_fmt_count_planes(format);
        for (int plane = 0; plane < planes; ++plane) {
            ASSERT_NE(frame->data[plane], nullptr) << av_get_pix_fmt_name(format);
            const int rows = plane > 0 && format != AV_PIX_FMT_YUV422P10LE ? 39 : 77;
            std::fill_n(frame->data[plane], frame->linesize[plane] * rows, std::uint8_t{1});
            if (plane > 0) {
                EXPECT_GE(frame->data[plane], frame->data[plane - 1] + frame->linesize[plane - 1] * 77 / 2);
            }
            EXPECT_LE(frame->data[plane] + frame->linesize[plane] * rows, frame->buf[0]->data + frame->buf[0]->size);
        }
        EXPECT_EQ(frame->data[planes], nullptr);
    }
}

TEST_F(PictureMemoryTest, goesFromOneDecoderToTheNext) {
    const auto one = decoder(320, 240, AV_PIX_FMT_YUV420P);
    const auto other = decoder(320, 240, AV_PIX_FMT_YUV420P);
    std::uint8_t const* const block = picture(*one)->buf[0]->data;
    EXPECT_EQ(picture(*other)->buf[0]->data, block);
}

TEST_F(PictureMemoryTest, isNotSharedByPicturesThatLive) {
    const auto one = decoder(320, 240, AV_PIX_FMT_YUV420P);
    std::vector<AvPtr<AVFrame>> alive;
    std::set<std::uint8_t const*> blocks;
    for (int i = 0; i < 20; ++i) {
        alive.push_back(picture(*one));
        blocks.insert(alive.back()->buf[0]->data);
    }
    EXPECT_EQ(blocks.size(), alive.size());
}

TEST_F(PictureMemoryTest, liesIdleOnlyInSmallAmounts) {
    constexpr size_t fewMegabytes = size_t{16} << 20;
    const auto one = decoder(1920, 1080, AV_PIX_FMT_YUV420P);
    std::vector<AvPtr<AVFrame>> alive;
    for (int i = 0; i < 30; ++i)
        alive.push_back(picture(*one));
    alive.clear();
    EXPECT_GT(idlePictureMemory(), 0u);
    EXPECT_LE(idlePictureMemory(), fewMegabytes);
}

}  // namespace
}  // namespace qrtplay
