#pragma once

#include <memory>
#include <string>
#include <vector>

#include "media/qrtAv.h"
#include "qrtClipPlayer.h"

namespace qrtplay {

/// A plain loop on FFmpeg's libraries, as anybody would write it: the decoder with as many threads as it likes, each
/// frame that is asked for converted on the CPU. The next frame is decoded on; any other is looked for from the key
/// frame before it.
class PlainLoop final : public ClipPlayer {
public:
    explicit PlainLoop(std::string const& path);

    void play(int64, int64, Way) override {}
    void stop() override {}
    /// Decodes half a group for each frame.
    [[nodiscard]] bool isPlodding(BenchmarkClip const& clip) const override { return clip.groupSize > 100; }
    FrameView frame(int64 number) override;

private:
    void seek(int64 number);
    void decodeNext();
    void convert();
    [[nodiscard]] int64 timeOf(int64 number) const;

    AvPtr<AVFormatContext> m_format;
    AVStream* m_stream = nullptr;  // owned by m_format
    AvPtr<AVCodecContext> m_decoder;
    AvPtr<AVPacket> m_packet;
    AvPtr<AVFrame> m_decoded;
    AvPtr<SwsContext> m_scaler;
    std::vector<std::uint8_t> m_pixels;
    int64 m_next = 0;
};

}  // namespace qrtplay
