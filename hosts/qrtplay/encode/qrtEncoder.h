#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// One of FFmpeg's encoders, opened.
///
/// Threading: one thread. Failures are FFmpeg's words for what is wrong.
class Encoder final {
public:
    using TakePacket = std::function<Outcome(AVPacket&)>;
    using Options = std::vector<std::pair<char const*, std::string>>;

    /// An encoder's context to fill in before `open`; null when this build of FFmpeg lacks the encoder.
    [[nodiscard]] static AvPtr<AVCodecContext> prepare(char const* name);
    /// `options`: the encoder's own. Those that it does not know fail.
    static Outcome open(AvPtr<AVCodecContext> context, Options const& options, std::unique_ptr<Encoder>& encoder);

    [[nodiscard]] AVCodecContext const& context() const noexcept { return *m_context; }

    /// Encodes what `frame` holds, or what is still held back at the end when it is null, and hands on every packet
    /// that comes out of it.
    Outcome encode(AVFrame const* frame, TakePacket const& take);

private:
    explicit Encoder(AvPtr<AVCodecContext> context) : m_context(std::move(context)), m_packet(av_packet_alloc()) {}

    AvPtr<AVCodecContext> m_context;
    AvPtr<AVPacket> m_packet;
};

}  // namespace qrtplay
