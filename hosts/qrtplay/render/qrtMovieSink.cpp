#include <cstring>
#include <utility>

#include "encode/qrtMovieWriter.h"
#include "render/qrtFrameSink.h"

namespace qrtplay {

namespace {

constexpr int64 noFrame = -1;  // marks a picture that stands for a missing one

class MovieSink final : public FrameSink {
public:
    MovieSink(std::unique_ptr<MovieWriter> writer, PixelBlock black)
        : m_writer(std::move(writer)), m_last(std::move(black)) {}

    void write(int64 frame, PixelBlock block, std::vector<float> sound) override {
        m_last = block;
        m_writer->write(frame, std::move(block), std::move(sound));
    }
    void writeMissing(int64, std::vector<float> sound) override { m_writer->write(noFrame, m_last, std::move(sound)); }
    Outcome finish() override { return m_writer->finish(); }
    bool isLostWhenUnfinished() const override { return true; }
    bool isBroken() const override { return m_writer->failure().failed(); }
    std::vector<WriteResult> takeResults() override {
        std::vector<WriteResult> results = m_writer->takeResults();
        std::erase_if(results, [](WriteResult const& result) { return result.frame == noFrame; });
        return results;
    }
    std::string noteOnMissing() const override { return "in the movie each of them repeats the frame before it"; }

private:
    const std::unique_ptr<MovieWriter> m_writer;
    PixelBlock m_last;
};

PixelBlock blackBlock(MovieSettings const& settings) {
    PixelBlock block(settings.width, settings.height, settings.format.depth);
    if (!block.empty()) std::memset(block.row(0), 0, block.sizeInBytes());
    return block;
}

}  // namespace

Outcome makeMovieSink(std::string const& path, MovieSettings const& settings, std::unique_ptr<FrameSink>& sink) {
    std::unique_ptr<MovieWriter> writer;
    if (Outcome outcome = MovieWriter::open(path, settings, writer); outcome.failed()) return outcome;
    sink = std::make_unique<MovieSink>(std::move(writer), blackBlock(settings));
    return Outcome();
}

}  // namespace qrtplay
