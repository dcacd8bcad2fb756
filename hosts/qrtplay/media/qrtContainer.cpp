#include "media/qrtContainer.h"

#include "media/qrtRegularFile.h"

namespace qrtplay {

Outcome openContainer(std::string const& path, AvPtr<AVFormatContext>& container) {
    if (Outcome outcome = checkRegularFile(path); outcome.failed()) return outcome;
    AVFormatContext* format = nullptr;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    // The prefix makes a name that looks like an address, "http://..." or "concat:...", the name of a file.
    const int opened = avformat_open_input(&format, ("file:" + path).c_str(), nullptr, &options);
    av_dict_free(&options);
    if (opened == AVERROR_INVALIDDATA)
        return Outcome::failure(path + ": is no media file, or has lost the part that describes it");
    if (opened < 0) return Outcome::failure(path + ": cannot be opened: " + avErrorText(opened));
    container.reset(format);

    const int found = avformat_find_stream_info(format, nullptr);
    if (found < 0) return Outcome::failure(path + ": its streams cannot be read: " + avErrorText(found));
    return Outcome();
}

}  // namespace qrtplay
