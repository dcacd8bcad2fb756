#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <algorithm>
#include <array>
#include <cstring>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "graph/qrtCpuConverter.h"
#include "graph/qrtFrameComposer.h"
#include "render/qrtHostContext.h"

// From a decoded picture to the texture of an output frame: the ways that there are, in one run. Every frame ends with
// glFinish, so that what a driver puts off is counted.

namespace qrtplay {

namespace {

constexpr int width = 1920;
constexpr int height = 1080;
constexpr int64_t frameBytes = int64_t{4} * width * height;

QOpenGLExtraFunctions* functions = nullptr;  // of the context that main() has made current

QOpenGLExtraFunctions& gl() {
    return *functions;
}

class Target {
public:
    Target() {
        gl().glGenTextures(1, &name);
        gl().glBindTexture(GL_TEXTURE_RECTANGLE, name);
        gl().glTexImage2D(GL_TEXTURE_RECTANGLE, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    }
    ~Target() { gl().glDeleteTextures(1, &name); }
    Target(Target const&) = delete;
    Target& operator=(Target const&) = delete;

    GLuint name = 0;
};

/// Noise, so that no branch can be foreseen.
LayerPicture noise(AVPixelFormat format, int pictureWidth, int pictureHeight) {
    std::shared_ptr<AVFrame> picture(av_frame_alloc(), AvDeleter());
    picture->format = format;
    picture->width = pictureWidth;
    picture->height = pictureHeight;
    if (av_frame_get_buffer(picture.get(), 0) < 0) throw std::bad_alloc();
    const unsigned bits = format == AV_PIX_FMT_YUV422P10LE ? 0x03ff03ffu : 0xffffffffu;
    unsigned state = 1;
    for (AVBufferRef const* const buffer : picture->buf) {
        for (size_t at = 0; buffer && at + sizeof(state) <= buffer->size; at += sizeof(state)) {
            state = state * 1664525u + 1013904223u;
            const unsigned samples = (state ^ state >> 16) & bits;
            std::memcpy(buffer->data + at, &samples, sizeof(samples));
        }
    }
    LayerPicture layer{picture, {}, "clip.mov"};
    layer.facts.width = pictureWidth;
    layer.facts.height = pictureHeight;
    layer.facts.pixelFormat = format;
    layer.facts.colour = completeColour({}, format, pictureHeight);
    return layer;
}

struct Kind {
    AVPixelFormat format;
    int width;
    int height;
};
constexpr std::array<Kind, 3> kinds{{{AV_PIX_FMT_YUV420P, width, height},
                                     {AV_PIX_FMT_YUV422P10LE, width, height},
                                     {AV_PIX_FMT_YUV420P, 2 * width, 2 * height}}};

LayerPicture pictureOf(benchmark::State& state) {
    Kind const& kind = kinds[static_cast<size_t>(state.range(0))];
    state.SetLabel(std::string(av_get_pix_fmt_name(kind.format)) + " " + std::to_string(kind.width) + " to " +
                   std::to_string(width));
    return noise(kind.format, kind.width, kind.height);
}

/// The whole way as the program goes it, with nothing prepared ahead.
void composed(benchmark::State& state, bool isOnCpu) {
    class OnePicture final : public LayerProvider {
    public:
        explicit OnePicture(LayerPicture picture) : m_picture(std::move(picture)) {}
        Outcome mediaPicture(FrameNode const&, LayerPicture& picture) override {
            picture = m_picture;
            return Outcome();
        }
        Outcome generatorPicture(FrameNode const&, GLuint, int, int) override { return Outcome(); }

    private:
        const LayerPicture m_picture;
    };
    OnePicture provider(pictureOf(state));
    const Target target;
    ReadyPictures ready;
    FrameComposer composer;
    if (isOnCpu) composer.setReadyPictures(&ready);
    FrameNode node;
    node.kind = FrameNode::Kind::media;
    for ([[maybe_unused]] auto _ : state) {
        const Outcome outcome = composer.compose(gl(), node, provider, {target.name, width, height});
        if (outcome.failed()) state.SkipWithError(outcome.message().c_str());
        gl().glFinish();
    }
    composer.release(gl());
}
void composedOnCpu(benchmark::State& state) {
    composed(state, true);
}
void composedInShaders(benchmark::State& state) {
    composed(state, false);
}
BENCHMARK(composedOnCpu)->DenseRange(0, 2)->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(composedInShaders)->DenseRange(0, 2)->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMillisecond);

/// The part of it that is conversion.
void converted(benchmark::State& state) {
    const LayerPicture layer = pictureOf(state);
    const auto form = cpuForm(layer, {0, 0, width, height}, false);
    PixelPool pool;
    const auto pixels = pool.lend(width, height);
    CpuConverter converter;
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(converter.convert(*layer.picture, *form, *pixels));
}
BENCHMARK(converted)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

/// What FFmpeg makes of it, exactly or fast.
void convertedByFfmpeg(benchmark::State& state, int flags) {
    const LayerPicture layer = pictureOf(state);
    AVFrame const& picture = *layer.picture;
    const AvPtr<SwsContext> scaler(sws_getContext(picture.width, picture.height,
                                                  static_cast<AVPixelFormat>(picture.format), width, height,
                                                  AV_PIX_FMT_RGBA, flags, nullptr, nullptr, nullptr));
    std::vector<std::uint8_t> pixels(frameBytes);
    std::uint8_t* const planes[] = {pixels.data()};
    const int strides[] = {4 * width};
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(
            sws_scale(scaler.get(), picture.data, picture.linesize, 0, picture.height, planes, strides));
}
void convertedByFfmpegExactly(benchmark::State& state) {
    convertedByFfmpeg(state, SWS_AREA | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT);
}
void convertedByFfmpegFast(benchmark::State& state) {
    convertedByFfmpeg(state, SWS_AREA);
}
BENCHMARK(convertedByFfmpegExactly)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(convertedByFfmpegFast)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);

/// Into the texture straight from memory.
void uploadedStraight(benchmark::State& state) {
    const std::vector<std::uint8_t> pixels(frameBytes, 1);
    const Target target;
    for ([[maybe_unused]] auto _ : state) {
        gl().glTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        gl().glFinish();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * frameBytes);
}
BENCHMARK(uploadedStraight)->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMillisecond);

