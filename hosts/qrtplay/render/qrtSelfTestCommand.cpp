#include "render/qrtSelfTestCommand.h"

#include <QString>
#include <QTemporaryDir>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "graph/qrtConversionChoice.h"
#include "media/qrtAv.h"
#include "render/qrtConsole.h"
#include "render/qrtHostContext.h"
#include "render/qrtJsonText.h"
#include "render/qrtOpenInput.h"
#include "render/qrtSelfTestMovie.h"

namespace qrtplay {

namespace {

constexpr std::array decoderNames{"h264", "hevc",  "av1",    "vp9",  "mpeg2video", "mpeg4",    "prores", "dnxhd",
                                  "ffv1", "mjpeg", "png",    "tiff", "exr",        "dpx",      "aac",    "mp3",
                                  "flac", "opus",  "vorbis", "ac3",  "pcm_s16le",  "pcm_s24le"};

struct Check {
    std::string name;
    bool hasPassed = false;
    std::string details;
};

struct OpenGlNames {
    std::string vendor;
    std::string renderer;
    std::string version;
    std::string conversion;  ///< where pictures are converted here when nothing else is said
};

std::string glText(QOpenGLExtraFunctions& gl, GLenum name) {
    auto const* const text = reinterpret_cast<char const*>(gl.glGetString(name));
    return text ? text : "unknown";
}

Outcome readOpenGl(OpenGlNames& names) {
    HostContext context;
    if (Outcome outcome = context.create(); outcome.failed()) return outcome;
    QOpenGLExtraFunctions& gl = context.gl();
    const bool isOnCpu = convertsOnCpu(ConversionChoice::automatic, gl);
    names = {glText(gl, GL_VENDOR), glText(gl, GL_RENDERER), glText(gl, GL_VERSION),
             conversionName(isOnCpu ? ConversionChoice::cpu : ConversionChoice::gpu)};
    return Outcome();
}

int largestDifference(PixelBlock const& a, PixelBlock const& b) {
    constexpr int incomparable = 256;
    if (a.empty() || a.width != b.width || a.height != b.height || a.format != b.format) return incomparable;
    int largest = 0;
    for (int y = 0; y < a.height; ++y)
        for (size_t i = 0; i < a.strideInBytes(); ++i)
            largest = std::max(largest, std::abs(a.row(y)[i] - b.row(y)[i]));
    return largest;
}

Check checkPixels(FrameSource& source, std::string const& name) {
    int largest = 0;
    if (Outcome outcome = source.start({0, SelfTestMovie::frameCount - 1, 1}); outcome.failed())
        return {name, false, outcome.message()};
    for (int64 frame = 0; frame < SelfTestMovie::frameCount; ++frame) {
        PixelBlock block;
        if (Outcome outcome = source.fetch(frame, block); outcome.failed()) return {name, false, outcome.message()};
        largest = std::max(largest, largestDifference(block, SelfTestMovie::picture(frame)));
    }
    source.stop();
    constexpr int rounding = 1;  // of the shaders
    return {name, largest <= rounding,
            std::to_string(SelfTestMovie::frameCount) + " frames, largest difference of a channel " +
                std::to_string(largest) + " of 255"};
}

Check checkSound(FrameSource& source) {
    const std::vector<float> expected = SelfTestMovie::sound();
    std::vector<float> heard;
    const auto count = static_cast<int64>(expected.size() / 2);
    if (Outcome outcome = source.readSound(0, count, heard); outcome.failed())
        return {"sound", false, outcome.message()};
    if (heard.size() != expected.size()) return {"sound", false, "another number of samples than asked for"};
    float largest = 0;
    for (size_t i = 0; i < expected.size(); ++i)
        largest = std::max(largest, std::abs(heard[i] - expected[i]));
    constexpr float rounding = 1e-6F;  // of 24 bits
    return {"sound", largest <= rounding,
            QString("%1 samples, largest difference %2").arg(count).arg(static_cast<double>(largest)).toStdString()};
}

/// Plays the movie through one kind of delivery.
void checkDelivery(std::string const& path, bool ram, std::vector<Check>& checks) {
    const std::string name = ram ? "pixels through RAM" : "pixels through VRAM";
    PlayInput input;
    input.files = {path};
    PlaySettings settings;
    settings.ramOutputs = ram;
    std::unique_ptr<FrameSource> source;
    ExitStatus status = exit_failed;
    if (Outcome outcome = openFrameSource(input, settings, source, status); outcome.failed()) {
        checks.push_back({name, false, outcome.message()});
        return;
    }
    checks.push_back(checkPixels(*source, name));
    if (!ram) checks.push_back(checkSound(*source));
}

std::vector<Check> runChecks() {
    const QTemporaryDir folder;
    const std::string path = folder.filePath("self-test.mkv").toStdString();
    if (Outcome outcome = SelfTestMovie::write(path); outcome.failed())
        return {{"writing a movie", false, outcome.message()}};
    std::vector<Check> checks{{"writing a movie", true, "FFV1 and PCM in Matroska"}};
    for (const bool ram : {false, true})
        checkDelivery(path, ram, checks);
    return checks;
}

bool hasDecoder(char const* name) {
    AVCodecDescriptor const* const codec = avcodec_descriptor_get_by_name(name);
    return codec && avcodec_find_decoder(codec->id);
}

void printTable(OpenGlNames const& opengl, std::vector<Check> const& checks) {
    std::cout << "OpenGL    " << opengl.version << ", " << opengl.renderer << " (" << opengl.vendor << ")\n";
    std::cout << "converts  " << opengl.conversion << "\n";
    std::string present;
    std::string missing;
    for (char const* const name : decoderNames)
        (hasDecoder(name) ? present : missing) += std::string(" ") + name;
    std::cout << "decoders " << present << "\n";
    if (!missing.empty()) std::cout << "missing  " << missing << "\n";
    for (Check const& check : checks)
        std::cout << (check.hasPassed ? "passed    " : "FAILED    ") << check.name << ": " << check.details << "\n";
    std::cout << std::flush;
}

void printJson(OpenGlNames const* opengl, std::vector<Check> const& checks, bool hasPassed) {
    JsonText json;
    json.beginObject().add("passed", hasPassed);
    if (opengl)
        json.beginObject("opengl")
            .add("vendor", opengl->vendor)
            .add("renderer", opengl->renderer)
            .add("version", opengl->version)
            .add("conversion", opengl->conversion)
            .endObject();
    else
        json.addNull("opengl");
    json.beginArray("decoders");
    for (char const* const name : decoderNames)
        json.beginObject().add("name", name).add("present", hasDecoder(name)).endObject();
    json.endArray().beginArray("checks");
    for (Check const& check : checks)
        json.beginObject()
            .add("name", check.name)
            .add("passed", check.hasPassed)
            .add("details", check.details)
            .endObject();
    std::cout << json.endArray().endObject().text() << std::endl;
}

}  // namespace

int runSelfTest(SelfTestOptions const& options) {
    OpenGlNames opengl;
    if (Outcome outcome = readOpenGl(opengl); outcome.failed()) return reportNoOpenGl(options, outcome.message());
    const std::vector<Check> checks = runChecks();
    bool hasPassed = true;
    for (Check const& check : checks) {
        hasPassed = hasPassed && check.hasPassed;
        if (!check.hasPassed) printError("self-test: " + check.name + ": " + check.details);
    }
    if (options.isJson)
        printJson(&opengl, checks, hasPassed);
    else
        printTable(opengl, checks);
    return hasPassed ? exit_done : exit_failed;
}

int reportNoOpenGl(SelfTestOptions const& options, std::string const& why) {
    printError(why);
    if (options.isJson) printJson(nullptr, {{"OpenGL", false, why}}, false);
    return exit_no_opengl;
}

}  // namespace qrtplay
