#include "base/qrtProgramVersion.h"

namespace qrtplay {

char const* const versionNumber = QRTPLAY_VERSION;

}  // namespace qrtplay
