#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qrtplay {

void writeText(std::string const& path, std::string const& text);

/// Writes OpenTimelineIO's JSON, object by object.
namespace otio {

/// In frames of `rate`.
struct Range {
    double start;
    double duration;
    double rate;
};

[[nodiscard]] std::string file(std::string const& path);
[[nodiscard]] std::string images(std::string const& folder, std::string const& prefix, std::string const& suffix,
                                 int firstNumber, int step, double rate, int frames);
[[nodiscard]] std::string generator(std::string const& kind, std::string const& parameters);
[[nodiscard]] std::string clip(std::string const& reference, Range const& range, std::string const& effect = {});
[[nodiscard]] std::string gap(Range const& range);
[[nodiscard]] std::string dissolve(double in, double out, double rate);
[[nodiscard]] std::string speed(double factor);
[[nodiscard]] std::string freeze();
[[nodiscard]] std::string track(std::string const& kind, std::vector<std::string> const& children);
[[nodiscard]] std::string stack(std::vector<std::string> const& tracks, std::optional<Range> const& range = {},
                                std::string const& effect = {});
[[nodiscard]] std::string timeline(std::vector<std::string> const& tracks);

}  // namespace otio

}  // namespace qrtplay
