#pragma once

#include <string>
#include <vector>

#include "base/qrtPrintable.h"
#include "info/qrtMediaInfo.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// What `info` prints: a table for people, or one JSON object in a line. `problems`: of each media of the timeline,
/// empty when it can be read.
[[nodiscard]] std::string mediaTable(std::string const& path, MediaInfo const& info);
[[nodiscard]] std::string mediaJson(std::string const& path, MediaInfo const& info);
[[nodiscard]] std::string timelineTable(std::string const& path, Timeline const& timeline,
                                        std::vector<std::string> const& problems);
[[nodiscard]] std::string timelineJson(std::string const& path, Timeline const& timeline,
                                       std::vector<std::string> const& problems);

/// A line of a table: what it is about, and what is said of it, which may come from anywhere.
[[nodiscard]] inline std::string infoRow(std::string name, std::string const& value) {
    constexpr size_t column = 14;
    name.resize(column, ' ');
    return name + printable(value) + "\n";
}

}  // namespace qrtplay
