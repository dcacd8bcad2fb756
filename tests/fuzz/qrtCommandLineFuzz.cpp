// Reads any bytes as a command line, words ending with a zero byte or a line end: nothing may crash, leak or hang, a
// failure is one line, and what was read lies within the bounds that the commands count on.
#include <QCoreApplication>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "encode/qrtOutputFormat.h"
#include "options/qrtOptions.h"
#include "options/qrtShellWords.h"
#include "options/qrtViewOptions.h"
#include "playback/qrtTimecode.h"
#include "qrtFuzzRequire.h"

namespace {

using namespace qrtplay;

constexpr int64 numFrames = 1000;

QStringList wordsOf(std::string const& bytes) {
    QStringList words{"qrtplay"};
    for (size_t begin = 0; begin < bytes.size();) {
        const size_t end = std::min(bytes.find_first_of(std::string("\0\n", 2), begin), bytes.size());
        words << QString::fromUtf8(bytes.data() + begin, static_cast<int>(end - begin));
        begin = end + 1;
    }
    return words;
}

void checkInput(PlayInput const& input) {
    require(input.imageRate.getNumerator() > 0 && input.imageRate.getDenominator() > 0, "images have a rate");
}

void checkPlay(PlaySettings const& play) {
    if (play.resolution) require(play.resolution->width() > 0 && play.resolution->height() > 0, "a size is positive");
    if (play.headFrames) require(*play.headFrames >= 0, "no count of frames is negative");
    if (play.tailFrames) require(*play.tailFrames >= 0, "no count of frames is negative");
    if (!play.outputRate) return;
    require(play.outputRate->getNumerator() > 0 && play.outputRate->getDenominator() > 0, "a rate is positive");
    Rational again;
    require(parseRate(fractionText(*play.outputRate), again).success() && again == *play.outputRate,
            "a rate that was read is written so that it can be read");
}

/// Whether they hold the same frames: the step of a single frame leads nowhere.
bool areSame(FrameRange const& a, FrameRange const& b) {
    return a.first == b.first && a.last == b.last && (a.step == b.step || a.first == a.last);
}

void checkFrames(std::vector<FrameRange> const& ranges) {
    for (FrameRange const& range : ranges) {
        require(range.step != 0, "a step is not 0");
        std::vector<FrameRange> again;
        require(parseFrameRanges(textOf(range), again).success(), "a range is written so that it can be read");
        require(again.size() == 1 && areSame(again.front(), range), "and means the same");
    }
    std::vector<FrameRange> fitted = ranges;
    const Outcome outcome = fitFrameRanges(fitted, numFrames);
    require(outcome.message().find('\n') == std::string::npos, "a failure is one line");
    if (outcome.failed()) return;
    require(totalFrames(fitted) > 0, "ranges that fit hold frames");
    for (FrameRange const& range : fitted) {
        for (const int64 frame : {range.frame(0), range.frame(range.count() - 1)})
            require(frame >= 0 && frame < numFrames, "and no others than there are");
        require(range.frame(range.count() - 1) == range.last, "the last frame is one of the range's");
    }
}

void checkRender(RenderOptions const& render) {
    checkInput(render.input);
    checkPlay(render.play);
    checkFrames(render.frames);
    require(!render.input.files.empty(), "something is rendered");
    require(render.loops >= 1, "it is played at least once");
    require(!shellCommand(render.words).empty(), "what was called can be said");
    if (!render.hasOutput) return;
    require(!isMovie(render.format.kind) || !render.output.hasNumber(), "a movie is one file");
    require(render.output.hasNumber() == (render.output.pathOf(1) != render.output.pathOf(2)),
            "frames have files of their own where there is a place for a number");
}

void check(Options const& options) {
    switch (options.command) {
        case Options::Command::render: checkRender(options.render); break;
        case Options::Command::contact_sheet:
            checkPlay(options.contactSheet.play);
            require(options.contactSheet.columns > 0 && options.contactSheet.rows > 0, "a sheet has tiles");
            break;
        case Options::Command::view: {
            checkInput(options.view.input);
            PlaySettings play;
            overrideSettings(options.view, play);
            checkPlay(play);
            break;
        }
        case Options::Command::print: require(!options.text.empty(), "what is printed says something"); break;
        default: break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static char name[] = "qrtplay";
    static char* names[] = {name, nullptr};
    static int count = 1;
    static const QCoreApplication application(count, names);

    Options options;
    const Outcome outcome = parseOptions(wordsOf({reinterpret_cast<char const*>(data), size}), options);
    if (outcome.failed()) {
        require(!outcome.message().empty() && outcome.message().find('\n') == std::string::npos,
                "a failure is one line");
    } else {
        check(options);
    }
    return 0;
}
