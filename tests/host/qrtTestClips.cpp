#include "host/qrtTestClips.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

extern "C" {
#include <libavutil/imgutils.h>
}

namespace qrtplay {

std::string clipPath(std::string const& name) {
    return std::string(QRT_TEST_CLIPS) + "/" + name;
}

ReferenceFrames::ReferenceFrames(std::string const& clip, AVPixelFormat format, int width, int height)
    : m_frameSize(static_cast<size_t>(av_image_get_buffer_size(format, width, height, 1))) {
    std::ifstream file(clipPath(clip.substr(0, clip.rfind('.')) + ".raw"), std::ios::binary);
    m_bytes.assign(std::istreambuf_iterator<char>(file), {});
    EXPECT_FALSE(m_bytes.empty()) << clip;
    EXPECT_EQ(m_bytes.size() % m_frameSize, 0u) << clip;
}

int64 ReferenceFrames::count() const {
    return static_cast<int64>(m_bytes.size() / m_frameSize);
}

std::vector<unsigned char> ReferenceFrames::frame(int64 number) const {
    const auto begin = m_bytes.begin() + static_cast<std::ptrdiff_t>(number) * static_cast<std::ptrdiff_t>(m_frameSize);
    return {begin, begin + static_cast<std::ptrdiff_t>(m_frameSize)};
}

std::vector<unsigned char> bytesOf(AVFrame const& picture) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    const int size = av_image_get_buffer_size(format, picture.width, picture.height, 1);
    std::vector<unsigned char> bytes(static_cast<size_t>(size));
    av_image_copy_to_buffer(bytes.data(), size, picture.data, picture.linesize, format, picture.width, picture.height,
                            1);
    return bytes;
}

OpenClip OpenClip::at(std::string const& path) {
    OpenClip clip;
    const Outcome opened = MediaFile::open(path, clip.file);
    EXPECT_TRUE(opened.success()) << opened.message();
    if (opened.failed()) return clip;
    const Outcome decoding = VideoDecoder::open(clip.file, clip.decoder);
    EXPECT_TRUE(decoding.success()) << decoding.message();
    return clip;
}

Outcome OpenClip::picture(int64 frame, FramePtr& picture) {
    passed.clear();
    const auto keep = [this](int64 number, FramePtr const& each) {
        passed[number] = each;
        told.insert(number);
    };
    std::string why;
    const auto result = decoder->frame(
        frame, keep, [](int64) { return true; }, picture, why);
    EXPECT_NE(result, PictureSource::Result::given_up);
    EXPECT_EQ(result == PictureSource::Result::picture, picture != nullptr) << frame;
    if (result != PictureSource::Result::picture) return Outcome::failure(why);
    EXPECT_TRUE(told.contains(frame)) << frame;
    return Outcome();
}

std::vector<unsigned char> OpenClip::bytes(int64 frame) {
    FramePtr found;
    return picture(frame, found).success() && found ? bytesOf(*found) : std::vector<unsigned char>();
}

}  // namespace qrtplay
