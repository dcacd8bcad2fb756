#pragma once

#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// The packets of the one sound stream of a local file, in order.
///
/// Only regular files are opened, whatever their name looks like: no network, no pipe, no device.
/// Threading: none of its own.
class SoundDemuxer final {
public:
    enum class ReadResult { packet, end, failure };

    /// Null for a file without sound, which is no failure. Failures name the file.
    static Outcome open(std::string const& path, std::unique_ptr<SoundDemuxer>& demuxer);

    [[nodiscard]] std::string const& path() const noexcept { return m_path; }
    [[nodiscard]] AVStream& stream() const noexcept { return *m_stream; }
    [[nodiscard]] int sampleRate() const noexcept { return m_stream->codecpar->sample_rate; }

    [[nodiscard]] ReadResult read(AVPacket& packet);
    /// Moves to a packet at or before `time` (ticks of the stream); false when the container cannot.
    [[nodiscard]] bool seek(int64 time);

    /// Whether timestamps can be trusted only some time after the place where a seek has ended.
    [[nodiscard]] bool needsLead() const;

    /// A new decoder for the stream. It drops no samples by itself and hands a packet's pts on unchanged.
    Outcome makeDecoder(AvPtr<AVCodecContext>& decoder) const;

private:
    explicit SoundDemuxer(std::string path) : m_path(std::move(path)) {}

    void chooseStream();
    Outcome checkStream() const;

    std::string m_path;
    AvPtr<AVFormatContext> m_format;
    AVStream* m_stream = nullptr;  // owned by m_format
};

}  // namespace qrtplay
