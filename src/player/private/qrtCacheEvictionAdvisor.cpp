#include "qrtCacheEvictionAdvisor.h"

#include "qrtPlayParamsPrivate.h"
#include "qrtProducedVideoBuffer.h"

namespace QRT_0_81 {

namespace {

/// Whether `count` steps of the walk reach `frame`. A step that leaves the range does not end the walk, unlike in the
/// production loop: frames already rendered are kept generously.
bool walkReaches(PlayParamsPrivate walk, int32 count, int64 frame) {
    for (int32 i = 0; i < count; ++i) {
        if (walk.next() && walk.currentFrame == frame) return true;
    }
    return false;
}

}  // namespace

CacheEvictionAdvisor::CacheEvictionAdvisor(SharedPtr<PlayParams> const& playParams, int32 headFrames, int32 tailFrames)
    : m_playParams(playParams), m_headFrames(headFrames), m_tailFrames(tailFrames) {}

CacheEvictionAdvisor::~CacheEvictionAdvisor() = default;

bool CacheEvictionAdvisor::canEvict(String const&, SharedPtr<CacheData> const& data) {
    const auto* const produced = dynamic_cast<ProducedVideoBuffer const*>(data.get());
    return !produced || !isFrameWanted(produced->getFrameNumber());
}

bool CacheEvictionAdvisor::isFrameWanted(int64 frame) const {
    PlayParamsPrivate const& params = *m_playParams->m_private;
    return frame == params.currentFrame || walkReaches(params, m_headFrames, frame) ||
           walkReaches(params.reversed(), m_tailFrames, frame);
}

}  // namespace QRT_0_81
