#pragma once

#include <memory>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "encode/qrtEncoder.h"

namespace qrtplay {

/// Encodes the sound of a movie: AAC or PCM of 24 bits.
///
/// Threading: one thread.
class SoundEncoder final {
public:
    enum class Codec { aac, pcm };

    /// `globalHeader`: whether the container wants the codec's header once instead of in the stream.
    static Outcome open(Codec codec, bool globalHeader, std::unique_ptr<SoundEncoder>& encoder);

    [[nodiscard]] AVCodecContext const& context() const noexcept { return m_encoder->context(); }

    /// The samples that follow, both channels in turn; what fills no whole packet of the codec waits.
    Outcome add(std::vector<float> const& samples, Encoder::TakePacket const& take);
    Outcome finish(Encoder::TakePacket const& take);

private:
    explicit SoundEncoder(std::unique_ptr<Encoder> encoder) : m_encoder(std::move(encoder)) {}

    Outcome encodeWaiting(size_t least, Encoder::TakePacket const& take);
    Outcome encodeSamples(float const* samples, int count, Encoder::TakePacket const& take);

    const std::unique_ptr<Encoder> m_encoder;
    std::vector<float> m_waiting;
    int64 m_encoded = 0;  // samples of each channel
};

}  // namespace qrtplay
