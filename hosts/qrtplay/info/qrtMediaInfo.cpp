#include "info/qrtMediaInfo.h"

#include <QFileInfo>
#include <memory>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "media/qrtContainer.h"
#include "media/qrtOpenPictures.h"
#include "media/qrtPictureSource.h"

namespace qrtplay {

namespace {

std::string tagOf(AVFormatContext const& format, char const* key) {
    AVDictionaryEntry const* entry = av_dict_get(format.metadata, key, nullptr, 0);
    for (unsigned i = 0; !entry && i < format.nb_streams; ++i)
        entry = av_dict_get(format.streams[i]->metadata, key, nullptr, 0);
    return entry ? entry->value : "";
}

MediaInfo::Sound soundOf(AVCodecParameters const& stream) {
    MediaInfo::Sound sound;
    sound.codec = avcodec_get_name(stream.codec_id);
    sound.channels = stream.ch_layout.nb_channels;
    sound.sampleRate = stream.sample_rate;
    constexpr size_t longest = 64;
    char layout[longest] = {};
    if (av_channel_layout_describe(&stream.ch_layout, layout, sizeof(layout)) > 0) sound.layout = layout;
    return sound;
}

void readContainer(AVFormatContext const& format, MediaInfo& info) {
    info.container = format.iformat->long_name ? format.iformat->long_name : format.iformat->name;
    info.timecode = tagOf(format, "timecode");
    if (format.duration > 0) info.duration = ExactTime(format.duration, AV_TIME_BASE);
    for (unsigned i = 0; i < format.nb_streams; ++i) {
        AVCodecParameters const& stream = *format.streams[i]->codecpar;
        if (stream.codec_type == AVMEDIA_TYPE_AUDIO) info.sounds.push_back(soundOf(stream));
    }
}

Outcome readPictures(MediaReference const& reference, MediaInfo& info) {
    std::unique_ptr<PictureSource> source;
    if (Outcome outcome = openPictures(reference, source); outcome.failed()) return outcome;
    info.video = source->facts();
    const bool isStill = info.video->frameCount == endlessFrameCount;
    if (isStill) info.video->frameCount = 1;
    if (!isStill) info.duration = ExactTime::ofFrame(info.video->frameCount, info.video->frameRate);
    return Outcome();
}

Outcome readFile(MediaReference const& reference, MediaInfo& info) {
    std::string const& path = reference.path;
    AvPtr<AVFormatContext> format;
    if (Outcome outcome = openContainer(path, format); outcome.failed()) return outcome;
    info.bytes = QFileInfo(QString::fromStdString(path)).size();
    readContainer(*format, info);
    format.reset();
    MediaInfo pictures;
    const Outcome outcome = readPictures(reference, pictures);
    // Sound alone is a media too.
    if (outcome.failed()) return info.sounds.empty() ? outcome : Outcome();
    info.video = pictures.video;
    info.duration = pictures.duration;
    return Outcome();
}

}  // namespace

Outcome readMediaInfo(MediaReference const& reference, MediaInfo& info) {
    info = MediaInfo();
    switch (reference.kind) {
        case MediaReference::Kind::file: return readFile(reference, info);
        case MediaReference::Kind::image_sequence:
            info.container = "image sequence";
            return readPictures(reference, info);
        case MediaReference::Kind::missing: break;
    }
    return Outcome::failure(reference.text() + ": is missing");
}

}  // namespace qrtplay
