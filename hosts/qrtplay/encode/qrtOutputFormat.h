#pragma once

#include <optional>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "base/qrtPixelBlock.h"

namespace qrtplay {

/// Files that can be written, told by the ending of their names.
enum class FileKind { png, tiff, exr, jpeg, mp4, mov, mkv };
enum class VideoCodec { h264, prores, ffv1 };

/// None for an ending that no file kind has.
[[nodiscard]] std::optional<FileKind> fileKindOf(std::string const& path);
/// Whether a file of this kind holds many frames.
[[nodiscard]] bool isMovie(FileKind kind) noexcept;
/// All endings, for messages: ".png, .tif, ...".
[[nodiscard]] std::string knownEndings();

[[nodiscard]] std::optional<VideoCodec> videoCodecOf(std::string const& name);
[[nodiscard]] std::string nameOf(VideoCodec codec);
/// "8", "16", "16f" or "32f".
[[nodiscard]] std::optional<PixelFormat> depthOf(std::string const& name);
[[nodiscard]] std::string nameOf(PixelFormat depth);

/// What the user says about the files; what is left open is chosen.
struct FormatWishes {
    std::optional<VideoCodec> codec;
    std::optional<PixelFormat> depth;
    std::optional<int> quality;
};

/// How frames are written.
struct OutputFormat {
    FileKind kind = FileKind::png;
    VideoCodec codec = VideoCodec::h264;     ///< of a movie
    PixelFormat depth = PixelFormat::rgba8;  ///< of the frames that are encoded
    int quality = 0;  ///< 1 to 100 for JPEG and H.264; the others lose nothing or have one quality

    [[nodiscard]] bool operator==(OutputFormat const&) const noexcept = default;
};

/// Failures name the file and what it cannot be.
Outcome chooseOutputFormat(std::string const& path, FormatWishes const& wishes, OutputFormat& format);

}  // namespace qrtplay
