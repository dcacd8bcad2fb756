#pragma once

#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// The packets of the one video stream of a local file, in the order of decoding.
///
/// Only regular files are opened, whatever their name looks like: no network, no pipe, no device.
/// Threading: none of its own.
class Demuxer final {
public:
    enum class ReadResult { packet, end, failure };

    /// Failures name the file.
    static Outcome open(std::string const& path, std::unique_ptr<Demuxer>& demuxer);

    [[nodiscard]] std::string const& path() const noexcept { return m_path; }
    [[nodiscard]] AVFormatContext& format() const noexcept { return *m_format; }
    [[nodiscard]] AVStream& stream() const noexcept { return *m_stream; }
    /// Frames per second as the container states or implies them; 24 when it does neither.
    [[nodiscard]] AVRational frameRate() const;
    /// How many frames the container's own table of samples promises; 0 when it has none.
    [[nodiscard]] int64 promisedFrames() const;

    /// Reads the next packet. A failure is what the file's end looks like when it is cut off.
    [[nodiscard]] ReadResult read(AVPacket& packet);
    /// Moves to a packet at or before `time` (ticks of the stream); false when the container cannot.
    [[nodiscard]] bool seek(int64 time);

    /// A decoder for the stream, opened.
    Outcome makeDecoder(AvPtr<AVCodecContext>& decoder) const;

private:
    explicit Demuxer(std::string path) : m_path(std::move(path)) {}

    Outcome chooseStream();

    std::string m_path;
    AvPtr<AVFormatContext> m_format;
    AVStream* m_stream = nullptr;  // owned by m_format
};

}  // namespace qrtplay
