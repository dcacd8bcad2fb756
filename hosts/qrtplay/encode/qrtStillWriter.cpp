#include "encode/qrtStillWriter.h"

#include <QSaveFile>
#include <algorithm>
#include <cmath>
#include <memory>

#include "encode/qrtEncoder.h"
#include "encode/qrtOutputFormat.h"
#include "encode/qrtPixelConverter.h"

namespace qrtplay {

namespace {

struct StillCodec {
    char const* encoder = "";
    EncodedColour colour;
    Encoder::Options options;
};

/// Scales FFmpeg's quantiser tables about as much as libjpeg scales its own; the two differ by a factor of two.
int jpegQuantiser(int quality) {
    const double percent = quality < 50 ? 5000.0 / std::max(quality, 1) : 200.0 - 2.0 * quality;
    constexpr double tablesRatio = 0.15;
    return static_cast<int>(std::clamp(std::lround(percent * tablesRatio), 1L, 31L));
}

StillCodec codecOf(FileKind kind, PixelFormat depth, int quality) {
    const bool isDeep = depth == PixelFormat::rgba16;
    switch (kind) {
        case FileKind::png:
            // The lowest level of zlib: three times as quick as the best one, and within a tenth of its size.
            return {
                "png", {isDeep ? AV_PIX_FMT_RGB48BE : AV_PIX_FMT_RGB24}, {{"compression_level", "1"}, {"pred", "sub"}}};
        case FileKind::tiff:
            return {"tiff", {isDeep ? AV_PIX_FMT_RGB48LE : AV_PIX_FMT_RGB24}, {{"compression_algo", "deflate"}}};
        case FileKind::exr:
            return {"exr",
                    {AV_PIX_FMT_GBRPF32},
                    {{"compression", "zip16"}, {"format", depth == PixelFormat::rgba16f ? "half" : "float"}}};
        case FileKind::jpeg: {
            const std::string lambda = std::to_string(jpegQuantiser(quality) * FF_QP2LAMBDA);
            return {"mjpeg",
                    {AV_PIX_FMT_YUV444P, AVCOL_SPC_BT470BG, AVCOL_RANGE_JPEG},
                    {{"flags", "+qscale"}, {"global_quality", lambda}, {"qmin", "1"}}};
        }
        default: return {};
    }
}

Outcome encodeStill(PixelBlock const& block, StillCodec const& codec, QByteArray& bytes) {
    AvPtr<AVFrame> picture;
    if (Outcome outcome = PixelConverter(codec.colour).convert(block, picture); outcome.failed()) return outcome;
    AvPtr<AVCodecContext> context = Encoder::prepare(codec.encoder);
    if (context) {
        context->width = block.width;
        context->height = block.height;
        context->pix_fmt = codec.colour.format;
        context->colorspace = codec.colour.matrix;
        context->color_range = codec.colour.range;
        context->time_base = {1, 1};
        context->thread_count = 1;  // many files are written at a time
    }
    std::unique_ptr<Encoder> encoder;
    if (Outcome outcome = Encoder::open(std::move(context), codec.options, encoder); outcome.failed()) return outcome;
    picture->quality = encoder->context().global_quality;
    const auto keep = [&bytes](AVPacket& packet) {
        bytes.append(reinterpret_cast<char const*>(packet.data), packet.size);
        return Outcome();
    };
    if (Outcome outcome = encoder->encode(picture.get(), keep); outcome.failed()) return outcome;
    return encoder->encode(nullptr, keep);
}

}  // namespace

Outcome writeStill(std::string const& path, PixelBlock const& block, int quality) {
    const std::string name = path + ": cannot be written: ";
    const std::optional<FileKind> kind = fileKindOf(path);
    if (!kind || isMovie(*kind)) return Outcome::failure(name + "its name has no image's ending");
    QByteArray bytes;
    const StillCodec codec = codecOf(*kind, block.format, quality);
    if (Outcome outcome = encodeStill(block, codec, bytes); outcome.failed())
        return Outcome::failure(name + outcome.message());
    QSaveFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return Outcome::failure(name + file.errorString().toStdString());
    return Outcome();
}

}  // namespace qrtplay
