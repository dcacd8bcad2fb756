#pragma once

#include "foundation/cache/qrtCacheData.h"

namespace QRT_0_81 {

/// A record of the kit's cache that is no frame.
class ForeignRecord final : public CacheData {};

}  // namespace QRT_0_81
