#pragma once

#include "qrtDebugLine.h"

namespace QRT_0_81 {

/// The engine's sources are several files but speak under one name.
inline constexpr char playerImplSource[] = "src/player/private/qrtPlayerImpl";

}  // namespace QRT_0_81

/// A debug line of the engine.
#define QRT_ENGINE_DEBUG(...) QRT_DEBUG_LINE(::QRT_0_81::playerImplSource, __VA_ARGS__)
/// A message of the engine that is posted whether or not debug lines are on.
#define QRT_ENGINE_MESSAGE(...) ::QRT_0_81::DebugLine::post(::QRT_0_81::playerImplSource, __LINE__, __VA_ARGS__)
