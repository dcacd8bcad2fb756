#include "media/qrtContainer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <string_view>
#include <vector>

#include "base/qrtLimits.h"
#include "media/qrtRegularFile.h"

namespace qrtplay {

namespace {

/// What a demuxer opens files with: it gets the file that was named, and none that this one names.
int openOnlyItself(AVFormatContext* format, AVIOContext** io, char const* url, int flags, AVDictionary**) {
    if (!format->url || std::strcmp(url, format->url) != 0) return AVERROR(EPERM);
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    const int opened = avio_open2(io, url, flags, &format->interrupt_callback, &options);
    av_dict_free(&options);
    return opened;
}

/// A container that has yet to be opened, and opens nothing beside its own file.
AVFormatContext* confinedContainer() {
    AVFormatContext* const format = avformat_alloc_context();
    if (!format) return nullptr;
    format->io_open = openOnlyItself;
    // Demuxers that open others hand this on to them, and those do not ask `io_open`: no protocol is called that.
    format->protocol_whitelist = av_strdup("none");
    format->max_streams = static_cast<int>(maxStreams);
    return format;
}

/// Finding out about streams decodes some of them, with decoders that FFmpeg opens itself.
int findStreams(AVFormatContext& format) {
    std::vector<AVDictionary*> options(format.nb_streams, nullptr);
    for (AVDictionary*& limits : options) {
        av_dict_set_int(&limits, "max_pixels", maxPicturePixels, 0);
        av_dict_set_int(&limits, "max_samples", maxPacketSamples, 0);
    }
    const int found = avformat_find_stream_info(&format, options.empty() ? nullptr : options.data());
    for (AVDictionary*& left : options)
        av_dict_free(&left);
    return found;
}

/// Whether a file is a list of others, which explains why it could not be opened.
bool isListOfFiles(std::string const& url) {
    AVIOContext* io = nullptr;
    const AVInputFormat* format = nullptr;
    if (avio_open(&io, url.c_str(), AVIO_FLAG_READ) < 0) return false;
    av_probe_input_buffer(io, &format, url.c_str(), nullptr, 0, 0);
    avio_closep(&io);
    const std::string_view name = format ? format->name : "";
    constexpr std::string_view lists[] = {"concat", "dash", "hls", "imf", "sdp", "vobsub"};
    return std::find(std::begin(lists), std::end(lists), name) != std::end(lists);
}

}  // namespace

Outcome openContainer(std::string const& path, AvPtr<AVFormatContext>& container) {
    if (Outcome outcome = checkRegularFile(path); outcome.failed()) return outcome;
    AVFormatContext* format = confinedContainer();
    if (!format) return Outcome::failure(path + ": out of memory");
    // The prefix makes a name that looks like an address, "http://..." or "concat:...", the name of a file.
    const std::string url = "file:" + path;
    const int opened = avformat_open_input(&format, url.c_str(), nullptr, nullptr);
    if (opened < 0 && isListOfFiles(url))
        return Outcome::failure(path + ": is a list of other files, which are not opened");
    if (opened == AVERROR_INVALIDDATA)
        return Outcome::failure(path + ": is no media file, or has lost the part that describes it");
    // FFmpeg says the same of a stream too many as of memory that it does not get.
    if (opened == AVERROR(ENOMEM))
        return Outcome::failure(path + ": has more than " + std::to_string(maxStreams) +
                                " streams, or needs more memory than there is");
    if (opened < 0) return Outcome::failure(path + ": cannot be opened: " + avErrorText(opened));
    container.reset(format);

    const int found = findStreams(*format);
    if (found < 0) return Outcome::failure(path + ": its streams cannot be read: " + avErrorText(found));
    return Outcome();
}

}  // namespace qrtplay
