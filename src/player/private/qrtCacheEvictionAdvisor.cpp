#include "qrtCacheEvictionAdvisor.h"

#include "qrtFrameWalk.h"
#include "qrtPlayParamsPrivate.h"
#include "qrtProducedVideoBuffer.h"

namespace QRT_0_81 {

CacheEvictionAdvisor::CacheEvictionAdvisor(SharedPtr<PlayParams> const& playParams, int32 headFrames, int32 tailFrames)
    : m_playParams(playParams), m_headFrames(headFrames), m_tailFrames(tailFrames) {}

CacheEvictionAdvisor::~CacheEvictionAdvisor() = default;

bool CacheEvictionAdvisor::canEvict(String const&, SharedPtr<CacheData> const& data) {
    const auto* const produced = ProducedVideoBuffer::from(data);
    return !produced || !isFrameWanted(produced->getFrameNumber());
}

bool CacheEvictionAdvisor::isFrameWanted(int64 frame) const {
    PlayParamsPrivate const& params = *m_playParams->m_private;
    // A step that leaves the range does not end the walk, unlike in the production loop: frames that are already
    // rendered are kept generously.
    return frame == params.currentFrame || walkReaches(params, m_headFrames, frame) ||
           walkReaches(params.reversed(), m_tailFrames, frame);
}

}  // namespace QRT_0_81
