#include "media/qrtImageSequenceSource.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <thread>

#include "media/qrtImageFile.h"
#include "media/qrtSlatePainter.h"

namespace qrtplay {

namespace {

bool isThere(std::string const& path) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::path(path), error) || error;
}

/// Sets the path of the first file that exists; false when there is none among those that are worth looking for.
bool findFirst(ImageSequenceName const& name, std::string& path) {
    constexpr int64 most = 100'000;  // a second's work
    for (int64 frame = 0; frame < std::min(name.frameCount(), most); ++frame) {
        path = name.pathOf(frame);
        if (isThere(path)) return true;
    }
    return false;
}

/// A still picture stands for colours as screens show them; where it leaves them open it follows neither size nor
/// coding.
ColourFacts colourOf(AVFrame const& picture, AVCodecID codec) {
    const auto format = static_cast<AVPixelFormat>(picture.format);
    ColourFacts stated{picture.colorspace, picture.color_range, picture.color_primaries, picture.color_trc};
    if (stated.primaries == AVCOL_PRI_UNSPECIFIED) stated.primaries = AVCOL_PRI_BT709;
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(format);
    const bool isFloat = descriptor && (descriptor->flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    // Many programs, FFmpeg among them, write "linear" into every DPX file.
    const bool isEmptyWord = codec == AV_CODEC_ID_DPX && stated.transfer == AVCOL_TRC_LINEAR;
    if (!isFloat && (stated.transfer == AVCOL_TRC_UNSPECIFIED || isEmptyWord)) stated.transfer = AVCOL_TRC_IEC61966_2_1;
    return completeColour(stated, format, picture.height);
}

VideoFacts factsOf(AVFrame const& picture, std::string const& path) {
    VideoFacts facts;
    facts.width = picture.width;
    facts.height = picture.height;
    const AVRational aspect = picture.sample_aspect_ratio;
    if (aspect.num > 0 && aspect.den > 0) facts.sampleAspect = Rational(aspect.num, static_cast<uint32>(aspect.den));
    facts.pixelFormat = static_cast<AVPixelFormat>(picture.format);
    facts.chromaLocation = picture.chroma_location;
    facts.colour = colourOf(picture, imageCodecOf(path));
    facts.codecName = avcodec_get_name(imageCodecOf(path));
    const AVFrameSideData* const matrix = av_frame_get_side_data(&picture, AV_FRAME_DATA_DISPLAYMATRIX);
    int32 numbers[9];
    if (matrix && matrix->size >= sizeof(numbers)) {
        std::memcpy(numbers, matrix->data, sizeof(numbers));
        readDisplayMatrix(numbers, facts);
    }
    return facts;
}

}  // namespace

Outcome ImageSequenceSource::open(ImageSequenceName const& name, std::unique_ptr<PictureSource>& source) {
    if (name.step <= 0 || name.lastNumber < name.firstNumber)
        return Outcome::failure(name.text() + ": its numbers say that it holds no picture");
    std::string first;
    if (!findFirst(name, first)) return Outcome::failure(name.text() + ": none of its files is there");
    FramePtr picture;
    if (Outcome outcome = readImageFile(first, picture); outcome.failed()) return outcome;

    std::unique_ptr<ImageSequenceSource> opened(new ImageSequenceSource());
    opened->m_name = name;
    opened->m_path = name.text();
    opened->m_facts = factsOf(*picture, first);
    opened->m_facts.frameCount = name.frameCount();
    opened->m_facts.frameRate = name.rate;
    source = std::move(opened);
    return Outcome();
}

Outcome ImageSequenceSource::openFile(std::string const& path, std::unique_ptr<PictureSource>& source) {
    FramePtr picture;
    if (Outcome outcome = readImageFile(path, picture); outcome.failed()) return outcome;
    std::unique_ptr<ImageSequenceSource> opened(new ImageSequenceSource());
    opened->m_path = path;
    opened->m_isSingle = true;
    opened->m_facts = factsOf(*picture, path);
    opened->m_facts.frameCount = 1;
    source = std::move(opened);
    return Outcome();
}

std::string ImageSequenceSource::pathOf(int64 frame) const {
    return m_isSingle ? m_path : m_name.pathOf(frame);
}

PictureSource::Result ImageSequenceSource::frame(int64 frame, Keep const& keep, IsWanted const& isWanted,
                                                 FramePtr& picture, std::string& why) {
    picture.reset();
    if (!isWanted(frame)) return Result::given_up;
    const std::string path = pathOf(frame);
    Outcome outcome;
    if (isThere(path)) {
        outcome = readImageFile(path, picture);
    } else {
        const std::string fileName = std::filesystem::path(path).filename().string();
        picture = paintHole(QSize(m_facts.width, m_facts.height), QString::fromStdString("missing: " + fileName));
        if (!picture) outcome = Outcome::failure(path + ": no such file");
    }
    if (outcome.failed()) {
        why = m_path + ": frame " + std::to_string(frame) + ": " + outcome.message();
        return Result::failure;
    }
    keep(frame, picture);
    return Result::picture;
}

std::unique_ptr<PictureSource> ImageSequenceSource::twin() const {
    return std::unique_ptr<PictureSource>(new ImageSequenceSource(*this));
}

size_t ImageSequenceSource::mostTwins() const noexcept {
    return m_isSingle ? 1 : std::max(1u, std::thread::hardware_concurrency());
}

}  // namespace qrtplay
