#pragma once

#include "foundation/core/qrtTypes.h"

/// The reference host: what a program that embeds the player looks like.
namespace qrtplay {

using namespace QRT_0_81;

}  // namespace qrtplay
