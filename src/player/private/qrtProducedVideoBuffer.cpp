#include "qrtProducedVideoBuffer.h"

#include "qrtDebugLine.h"

namespace QRT_0_81 {

ProducedVideoBuffer::ProducedVideoBuffer(int64 frameNumber, SharedPtr<VideoBuffer> const& videoBuffer)
    : m_frameNumber(frameNumber), m_videoBuffer(videoBuffer) {}

ProducedVideoBuffer::~ProducedVideoBuffer() {
    QRT_DEBUG_LINE("src/player/private/qrtProducedVideoBuffer", "%s %lld",
                   "Releasing frameNumber =", static_cast<long long>(m_frameNumber));
    m_videoBuffer.reset();
}

}  // namespace QRT_0_81
