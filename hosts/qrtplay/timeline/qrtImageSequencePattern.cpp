#include "timeline/qrtImageSequencePattern.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <regex>
#include <string_view>
#include <system_error>

namespace qrtplay {

namespace {

std::regex const& place() {
    static const std::regex expression("#+|@+|%(0[1-9])?d");
    return expression;
}

size_t nameBegin(std::string const& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? 0 : slash + 1;
}

size_t digitsOf(std::string const& text) {
    if (text.front() != '%') return text.size();
    return text.size() > 2 ? static_cast<size_t>(text[2] - '0') : 1;
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
    return number;
}

}  // namespace

bool isImageSequencePattern(std::string const& pattern) {
    return std::regex_search(pattern.substr(nameBegin(pattern)), place());
}

Outcome parseImageSequencePattern(std::string const& pattern, ImageSequenceName& images) {
    const std::string name = pattern.substr(nameBegin(pattern));
    const std::sregex_iterator first(name.begin(), name.end(), place());
    if (first == std::sregex_iterator())
        return Outcome::failure("images '" + pattern + "': has no place for the number, such as #### or %04d");
    if (std::next(first) != std::sregex_iterator())
        return Outcome::failure("images '" + pattern + "': has more than one place for the number");
    ImageSequenceName parsed;
    const size_t folderEnd = nameBegin(pattern);
    parsed.folder = folderEnd == 0 ? "." : folderEnd == 1 ? "/" : pattern.substr(0, folderEnd - 1);
    parsed.prefix = first->prefix();
    parsed.suffix = first->suffix();
    parsed.digits = digitsOf(first->str());
    images = parsed;
    return Outcome();
}

Outcome findNumbers(ImageSequenceName& images) {
    std::error_code error;
    std::filesystem::directory_iterator entries(images.folder, error);
    if (error) return Outcome::failure("images '" + images.text() + "': cannot read the folder: " + error.message());
    std::optional<std::pair<int64, int64>> range;
    for (; entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        if (error) break;
        const std::optional<int64> number = numberIn(entries->path().filename().native(), images);
        if (!number) continue;
        if (!range) range.emplace(*number, *number);
        range->first = std::min(range->first, *number);
        range->second = std::max(range->second, *number);
    }
    if (!range) return Outcome::failure("images '" + images.text() + "': there is no such file");
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
