#include "foundation/cache/qrtCacheData.h"

namespace QRT_0_81 {

CacheData::~CacheData() = default;

ConstSharedPtr<CacheData> CacheData::clone() const {
    return nullptr;
}

SharedPtr<CacheData> CacheData::clone() {
    return nullptr;
}

bool CacheData::expire(Reason) const {
    return false;
}

Status CacheData::serialize(String&, int&) const {
    return Status::general_failure;
}

Status CacheData::deserialize(String const&) {
    return Status::general_failure;
}

}  // namespace QRT_0_81
