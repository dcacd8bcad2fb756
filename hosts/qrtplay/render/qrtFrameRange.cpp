#include "render/qrtFrameRange.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

namespace qrtplay {

namespace {

/// Reads a whole number off the front of `text`; a sign only where it is allowed.
template <class Number>
bool takeNumber(std::string_view& text, bool signAllowed, Number& number) {
    if (text.empty() || (text.front() == '-' && !signAllowed)) return false;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return true;
}

bool takeSign(std::string_view& text, char sign) {
    if (text.empty() || text.front() != sign) return false;
    text.remove_prefix(1);
    return true;
}

Outcome wrong(std::string_view part, std::string const& why) {
    return Outcome::failure("frames '" + std::string(part) + "': " + why);
}

Outcome parseOne(std::string_view part, FrameRange& range) {
    static const std::string expected = "not a frame range; write for example 7, 0-99, 10-90x5 or 99-0x-1";
    std::string_view rest = part;
    if (!takeNumber(rest, false, range.first)) return wrong(part, expected);
    range.last = range.first;
    const bool isRange = takeSign(rest, '-');
    if (isRange && !takeNumber(rest, false, range.last)) return wrong(part, expected);

    const bool falls = range.last < range.first;
    range.step = falls ? -1 : 1;
    if (isRange && takeSign(rest, 'x')) {
        if (!takeNumber(rest, true, range.step)) return wrong(part, expected);
        if (range.step == 0) return wrong(part, "the step must not be 0");
        if (range.first != range.last && falls != (range.step < 0))
            return wrong(part, "its step leads away from its last frame");
    }
    if (!rest.empty()) return wrong(part, expected);
    range.last = range.first + (range.last - range.first) / range.step * range.step;
    return Outcome();
}

std::string textOf(FrameRange const& range) {
    if (range.first == range.last) return std::to_string(range.first);
    return std::to_string(range.first) + "-" + std::to_string(range.last);
}

}  // namespace

Outcome parseFrameRanges(std::string const& text, std::vector<FrameRange>& ranges) {
    std::vector<FrameRange> parsed;
    std::string_view rest = text;
    for (bool more = true; more;) {
        const size_t comma = rest.find(',');
        more = comma != std::string_view::npos;
        const std::string_view part = rest.substr(0, comma);
        FrameRange range;
        if (Outcome outcome = parseOne(part, range); outcome.failed()) return outcome;
        parsed.push_back(range);
        if (more) rest.remove_prefix(comma + 1);
    }
    ranges = std::move(parsed);
    return Outcome();
}

Outcome checkFrameRanges(std::vector<FrameRange> const& ranges, int64 frameCount) {
    for (FrameRange const& range : ranges) {
        if (std::max(range.first, range.last) >= frameCount)
            return wrong(textOf(range), "outside the clip, whose frames are 0-" + std::to_string(frameCount - 1));
    }
    return Outcome();
}

int64 totalFrames(std::vector<FrameRange> const& ranges) {
    int64 total = 0;
    for (FrameRange const& range : ranges) total += range.count();
    return total;
}

}  // namespace qrtplay
