#include "timeline/qrtImageSequencePattern.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace qrtplay {

namespace {

size_t nameBegin(std::string const& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? 0 : slash + 1;
}

std::string folderOfPattern(std::string const& path) {
    std::string folder = path.substr(0, nameBegin(path));
    while (folder.size() > 1 && folder.back() == '/')
        folder.pop_back();
    return folder.empty() ? "." : folder;
}

/// Where a name has its number: a run of one sign, "%d" or "%04d".
struct Place {
    size_t begin;
    size_t length;
    size_t digits;
};

/// The length of what `name` has at `at` in the manner of printf; 0 for nothing of the kind.
size_t printfLength(std::string_view name, size_t at) {
    if (name.substr(at, 2) == "%d") return 2;
    const bool isPadded = name.size() - at >= 4 && name[at + 1] == '0' && name[at + 2] >= '1' && name[at + 2] <= '9';
    return isPadded && name[at + 3] == 'd' ? 4 : 0;
}

/// The first place from `from` on. Names can be as long as a command line, so nothing here calls itself.
std::optional<Place> findPlace(std::string_view name, size_t from = 0) {
    for (size_t at = name.find_first_of("#@%", from); at != std::string_view::npos;
         at = name.find_first_of("#@%", at + 1)) {
        if (name[at] != '%') {
            const size_t length = std::min(name.find_first_not_of(name[at], at), name.size()) - at;
            return Place{at, length, length};
        }
        if (const size_t length = printfLength(name, at); length > 0)
            return Place{at, length, length == 2 ? size_t{1} : static_cast<size_t>(name[at + 2] - '0')};
    }
    return std::nullopt;
}

/// The number in a file's name; none when the name is none of the sequence's.
std::optional<int64> numberIn(std::string_view name, ImageSequenceName const& images) {
    if (name.size() <= images.prefix.size() + images.suffix.size()) return std::nullopt;
    if (!name.starts_with(images.prefix) || !name.ends_with(images.suffix)) return std::nullopt;
    name.remove_prefix(images.prefix.size());
    name.remove_suffix(images.suffix.size());
    int64 number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
    constexpr int64 largest = 1'000'000'000'000;
    if (number > largest || number < -largest) return std::nullopt;
    // Only numbers that are written as the sequence writes them: a shorter one has zeros, a longer one has none.
    const bool isNegative = name.front() == '-';
    const size_t digits = name.size() - (isNegative ? 1 : 0);
    const bool hasZeros = digits > 1 && name[isNegative ? 1 : 0] == '0';
    if (digits < images.digits || (hasZeros && digits > images.digits)) return std::nullopt;
    if (isNegative && number == 0) return std::nullopt;  // zero is written without a sign
    return number;
}

}  // namespace

bool isImageSequencePattern(std::string const& pattern) {
    return findPlace(pattern.substr(nameBegin(pattern))).has_value();
}

Outcome parseImageSequencePattern(std::string const& pattern, ImageSequenceName& images) {
    const std::string name = pattern.substr(nameBegin(pattern));
    const std::optional<Place> place = findPlace(name);
    const auto fail = [&](char const* why) { return Outcome::failure("images '" + pattern + "': " + why); };
    if (!place) return fail("has no place for the number, such as #### or %04d");
    const size_t placeEnd = place->begin + place->length;
    if (findPlace(name, placeEnd)) return fail("has more than one place for the number");
    ImageSequenceName parsed;
    parsed.folder = folderOfPattern(pattern);
    parsed.prefix = name.substr(0, place->begin);
    parsed.suffix = name.substr(placeEnd);
    parsed.digits = place->digits;
    images = parsed;
    return Outcome();
}

Outcome findNumbers(ImageSequenceName& images) {
    std::error_code error;
    std::filesystem::directory_iterator entries(images.folder, error);
    const auto fail = [&](std::string const& why) {
        return Outcome::failure("images '" + images.text() + "': " + why);
    };
    if (error) return fail("cannot read the folder: " + error.message());
    std::optional<std::pair<int64, int64>> range;
    for (; entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        if (error) break;
        const std::optional<int64> number = numberIn(entries->path().filename().native(), images);
        if (!number) continue;
        if (!range) range.emplace(*number, *number);
        range->first = std::min(range->first, *number);
        range->second = std::max(range->second, *number);
    }
    if (!range) return fail("there is no such file");
    images.firstNumber = range->first;
    images.lastNumber = range->second;
    return Outcome();
}

Outcome findImages(std::string const& pattern, Rational const& rate, ImageSequenceName& images) {
    ImageSequenceName found;
    if (Outcome outcome = parseImageSequencePattern(pattern, found); outcome.failed()) return outcome;
    found.rate = rate;
    if (Outcome outcome = findNumbers(found); outcome.failed()) return outcome;
    images = found;
    return Outcome();
}

}  // namespace qrtplay
