#pragma once

namespace qrtplay {

constexpr char versionNumber[] = "0.81.0";

}  // namespace qrtplay
