#pragma once

namespace QRT_0_81 {

/// A kind of memory that can be given a budget.
struct Resource {
    /// The kinds.
    enum class Type : int {
        ram = 0,  ///< blocks of memory
        vram = 1  ///< textures
    };
};

/// How a budget is meant to follow what is available. Stored and reported; the player does not act on it.
struct ResourceConstraint {
    /// The ways to follow.
    enum class ResizeMode : int {
        fixed = 0,     ///< stays as it is
        automatic = 1  ///< follows what is available
    };
};

}  // namespace QRT_0_81
