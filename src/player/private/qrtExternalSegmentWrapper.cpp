#include "qrtExternalSegmentWrapper.h"

#include "foundation/core/qrtNotificationHint.h"
#include "foundation/core/qrtSubject.h"
#include "qrtDebugLine.h"
#include "qrtGuarded.h"
#include "qrtTrace.h"

namespace QRT_0_81 {

namespace {
constexpr char wrapperSource[] = "src/player/private/qrtExternalSegmentWrapper";
}  // namespace

ExternalSegmentWrapper::ExternalSegmentWrapper(ExternalSegmentCacheManager* cacheManager,
                                               SharedPtr<ExternalSegment> const& segment)
    : m_cacheManager(*cacheManager), m_segment(segment) {
    if (Subject* const subject = m_segment->getSubject()) subject->addObserver(this);
}

ExternalSegmentWrapper::~ExternalSegmentWrapper() {
    stopObserving();
}

bool ExternalSegmentWrapper::hasOwnBuffers() const {
    return !isCaching() && m_segment->hasOwnBuffers();
}

void* ExternalSegmentWrapper::getOwnRamBuffer(VideoBufferResolution const& resolution) {
    return isCaching() ? nullptr : m_segment->getOwnRamBuffer(resolution);
}

unsigned int ExternalSegmentWrapper::getOwnTexture(unsigned int rectangle) {
    return isCaching() ? 0 : m_segment->getOwnTexture(rectangle);
}

Status ExternalSegmentWrapper::renderToTexture(unsigned int texture, unsigned int rectangle,
                                               VideoBufferResolution const& resolution, Time const& time) {
    TraceSpan span("external segment", 0, "frame", time.getNbTicks());
    if (!isCaching()) return m_segment->renderToTexture(texture, rectangle, resolution, time);
    const int64 frame = time.getNbTicks();
    if (m_cacheManager.getTextureFrame(getId(), frame, resolution, rectangle, texture).success()) {
        span.note("cached", true);
        QRT_DEBUG_LINE(wrapperSource, "ExternalSegment VRAM: Returned from cache frameNumber = %lld",
                       static_cast<long long>(frame));
        return Status();
    }

    Status status = m_segment->renderToTexture(texture, rectangle, resolution, time);
    if (status.failure()) return status;
    const unsigned int source = m_segment->hasOwnBuffers() ? m_segment->getOwnTexture(rectangle) : texture;
    status = m_cacheManager.putTextureFrame(getId(), frame, resolution, rectangle, source);
    if (status.failure()) return status;
    if (source != texture) {
        status = m_cacheManager.getTextureFrame(getId(), frame, resolution, rectangle, texture);
        if (status.failure()) return status;
    }
    QRT_DEBUG_LINE(wrapperSource, "ExternalSegment VRAM: Rendered new frameNumber = %lld",
                   static_cast<long long>(frame));
    return Status();
}

Status ExternalSegmentWrapper::renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                                           Time const& time) {
    TraceSpan span("external segment", 0, "frame", time.getNbTicks());
    if (!isCaching()) return m_segment->renderToRam(buffer, size, resolution, time);
    const int64 frame = time.getNbTicks();
    if (m_cacheManager.getRamFrame(getId(), frame, resolution, buffer, size).success()) {
        span.note("cached", true);
        QRT_DEBUG_LINE(wrapperSource, "ExternalSegment RAM: Returned from cache frameNumber = %lld",
                       static_cast<long long>(frame));
        return Status();
    }

    Status status = m_segment->renderToRam(buffer, size, resolution, time);
    if (status.failure()) return status;
    void* const source = m_segment->hasOwnBuffers() ? m_segment->getOwnRamBuffer(resolution) : buffer;
    status = m_cacheManager.putRamFrame(getId(), frame, resolution, source, size);
    if (status.failure()) return status;
    if (source != buffer) {
        status = m_cacheManager.getRamFrame(getId(), frame, resolution, buffer, size);
        if (status.failure()) return status;
    }
    QRT_DEBUG_LINE(wrapperSource, "ExternalSegment RAM: Rendered new frameNumber = %lld",
                   static_cast<long long>(frame));
    return Status();
}

void ExternalSegmentWrapper::update(Subject*, NotificationHint const& hint) {
    auto const* const invalidation = dynamic_cast<InvalidationHint const*>(&hint);
    if (!invalidation) return;
    (void)guarded("an external segment's invalidation", [&] {
        if (m_cacheManager.isEmpty(isVram())) return;
        (void)m_cacheManager.invalidate(isVram(), getId(), invalidation->getStartFrame(), invalidation->getEndFrame());
    });
}

}  // namespace QRT_0_81
