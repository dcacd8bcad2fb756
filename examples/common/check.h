#pragma once

#include <cstdlib>
#include <iostream>

#include "foundation/core/qrtStatus.h"

namespace examples {

using namespace QRT_0_81;

/// Every call says whether it worked, and why not. These programs end with the first that did not.
inline void check(Status const& status) {
    if (status.success()) return;
    std::cerr << "the player: " << status.toString() << std::endl;
    std::quick_exit(EXIT_FAILURE);
}

}  // namespace examples
