#pragma once

#include "base/qrtKit.h"
#include "media/qrtAv.h"
#include "sound/qrtSwr.h"

namespace qrtplay {

/// Turns decoded sound of any sample format and channel layout into interleaved floats of a fixed number of channels.
///
/// Channels are mapped as libswresample does by default: mono comes out of both channels of a stereo pair 3 dB lower,
/// so that it sounds as loud as it did; the centre and the surround channels of 5.1 go 3 dB lower to their sides, the
/// deep bass channel to none. Nothing is clipped or scaled down.
///
/// Threading: none of its own.
class ChannelMapper final {
public:
    /// `channels`: 1 to 8, in the usual layout of that number.
    explicit ChannelMapper(int channels) noexcept : m_channels(channels) {}

    /// Writes `frame.nb_samples` samples of every channel; false when the layout cannot be mapped.
    [[nodiscard]] bool map(AVFrame const& frame, float* samples);

private:
    [[nodiscard]] bool prepareFor(AVFrame const& frame);

    const int m_channels;
    SwrPtr m_context;
    int m_format = AV_SAMPLE_FMT_NONE;  // of what m_context takes
    AVChannelLayout m_layout{};         // native or of no particular order, so it owns nothing
};

}  // namespace qrtplay
