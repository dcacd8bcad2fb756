#include "encode/qrtOutputFormat.h"

#include <QString>
#include <algorithm>
#include <array>
#include <vector>

namespace qrtplay {

namespace {

struct Ending {
    char const* text;
    FileKind kind;
};
constexpr std::array endings{
    Ending{".png", FileKind::png}, Ending{".tif", FileKind::tiff}, Ending{".tiff", FileKind::tiff},
    Ending{".exr", FileKind::exr}, Ending{".jpg", FileKind::jpeg}, Ending{".jpeg", FileKind::jpeg},
    Ending{".mp4", FileKind::mp4}, Ending{".mov", FileKind::mov},  Ending{".mkv", FileKind::mkv},
};

struct CodecName {
    char const* text;
    VideoCodec codec;
};
constexpr std::array codecNames{CodecName{"h264", VideoCodec::h264}, CodecName{"prores", VideoCodec::prores},
                                CodecName{"ffv1", VideoCodec::ffv1}};

struct DepthName {
    char const* text;
    PixelFormat depth;
};
constexpr std::array depthNames{DepthName{"8", PixelFormat::rgba8}, DepthName{"16", PixelFormat::rgba16},
                                DepthName{"16f", PixelFormat::rgba16f}, DepthName{"32f", PixelFormat::rgba32f}};

/// The first one is chosen when the user names none.
std::vector<VideoCodec> codecsOf(FileKind kind) {
    switch (kind) {
        case FileKind::mp4: return {VideoCodec::h264};
        case FileKind::mov: return {VideoCodec::prores, VideoCodec::h264};
        case FileKind::mkv: return {VideoCodec::ffv1, VideoCodec::h264, VideoCodec::prores};
        default: return {};
    }
}

std::vector<PixelFormat> depthsOf(FileKind kind, VideoCodec codec) {
    if (kind == FileKind::exr) return {PixelFormat::rgba16f, PixelFormat::rgba32f};
    if (kind == FileKind::jpeg) return {PixelFormat::rgba8};
    if (isMovie(kind) && codec == VideoCodec::prores) return {PixelFormat::rgba16, PixelFormat::rgba8};
    return {PixelFormat::rgba8, PixelFormat::rgba16};
}

/// What can be seen only by looking for it.
int usualQuality(FileKind kind) {
    constexpr int usualOfJpeg = 90;
    constexpr int usualOfH264 = 64;
    return kind == FileKind::jpeg ? usualOfJpeg : usualOfH264;
}

/// Takes the wish when it can be had and the first choice without one.
template <class Value>
Outcome choose(std::vector<Value> const& choices, std::optional<Value> const& wish, std::string const& what,
               Value& chosen) {
    chosen = wish.value_or(choices.front());
    if (std::find(choices.begin(), choices.end(), chosen) != choices.end()) return Outcome();
    std::string names;
    for (Value const& choice : choices)
        names += (names.empty() ? "" : ", ") + nameOf(choice);
    return Outcome::failure(what + " '" + nameOf(chosen) + "' cannot be had in such a file; possible here: " + names);
}

}  // namespace

std::optional<FileKind> fileKindOf(std::string const& path) {
    const QString name = QString::fromStdString(path.substr(path.rfind('/') + 1));
    for (Ending const& ending : endings) {
        const QString text = ending.text;
        if (name.endsWith(text, Qt::CaseInsensitive) && name.size() > text.size()) return ending.kind;
    }
    return std::nullopt;
}

bool isMovie(FileKind kind) noexcept {
    return kind == FileKind::mp4 || kind == FileKind::mov || kind == FileKind::mkv;
}

std::string knownEndings() {
    std::string all;
    for (Ending const& ending : endings)
        all += (all.empty() ? "" : ", ") + std::string(ending.text);
    return all;
}

std::optional<VideoCodec> videoCodecOf(std::string const& name) {
    for (CodecName const& known : codecNames)
        if (name == known.text) return known.codec;
    return std::nullopt;
}

std::string nameOf(VideoCodec codec) {
    return std::find_if(codecNames.begin(), codecNames.end(),
                        [codec](auto const& known) { return known.codec == codec; })
        ->text;
}

std::optional<PixelFormat> depthOf(std::string const& name) {
    for (DepthName const& known : depthNames)
        if (name == known.text) return known.depth;
    return std::nullopt;
}

std::string nameOf(PixelFormat depth) {
    return std::find_if(depthNames.begin(), depthNames.end(),
                        [depth](auto const& known) { return known.depth == depth; })
        ->text;
}

Outcome chooseOutputFormat(std::string const& path, FormatWishes const& wishes, OutputFormat& format) {
    const std::string name = "output '" + path + "': ";
    const std::optional<FileKind> kind = fileKindOf(path);
    if (!kind) return Outcome::failure(name + "the name has to end with one of " + knownEndings());
    OutputFormat chosen;
    chosen.kind = *kind;
    if (isMovie(*kind)) {
        if (Outcome outcome = choose(codecsOf(*kind), wishes.codec, name + "the codec", chosen.codec); outcome.failed())
            return outcome;
    } else if (wishes.codec) {
        return Outcome::failure(name + "a codec is for movies only");
    }
    const std::vector<PixelFormat> depths = depthsOf(*kind, chosen.codec);
    if (Outcome outcome = choose(depths, wishes.depth, name + "the depth", chosen.depth); outcome.failed())
        return outcome;

    const bool losesByQuality = *kind == FileKind::jpeg || (isMovie(*kind) && chosen.codec == VideoCodec::h264);
    if (wishes.quality && !losesByQuality) return Outcome::failure(name + "a quality is for JPEG files and H.264 only");
    if (losesByQuality) chosen.quality = wishes.quality.value_or(usualQuality(*kind));
    format = chosen;
    return Outcome();
}

}  // namespace qrtplay
