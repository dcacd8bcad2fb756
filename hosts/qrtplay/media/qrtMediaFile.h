#pragma once

#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtLimits.h"
#include "base/qrtOutcome.h"
#include "media/qrtFrameIndex.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

class Demuxer;

/// What is known of a media file with video: its facts and which packet holds which frame.
///
/// Opening reads all packets once, so that frame numbers are exact whatever the timestamps are. Only streams whose
/// timestamps do not tell the order are decoded once as well.
/// Threading: constant after opening; any thread may read it.
class MediaFile final {
public:
    /// `mostPackets`: a file with more of video is refused. Failures name the file.
    static Outcome open(std::string const& path, std::shared_ptr<MediaFile const>& file,
                        int64 mostPackets = maxVideoPackets);

    [[nodiscard]] std::string const& path() const noexcept { return m_path; }
    [[nodiscard]] VideoFacts const& facts() const noexcept { return m_facts; }
    [[nodiscard]] FrameIndex const& index() const noexcept { return m_index; }

private:
    explicit MediaFile(std::string path) : m_path(std::move(path)) {}

    void readFacts(Demuxer const& demuxer);
    void readStartTime(Demuxer const& demuxer);
    Outcome readIndex(Demuxer& demuxer, int64 mostPackets);
    Outcome orderByDecoding();
    Outcome dropUndecodableBegin();

    std::string m_path;
    VideoFacts m_facts;
    FrameIndex m_index;
};

}  // namespace qrtplay
