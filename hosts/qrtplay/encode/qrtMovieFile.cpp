#include "encode/qrtMovieFile.h"

#include <utility>

namespace qrtplay {

namespace {

char const* muxerOf(FileKind kind) {
    if (kind == FileKind::mp4) return "mp4";
    return kind == FileKind::mov ? "mov" : "matroska";
}

char const* encoderOf(VideoCodec codec) {
    if (codec == VideoCodec::h264) return "libx264";
    return codec == VideoCodec::prores ? "prores_ks" : "ffv1";
}

EncodedColour colourOf(OutputFormat const& format) {
    switch (format.codec) {
        case VideoCodec::h264: return {AV_PIX_FMT_YUV420P, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG};
        case VideoCodec::prores: return {AV_PIX_FMT_YUV422P10, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG};
        case VideoCodec::ffv1: break;
    }
    // Lossless: no other colour model, which would have to round.
    return {format.depth == PixelFormat::rgba16 ? AV_PIX_FMT_GBRP16 : AV_PIX_FMT_0RGB32, AVCOL_SPC_RGB,
            AVCOL_RANGE_JPEG};
}

Encoder::Options optionsOf(OutputFormat const& format) {
    switch (format.codec) {
        case VideoCodec::h264: return {{"crf", std::to_string((100 - format.quality) / 2)}};
        case VideoCodec::prores: return {{"profile", "hq"}, {"vendor", "apl0"}};  // players ask for that vendor
        case VideoCodec::ffv1: break;
    }
    // Every frame can be decoded alone, and damage is noticed.
    return {{"level", "3"}, {"g", "1"}, {"slicecrc", "1"}};
}

/// What the codec's way of storing colour asks of the size.
Outcome checkSize(MovieSettings const& settings) {
    const bool evenWidth = settings.format.codec != VideoCodec::ffv1;
    const bool evenHeight = settings.format.codec == VideoCodec::h264;
    if ((!evenWidth || settings.width % 2 == 0) && (!evenHeight || settings.height % 2 == 0)) return Outcome();
    const int32 width = settings.width + (evenWidth ? settings.width % 2 : 0);
    const int32 height = settings.height + (evenHeight ? settings.height % 2 : 0);
    return Outcome::failure(nameOf(settings.format.codec) + " needs an even " +
                            (evenHeight ? "width and height" : "width") + ", not " + std::to_string(settings.width) +
                            "x" + std::to_string(settings.height) + "; for example " + std::to_string(width) + "x" +
                            std::to_string(height));
}

}  // namespace

MovieFile::MovieFile(std::string const& path, MovieSettings settings)
    : m_path(path), m_settings(std::move(settings)), m_file(QString::fromStdString(path)), m_io(m_file) {}

Outcome MovieFile::open(std::string const& path, MovieSettings const& settings, std::unique_ptr<MovieFile>& file) {
    std::unique_ptr<MovieFile> opened(new MovieFile(path, settings));
    if (Outcome outcome = checkSize(settings); outcome.failed()) return opened->fail(outcome.message());
    // Unbuffered: the muxer has a buffer, and an error is told at once.
    if (!opened->m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return opened->fail(opened->m_file.errorString().toStdString());
    AVFormatContext* format = nullptr;
    (void)avformat_alloc_output_context2(&format, nullptr, muxerOf(settings.format.kind), nullptr);
    opened->m_format.reset(format);
    if (!format || !opened->m_io.context()) return opened->fail("this build of FFmpeg lacks its container");
    if (Outcome outcome = opened->openEncoders(); outcome.failed()) return opened->fail(outcome.message());
    if (Outcome outcome = opened->openContainer(); outcome.failed()) return outcome;
    file = std::move(opened);
    return Outcome();
}

Outcome MovieFile::fail(std::string const& why) const {
    return Outcome::failure(m_path + ": cannot be written: " + why);
}

Outcome MovieFile::failedWith(int code) const {
    // The muxer only knows that a write failed.
    return fail(m_io.error().empty() ? avErrorText(code) : m_io.error());
}

Outcome MovieFile::openEncoders() {
    const bool globalHeader = (m_format->oformat->flags & AVFMT_GLOBALHEADER) != 0;
    const EncodedColour colour = colourOf(m_settings.format);
    m_converter = std::make_unique<PixelConverter>(colour);
    AvPtr<AVCodecContext> context = Encoder::prepare(encoderOf(m_settings.format.codec));
    if (context) {
        context->width = m_settings.width;
        context->height = m_settings.height;
        context->pix_fmt = colour.format;
        context->colorspace = colour.matrix;
        context->color_range = colour.range;
        context->color_primaries = AVCOL_PRI_BT709;
        context->color_trc = AVCOL_TRC_BT709;
        context->sample_aspect_ratio = {1, 1};
        context->framerate = {static_cast<int>(m_settings.rate.getNumerator()),
                              static_cast<int>(m_settings.rate.getDenominator())};
        context->time_base = av_inv_q(context->framerate);
        context->thread_count = 0;  // as many as suit the codec and the machine
        if (globalHeader) context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    }
    if (Outcome outcome = Encoder::open(std::move(context), optionsOf(m_settings.format), m_encoder); outcome.failed())
        return outcome;
    if (!m_settings.hasSound) return Outcome();
    const auto codec = m_settings.format.kind == FileKind::mp4 ? SoundEncoder::Codec::aac : SoundEncoder::Codec::pcm;
    return SoundEncoder::open(codec, globalHeader, m_sound);
}

AVStream* MovieFile::addStream(AVCodecContext const& encoder) {
    AVStream* const stream = avformat_new_stream(m_format.get(), nullptr);
    if (!stream || avcodec_parameters_from_context(stream->codecpar, &encoder) < 0) return nullptr;
    stream->time_base = encoder.time_base;
    return stream;
}

Outcome MovieFile::openContainer() {
    m_format->pb = m_io.context();
    m_format->flags |= AVFMT_FLAG_CUSTOM_IO;
    m_pictureStream = addStream(m_encoder->context());
    if (m_sound) m_soundStream = addStream(m_sound->context());
    if (!m_pictureStream || (m_sound && !m_soundStream)) return fail("out of memory");
    m_pictureStream->avg_frame_rate = m_encoder->context().framerate;
    m_pictureStream->r_frame_rate = m_encoder->context().framerate;
    m_pictureStream->sample_aspect_ratio = {1, 1};
    if (!m_settings.timecode.empty()) av_dict_set(&m_format->metadata, "timecode", m_settings.timecode.c_str(), 0);
    AVDictionary* options = nullptr;
    // Where picture and sound begin and end is counted in this unit; the usual one of a millisecond would cut samples
    // off.
    const bool countsInUnits = m_settings.format.kind != FileKind::mkv;
    if (countsInUnits) av_dict_set(&options, "movie_timescale", "240000", 0);
    const int code = avformat_write_header(m_format.get(), &options);
    av_dict_free(&options);
    return code < 0 ? failedWith(code) : Outcome();
}

Outcome MovieFile::mux(AVPacket& packet, AVCodecContext const& encoder, AVStream const& stream) {
    packet.stream_index = stream.index;
    av_packet_rescale_ts(&packet, encoder.time_base, stream.time_base);
    const int code = av_interleaved_write_frame(m_format.get(), &packet);
    return code < 0 ? failedWith(code) : Outcome();
}

Outcome MovieFile::encodePicture(AVFrame const* picture) {
    AVCodecContext const& encoder = m_encoder->context();
    return m_encoder->encode(picture, [&](AVPacket& packet) {
        // Some encoders leave it open, and then the last frame would have no length.
        if (packet.duration == 0) packet.duration = 1;
        return mux(packet, encoder, *m_pictureStream);
    });
}

Outcome MovieFile::addPicture(PixelBlock const& block) {
    const int64 number = m_pictures++;
    const std::string name = "picture " + std::to_string(number) + " ";
    if (block.width != m_settings.width || block.height != m_settings.height)
        return fail(name + "has another size than the movie");
    AvPtr<AVFrame> picture;
    if (Outcome outcome = m_converter->convert(block, picture); outcome.failed()) return fail(name + outcome.message());
    picture->pts = number;
    picture->sample_aspect_ratio = {1, 1};
    picture->color_primaries = AVCOL_PRI_BT709;
    picture->color_trc = AVCOL_TRC_BT709;
    return encodePicture(picture.get());
}

Outcome MovieFile::addSound(std::vector<float> const& samples) {
    if (!m_sound) return Outcome();
    return m_sound->add(samples, [this](AVPacket& packet) { return mux(packet, m_sound->context(), *m_soundStream); });
}

Outcome MovieFile::finish() {
    if (Outcome outcome = encodePicture(nullptr); outcome.failed()) return outcome;
    if (m_sound) {
        Outcome outcome =
            m_sound->finish([this](AVPacket& packet) { return mux(packet, m_sound->context(), *m_soundStream); });
        if (outcome.failed()) return outcome;
    }
    if (const int code = av_write_trailer(m_format.get()); code < 0) return failedWith(code);
    avio_flush(m_io.context());
    if (m_io.context()->error < 0) return failedWith(m_io.context()->error);
    return m_file.commit() ? Outcome() : fail(m_file.errorString().toStdString());
}

}  // namespace qrtplay
