#include "options/qrtFrameRange.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
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

/// The last frame of a range that ends with `end`.
int64 lastHit(FrameRange const& range, int64 end) {
    return range.first + (end - range.first) / range.step * range.step;
}

/// "5", "5-9" or "5-", the last of which goes to the end.
bool takeEnds(std::string_view& text, FrameRange& range, bool& isRange) {
    if (!takeNumber(text, false, range.first)) return false;
    range.last = range.first;
    isRange = takeSign(text, '-');
    if (!isRange) return true;
    if (!text.empty() && text.front() != 'x') return takeNumber(text, false, range.last);
    range.last = FrameRange::toTheEnd;
    return true;
}

Outcome parseOne(std::string_view part, FrameRange& range) {
    static const std::string expected =
        "not a frame range; write for example 7, 0-99, 10-90x5, 100- or 99-0, frames being numbered from 0";
    std::string_view rest = part;
    bool isRange = false;
    if (!takeEnds(rest, range, isRange)) return wrong(part, expected);

    const bool isOpen = range.last == FrameRange::toTheEnd;
    const bool falls = !isOpen && range.last < range.first;
    range.step = falls ? -1 : 1;
    if (isRange && takeSign(rest, 'x')) {
        const bool signAllowed = true;
        if (!takeNumber(rest, signAllowed, range.step) || range.step == INT32_MIN) return wrong(part, expected);
        if (range.step == 0) return wrong(part, "the step must not be 0");
        if (range.step < 0 && !falls && range.first != range.last)
            return wrong(part, "its step leads away from its last frame");
        if (falls) range.step = -std::abs(range.step);
    }
    if (!rest.empty()) return wrong(part, expected);
    if (!isOpen) range.last = lastHit(range, range.last);
    return Outcome();
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

Outcome fitFrameRanges(std::vector<FrameRange>& ranges, int64 frameCount) {
    std::vector<FrameRange> fitted = ranges;
    if (fitted.empty()) fitted.push_back({0, FrameRange::toTheEnd, 1});
    for (FrameRange& range : fitted) {
        const bool isOpen = range.last == FrameRange::toTheEnd;
        if (std::max(range.first, range.last) >= frameCount)
            return wrong(textOf(range), "outside the clip, whose frames are 0-" + std::to_string(frameCount - 1));
        if (isOpen) range.last = lastHit(range, frameCount - 1);
    }
    ranges = std::move(fitted);
    return Outcome();
}

int64 totalFrames(std::vector<FrameRange> const& ranges) {
    int64 total = 0;
    for (FrameRange const& range : ranges)
        total += range.count();
    return total;
}

std::string textOf(FrameRange const& range) {
    std::string text = std::to_string(range.first);
    if (range.first == range.last) return text;
    text += "-";
    if (range.last != FrameRange::toTheEnd) text += std::to_string(range.last);
    if (range.step != 1 && range.step != -1) text += "x" + std::to_string(range.step);
    return text;
}

}  // namespace qrtplay
