#include "qrtExternalSegmentWrappers.h"

#include "qrtExternalSegmentWrapper.h"

namespace QRT_0_81 {

SharedPtr<ExternalSegmentWrappers> ExternalSegmentWrappers::create(ExternalSegmentCacheManager* cacheManager,
                                                                   List<SharedPtr<ExternalSegment>> const& segments) {
    return SharedPtr<ExternalSegmentWrappers>(new ExternalSegmentWrappers(cacheManager, segments));
}

ExternalSegmentWrappers::ExternalSegmentWrappers(ExternalSegmentCacheManager* cacheManager,
                                                 List<SharedPtr<ExternalSegment>> const& segments) {
    for (auto const& segment : segments) {
        if (segment) m_segments.append(SharedPtr<ExternalSegment>(new ExternalSegmentWrapper(cacheManager, segment)));
    }
}

ExternalSegmentWrappers::~ExternalSegmentWrappers() = default;

}  // namespace QRT_0_81
