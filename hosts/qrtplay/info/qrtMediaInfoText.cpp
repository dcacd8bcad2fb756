#include <QString>

#include "info/qrtInfoText.h"
#include "playback/qrtPreparedInput.h"
#include "playback/qrtTimecode.h"
#include "render/qrtJsonText.h"

namespace qrtplay {

namespace {

constexpr int degreesOfAQuarter = 90;

std::string nameOrUnknown(char const* name) {
    return name ? name : "unknown";
}

std::string colourText(ColourFacts const& colour) {
    return "matrix " + nameOrUnknown(av_color_space_name(colour.matrix)) + ", range " +
           nameOrUnknown(av_color_range_name(colour.range)) + ", primaries " +
           nameOrUnknown(av_color_primaries_name(colour.primaries)) + ", transfer " +
           nameOrUnknown(av_color_transfer_name(colour.transfer));
}

std::string sizeText(VideoFacts const& video) {
    std::string text = std::to_string(video.width) + " x " + std::to_string(video.height);
    const QSize shown = squarePixelSize(video);
    if (shown != QSize(video.width, video.height))
        text += ", shown as " + std::to_string(shown.width()) + " x " + std::to_string(shown.height());
    return text;
}

std::string turnText(VideoFacts const& video) {
    std::string text;
    if (video.clockwiseQuarterTurns != 0)
        text = std::to_string(video.clockwiseQuarterTurns * degreesOfAQuarter) + " degrees clockwise";
    if (video.isFlippedHorizontally) text += std::string(text.empty() ? "" : ", ") + "mirrored";
    return text.empty() ? "upright" : text;
}

}  // namespace

std::string mediaTable(std::string const& path, MediaInfo const& info) {
    std::string table = infoRow("file", path) + infoRow("container", info.container);
    table += infoRow("duration", durationText(info.duration.seconds()));
    table += infoRow("timecode", info.timecode.empty() ? "none" : info.timecode);
    if (info.video) {
        VideoFacts const& video = *info.video;
        char const* const format = av_get_pix_fmt_name(video.pixelFormat);
        table += infoRow("video", video.codecName + ", " + nameOrUnknown(format)) + infoRow("size", sizeText(video));
        table += infoRow("rate", rateText(video.frameRate) + " frames/s (" + fractionText(video.frameRate) + ")");
        table += infoRow("frames", std::to_string(video.frameCount)) + infoRow("colour", colourText(video.colour));
        table += infoRow("rotation", turnText(video));
    } else {
        table += infoRow("video", "none");
    }
    if (info.sounds.empty()) table += infoRow("sound", "none");
    for (MediaInfo::Sound const& sound : info.sounds)
        table += infoRow("sound", sound.codec + ", " + std::to_string(sound.sampleRate) + " Hz, " +
                                      std::to_string(sound.channels) + " channels (" + sound.layout + ")");
    return table;
}

std::string mediaJson(std::string const& path, MediaInfo const& info) {
    JsonText json;
    json.beginObject().add("kind", "media").add("path", path).add("container", info.container);
    json.add("bytes", info.bytes).add("seconds", info.duration.seconds());
    if (info.timecode.empty())
        json.addNull("timecode");
    else
        json.add("timecode", info.timecode);
    if (info.video) {
        VideoFacts const& video = *info.video;
        json.beginObject("video").add("codec", video.codecName).add("width", video.width).add("height", video.height);
        json.add("pixel_aspect", fractionText(video.sampleAspect)).add("rate", fractionText(video.frameRate));
        json.add("frames", video.frameCount).add("pixel_format", nameOrUnknown(av_get_pix_fmt_name(video.pixelFormat)));
        json.beginObject("colour").add("matrix", nameOrUnknown(av_color_space_name(video.colour.matrix)));
        json.add("range", nameOrUnknown(av_color_range_name(video.colour.range)));
        json.add("primaries", nameOrUnknown(av_color_primaries_name(video.colour.primaries)));
        json.add("transfer", nameOrUnknown(av_color_transfer_name(video.colour.transfer))).endObject();
        json.add("rotation", video.clockwiseQuarterTurns * degreesOfAQuarter)
            .add("mirrored", video.isFlippedHorizontally);
        json.endObject();
    } else {
        json.addNull("video");
    }
    json.beginArray("sounds");
    for (MediaInfo::Sound const& sound : info.sounds)
        json.beginObject()
            .add("codec", sound.codec)
            .add("channels", sound.channels)
            .add("layout", sound.layout)
            .add("sample_rate", sound.sampleRate)
            .endObject();
    return json.endArray().endObject().text() + "\n";
}

}  // namespace qrtplay
