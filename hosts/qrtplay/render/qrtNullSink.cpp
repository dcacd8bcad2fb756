#include <utility>

#include "render/qrtFrameSink.h"

namespace qrtplay {

namespace {

class NullSink final : public FrameSink {
public:
    void write(int64 frame, PixelBlock, std::vector<float>) override { m_results.push_back({frame, "", ""}); }
    void writeMissing(int64, std::vector<float>) override {}
    Outcome finish() override { return Outcome(); }
    bool isLostWhenUnfinished() const override { return false; }
    bool isBroken() const override { return false; }
    std::vector<WriteResult> takeResults() override { return std::exchange(m_results, {}); }
    std::string noteOnMissing() const override { return ""; }

private:
    std::vector<WriteResult> m_results;
};

}  // namespace

std::unique_ptr<FrameSink> makeNullSink() {
    return std::make_unique<NullSink>();
}

}  // namespace qrtplay
