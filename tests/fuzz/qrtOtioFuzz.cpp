// Reads any bytes as an OTIO file and looks at what comes of it: nothing may crash, leak or hang, a failure is one
// line, and a timeline that was read answers only with media and generators that it has.
#include <cstddef>
#include <cstdint>
#include <string>

#include "qrtFuzzRequire.h"
#include "timeline/qrtOtioReader.h"

namespace {

using namespace qrtplay;

void checkPicture(Timeline const& timeline, FrameNode const& picture) {
    if (picture.kind == FrameNode::Kind::media)
        require(picture.source < timeline.media().size(), "a picture is of a media that there is");
    if (picture.kind == FrameNode::Kind::generator)
        require(picture.source < timeline.generators().size(), "a picture is of a generator that there is");
    if (picture.kind == FrameNode::Kind::stack) require(picture.children.size() > 1, "a stack is of several pictures");
    if (picture.kind == FrameNode::Kind::dissolve) {
        require(picture.children.size() == 2, "a dissolve is of two pictures");
        require(picture.mix >= 0 && picture.mix <= 1, "a mix is a share");
    }
    for (FrameNode const& child : picture.children)
        checkPicture(timeline, child);
}

void checkSound(Timeline const& timeline, int64 first, int64 count) {
    for (SoundSpan const& span : timeline.soundAt(first, count, 48000)) {
        require(span.media < timeline.media().size(), "a sound is of a media that there is");
        require(span.sampleCount > 0 && span.firstSample >= first, "a span is of samples that were asked for");
        require(span.sampleCount <= count - (span.firstSample - first), "and of no others");
    }
}

void check(Timeline const& timeline) {
    require(timeline.rate().getNumerator() > 0 && timeline.rate().getDenominator() > 0, "a timeline has a rate");
    const int64 frames = timeline.frameCount();
    require(frames >= 0, "a timeline has no negative length");
    for (const int64 frame : {int64{0}, int64{1}, frames / 3, frames / 2, frames - 1, frames})
        checkPicture(timeline, timeline.pictureAt(frame, timeline.rate()));
    checkPicture(timeline, timeline.pictureAt(7, Rational(30000, 1001)));
    for (int64 first = 0; first < 4096; first += 1024)
        checkSound(timeline, first, 1024);
    checkSound(timeline, timeline.duration().frameFrom(Rational(48000, 1)) / 2, 1024);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    const std::string text(reinterpret_cast<char const*>(data), size);
    OtioOptions options;
    options.allowPaths = {"/nowhere"};  // so that no file is opened, whatever the text says
    options.probe = [](MediaReference const&, MediaLength& length) {
        length = {ExactTime(3, 1), Rational(25, 1)};
        return Outcome();
    };
    std::shared_ptr<Timeline const> timeline;
    const Outcome outcome = readOtioText(text, "fuzz.otio", "/nowhere", options, timeline);
    require(outcome.success() == (timeline != nullptr), "either a timeline or a failure");
    require(outcome.message().find('\n') == std::string::npos, "a failure is one line");
    if (timeline) check(*timeline);
    return 0;
}