/// The same through three pixel-unpack buffers in turn.
void uploadedThroughRing(benchmark::State& state) {
    const std::vector<std::uint8_t> pixels(frameBytes, 1);
    const Target target;
    std::array<GLuint, 3> buffers{};
    gl().glGenBuffers(static_cast<GLsizei>(buffers.size()), buffers.data());
    for (const GLuint buffer : buffers) {
        gl().glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
        gl().glBufferData(GL_PIXEL_UNPACK_BUFFER, frameBytes, nullptr, GL_STREAM_DRAW);
    }
    size_t turn = 0;
    for ([[maybe_unused]] auto _ : state) {
        gl().glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffers[turn++ % buffers.size()]);
        void* const mapped = gl().glMapBufferRange(GL_PIXEL_UNPACK_BUFFER, 0, frameBytes,
                                                   GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT);
        std::memcpy(mapped, pixels.data(), pixels.size());
        gl().glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER);
        gl().glTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        gl().glFinish();
    }
    gl().glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    gl().glDeleteBuffers(static_cast<GLsizei>(buffers.size()), buffers.data());
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * frameBytes);
}
BENCHMARK(uploadedThroughRing)->MeasureProcessCPUTime()->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace qrtplay

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    qrtplay::HostContext context;
    if (const qrtplay::Outcome made = context.create(); made.failed()) {
        std::cerr << made.message() << std::endl;
        return 1;
    }
    qrtplay::functions = &context.gl();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
