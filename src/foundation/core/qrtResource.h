#pragma once

namespace QRT_0_81 {

/// A kind of memory that can be given a budget.
struct Resource {
    enum class Type : int { ram = 0, vram = 1 };
};

/// How a budget is meant to follow what is available. Stored and reported; the player does not act on it.
struct ResourceConstraint {
    enum class ResizeMode : int { fixed = 0, automatic = 1 };
};

}  // namespace QRT_0_81
