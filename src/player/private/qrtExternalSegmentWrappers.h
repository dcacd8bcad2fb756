#pragma once

#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtList.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtSharedPtr.h"
#include "qrtExternalSegmentCacheManager.h"

namespace QRT_0_81 {

/// The wrapped segments of one composition, in the host's order; null entries of the host's list are left out.
class ExternalSegmentWrappers final : public RefCountedMT {
public:
    ExternalSegmentWrappers(ExternalSegmentCacheManager* cacheManager,
                            List<SharedPtr<ExternalSegment>> const& segments);
    ~ExternalSegmentWrappers() override;

    [[nodiscard]] static SharedPtr<ExternalSegmentWrappers> create(ExternalSegmentCacheManager* cacheManager,
                                                                   List<SharedPtr<ExternalSegment>> const& segments);

    [[nodiscard]] List<SharedPtr<ExternalSegment>> const& getSegments() const noexcept { return m_segments; }

private:
    List<SharedPtr<ExternalSegment>> m_segments;
};

}  // namespace QRT_0_81
