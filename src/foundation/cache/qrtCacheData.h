#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtString.h"

namespace QRT_0_81 {

/// The base of all records that a cache holds.
class QRT_CACHE_EXPORT CacheData : public RefCountedMT {
public:
    /// Why a cache asks whether a record has expired.
    enum class Reason : int {
        lookup = 0  ///< it is about to be handed out
    };

    ~CacheData() override;

    /// A copy of the record, or an empty pointer when the record cannot be copied, as here.
    /// @{
    [[nodiscard]] virtual ConstSharedPtr<CacheData> clone() const;
    [[nodiscard]] virtual SharedPtr<CacheData> clone();
    /// @}
    /// Whether the record is too old to be used. The base never expires. Called under the cache's lock.
    [[nodiscard]] virtual bool expire(Reason reason) const;
    /// Writes the record as text and its format version; `Status::general_failure` when it has no such form, as here.
    virtual Status serialize(String& text, int& version) const;
    /// Reads what `serialize` wrote; `Status::general_failure` when the record has no such form, as here.
    virtual Status deserialize(String const& text);
};

}  // namespace QRT_0_81
