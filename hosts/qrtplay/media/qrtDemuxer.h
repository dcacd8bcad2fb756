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
    /// What a decoder is to make of errors.
    enum class Care {
        tolerant,  ///< mends what it can and marks the pictures that it had to mend
        strict     ///< refuses the first packet that is not flawless; faster, see `makeDecoder`
    };

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
    ///
    /// A strict one works on several frames at once where the format allows that. Such a decoder hands a frame out
    /// before it knows of errors in it, so that marks come too late; but the results of packets come in their order, so
    /// what came out before the first packet that is refused is sound.
    Outcome makeDecoder(AvPtr<AVCodecContext>& decoder, Care care = Care::tolerant) const;
    /// Whether a strict decoder is any faster.
    [[nodiscard]] bool gainsFromStrictness() const;

private:
    explicit Demuxer(std::string path) : m_path(std::move(path)) {}

    Outcome chooseStream();

    std::string m_path;
    AvPtr<AVFormatContext> m_format;
    AVStream* m_stream = nullptr;  // owned by m_format
};

}  // namespace qrtplay
