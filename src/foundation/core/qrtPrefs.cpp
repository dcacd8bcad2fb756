#include "foundation/core/qrtPrefs.h"

namespace QRT_0_81 {

const String Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES("PRODUCER_CACHE_NB_HEAD_FRAMES");
const String Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES("PRODUCER_CACHE_NB_TAIL_FRAMES");

Prefs::~Prefs() = default;

}  // namespace QRT_0_81
