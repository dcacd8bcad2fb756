#include "sound/qrtChannelMapper.h"

namespace qrtplay {

bool ChannelMapper::map(AVFrame const& frame, float* samples) {
    if (!prepareFor(frame)) return false;
    auto* const output = reinterpret_cast<uint8_t*>(samples);
    auto** const input = const_cast<uint8_t const**>(frame.extended_data);
    return swr_convert(m_context.get(), const_cast<uint8_t**>(&output), frame.nb_samples, input, frame.nb_samples) ==
           frame.nb_samples;
}

bool ChannelMapper::prepareFor(AVFrame const& frame) {
    AVChannelLayout layout{};
    // What states no layout, or one of its own making, is taken for the usual one of that number of channels.
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_NATIVE)
        av_channel_layout_from_mask(&layout, frame.ch_layout.u.mask);
    else
        av_channel_layout_default(&layout, frame.ch_layout.nb_channels);
    if (m_context && m_format == frame.format && av_channel_layout_compare(&m_layout, &layout) == 0) return true;

    AVChannelLayout wanted{};
    av_channel_layout_default(&wanted, m_channels);
    SwrContext* context = nullptr;
    // Equal rates: nothing is resampled, so every sample is converted by itself and at once.
    const int rate = frame.sample_rate;
    const int made = swr_alloc_set_opts2(&context, &wanted, AV_SAMPLE_FMT_FLT, rate, &layout,
                                         static_cast<AVSampleFormat>(frame.format), rate, 0, nullptr);
    m_context.reset(context);
    if (made < 0 || swr_init(context) < 0) {
        m_context.reset();
        return false;
    }
    m_format = frame.format;
    m_layout = layout;
    return true;
}

}  // namespace qrtplay
