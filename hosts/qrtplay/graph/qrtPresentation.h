#pragma once

#include <memory>
#include <optional>

#include "foundation/core/qrtRational.h"
#include "graph/qrtPlacement.h"

namespace qrtplay {

class ColourManagement;

/// How the pictures of a composition are to be shown.
struct Presentation {
    Scaling scaling = Scaling::fit;
    std::optional<Rational> rate;  ///< output frames per second, positive; without one the timeline's own
    std::shared_ptr<ColourManagement const> colours;  ///< null: by the facts of each stream, for a BT.709 display
};

}  // namespace qrtplay
