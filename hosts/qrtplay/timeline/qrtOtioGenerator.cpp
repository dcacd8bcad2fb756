#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <string_view>
#include <utility>

#include "timeline/qrtOtioSource.h"

namespace qrtplay {

namespace {

using rapidjson::Value;

std::optional<Generator::Kind> kindOf(std::string const& word) {
    using Kind = Generator::Kind;
    constexpr std::array<std::pair<std::string_view, Kind>, 6> kinds{{{"solidcolor", Kind::solid_colour},
                                                                      {"solidcolour", Kind::solid_colour},
                                                                      {"smptebars", Kind::smpte_bars},
                                                                      {"countingleader", Kind::counting_leader},
                                                                      {"title", Kind::title},
                                                                      {"text", Kind::title}}};
    std::string letters;
    for (const char c : word) {
        if (c != ' ' && c != '_' && c != '-') letters += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&](auto const& kind) { return kind.first == letters; });
    return found == kinds.end() ? std::nullopt : std::optional(found->second);
}

/// From "#rrggbb" or "#rrggbbaa".
std::optional<std::vector<double>> hexColour(std::string_view text) {
    if ((text.size() != 7 && text.size() != 9) || text.front() != '#') return std::nullopt;
    std::vector<double> colour;
    for (size_t i = 1; i < text.size(); i += 2) {
        int value = 0;
        const auto [end, error] = std::from_chars(&text[i], &text[i] + 2, value, 16);
        if (error != std::errc() || end != &text[i] + 2 || value < 0) return std::nullopt;
        colour.push_back(value / 255.0);
    }
    if (colour.size() == 3) colour.push_back(1);
    return colour;
}

/// From [red, green, blue] or [red, green, blue, alpha].
std::optional<std::vector<double>> listedColour(Value const& list) {
    if (list.Size() != 3 && list.Size() != 4) return std::nullopt;
    std::vector<double> colour;
    for (Value const& channel : list.GetArray()) {
        // Also false for what is not a number.
        const bool isInRange = channel.IsNumber() && channel.GetDouble() >= 0 && channel.GetDouble() <= 1;
        if (!isInRange) return std::nullopt;
        colour.push_back(channel.GetDouble());
    }
    if (colour.size() == 3) colour.push_back(1);
    return colour;
}

std::optional<std::vector<double>> colourOf(Value const& value) {
    if (value.IsString()) return hexColour({value.GetString(), value.GetStringLength()});
    return value.IsArray() ? listedColour(value) : std::nullopt;
}

void readParameters(OtioObject const& reference, Generator& generator, OtioRun& run) {
    Value const* parameters = reference.findObject("parameters");
    if (!parameters) return;
    for (auto const& parameter : parameters->GetObject()) {
        const std::string_view name(parameter.name.GetString(), parameter.name.GetStringLength());
        if (name == "color" || name == "colour") {
            const auto colour = colourOf(parameter.value);
            if (colour)
                generator.colour = *colour;
            else
                run.warn(reference, "the colour is neither [r, g, b] nor [r, g, b, a], 0 to 1, nor #rrggbb(aa)");
        } else if (name == "text" && parameter.value.IsString()) {
            generator.text.assign(parameter.value.GetString(), parameter.value.GetStringLength());
        }
    }
}

}  // namespace

std::optional<Generator> readOtioGenerator(OtioObject const& reference, OtioRun& run) {
    const std::string word = reference.text("generator_kind");
    const std::optional<Generator::Kind> kind = kindOf(word);
    if (!kind) {
        run.warn(reference, "generator '" + oneLine(word) + "' is not known: a gap takes its place");
        return std::nullopt;
    }
    Generator generator;
    generator.kind = *kind;
    readParameters(reference, generator, run);
    return generator;
}

}  // namespace qrtplay
