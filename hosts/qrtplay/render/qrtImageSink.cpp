#include <utility>

#include "encode/qrtImageWriter.h"
#include "render/qrtFrameSink.h"

namespace qrtplay {

namespace {

class ImageSink final : public FrameSink {
public:
    ImageSink(OutputPattern const& output, int quality) : m_output(output), m_writer(quality) {}

    void write(int64 frame, PixelBlock block, std::vector<float>) override {
        m_writer.write(frame, m_output.pathOf(frame), std::move(block));
    }
    void writeMissing(int64, std::vector<float>) override {}
    Outcome finish() override {
        m_writer.finish();
        return Outcome();
    }
    bool isLostWhenUnfinished() const override { return false; }
    bool isBroken() const override { return false; }
    std::vector<WriteResult> takeResults() override { return m_writer.takeResults(); }
    std::string noteOnMissing() const override { return ""; }

private:
    const OutputPattern m_output;
    ImageWriter m_writer;
};

}  // namespace

std::unique_ptr<FrameSink> makeImageSink(OutputPattern const& output, int quality) {
    return std::make_unique<ImageSink>(output, quality);
}

}  // namespace qrtplay
