#pragma once

namespace qrtplay {

/// The version of the project, such as "0.81.0"; the build system states it, and nobody else.
extern char const* const versionNumber;

}  // namespace qrtplay
