#pragma once

#include <string>
#include <vector>

#include "qrtBenchmarkClip.h"
#include "qrtClipPlayer.h"

namespace qrtplay {

/// A figure that a case measures.
struct HostMeasure {
    std::string name;
    std::string unit;
    double value = 0;
};

/// Something that both sides do with a clip. Throws `std::runtime_error` when a frame is not the one asked for.
struct HostCase {
    std::string name;
    std::vector<HostMeasure> (*run)(ClipPlayer& player, BenchmarkClip const& clip);
};

/// "forward", "random", "backwards", "again", "pingpong" and "loops".
[[nodiscard]] std::vector<HostCase> const& hostCases();

/// What a ratio of the player's figure to the plain loop's has to reach, or what the figure itself has to.
struct HostGoal {
    enum class Kind { none, ratio_at_least, ratio_at_most, value_at_least, value_at_most };
    Kind kind = Kind::none;
    double bound = 0;

    [[nodiscard]] bool isReached(double value, double ratio) const;
    [[nodiscard]] std::string text() const;
};

/// The goal for a figure of a case of a clip.
[[nodiscard]] HostGoal hostGoal(std::string const& clip, std::string const& measure);

}  // namespace qrtplay
