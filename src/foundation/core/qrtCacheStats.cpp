#include "foundation/core/qrtCacheStats.h"

namespace QRT_0_81 {

SharedPtr<CacheStats> CacheStats::create() {
    return SharedPtr<CacheStats>(new CacheStats);
}

CacheStats::~CacheStats() = default;

}  // namespace QRT_0_81
