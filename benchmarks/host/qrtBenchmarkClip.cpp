#include "qrtBenchmarkClip.h"

#include <QProcess>
#include <algorithm>
#include <array>
#include <filesystem>

namespace qrtplay {

namespace {

// The number stands in the top row of the picture, a square for each bit, the lowest one first.
constexpr int bits = 10;
constexpr int squareSide = 64;

const std::string h264 = "-c:v libx264 -preset fast -crf 23 -bf 3 -sc_threshold 0 -pix_fmt yuv420p -g ";
const std::string fullHd = "testsrc2=size=1920x1080:rate=24,noise=alls=3:allf=t";
const std::string hd = "testsrc2=size=1280x720:rate=24,noise=alls=3:allf=t";

const std::array<BenchmarkClip, 3> clips{{
    {"h264-24", fullHd, h264 + "24 -keyint_min 24", ".mp4", 1920, 312, 24},
    {"h264-250", fullHd, h264 + "250 -keyint_min 250", ".mp4", 1920, 500, 250},
    {"prores", hd, "-c:v prores_ks -profile:v 2 -pix_fmt yuv422p10le", ".mov", 1280, 300, 1},
}};

std::string numberFilters() {
    const std::string side = std::to_string(squareSide);
    std::string filters =
        ",drawbox=x=0:y=0:w=" + std::to_string(bits * squareSide) + ":h=" + side + ":color=black:t=fill";
    for (int bit = 0; bit < bits; ++bit) {
        filters += ",drawbox=x=" + std::to_string(bit * squareSide) + ":y=0:w=" + side + ":h=" + side +
                   ":color=white:t=fill:enable='gte(mod(n," + std::to_string(2 << bit) + ")," +
                   std::to_string(1 << bit) + ")'";
    }
    return filters;
}

}  // namespace

BenchmarkClip const* benchmarkClip(std::string const& name) {
    const auto found =
        std::find_if(clips.begin(), clips.end(), [&](BenchmarkClip const& clip) { return clip.name == name; });
    return found == clips.end() ? nullptr : &*found;
}

Outcome makeClip(BenchmarkClip const& clip, std::string const& folder, std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    path = folder + "/" + clip.name + clip.ending;
    if (std::filesystem::exists(path)) return Outcome();
    const std::string unfinished = folder + "/unfinished-" + clip.name + clip.ending;
    QStringList arguments{"-v",
                          "error",
                          "-y",
                          "-f",
                          "lavfi",
                          "-i",
                          QString::fromStdString(clip.source + numberFilters()),
                          "-frames:v",
                          QString::number(clip.frameCount)};
    arguments += QString::fromStdString(clip.encoder).split(' ') << QString::fromStdString(unfinished);
    QProcess encoder;
    encoder.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    encoder.start("ffmpeg", arguments);
    if (!encoder.waitForFinished(-1) || encoder.exitCode() != 0)
        return Outcome::failure("the program ffmpeg cannot make " + path);
    std::filesystem::rename(unfinished, path, error);
    return error ? Outcome::failure(path + ": " + error.message()) : Outcome();
}

int64 paintedNumber(FrameView const& frame, int clipWidth) {
    // The middle of a square, in pixels of the clip, taken to the size of the frame.
    const auto scaled = [&](int position) { return position * frame.width / clipWidth; };
    constexpr int middle = squareSide / 2;
    const int row = frame.isBottomFirst ? frame.height - 1 - scaled(middle) : scaled(middle);
    std::uint8_t const* const pixels =
        frame.pixels + size_t{4} * static_cast<size_t>(row) * static_cast<size_t>(frame.width);
    int64 number = 0;
    for (int bit = 0; bit < bits; ++bit) {
        if (pixels[4 * scaled(bit * squareSide + middle)] >= 128) number |= int64{1} << bit;
    }
    return number;
}

}  // namespace qrtplay
