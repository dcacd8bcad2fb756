// The production loop, and the production of one frame.
#include <QOpenGLBuffer>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <cstring>
#include <limits>

#include "qrtGuarded.h"
#include "qrtOpenGL.h"
#include "qrtPlayParamsPrivate.h"
#include "qrtPlayerImplCommands.h"
#include "qrtPlayerImplSource.h"

namespace QRT_0_81 {

// ---- The loop

void PlayerImpl::_queueProduceNext() {
    m_commandQueue.pushBack(std::make_unique<CmdProduceNextVideoBuffer>());
}

int64 PlayerImpl::_nextFrameToProduce() {
    if (!m_producing) return NextFrameSearch::noFrame;
    const auto isCached = [this](int64 frame) {
        SharedPtr<VideoBuffer> cached;
        return _cacheGet(frame, cached, 0).success();
    };
    return m_nextFrameSearch.find(*m_playParams->m_private, m_producerCacheNbHeadFrames, m_producerCacheNbTailFrames,
                                  m_producerCache->numRemoved(), isCached);
}

Status PlayerImpl::_produceNextVideoBuffer() {
    Status status;
    const int64 frameNumber = _nextFrameToProduce();
    if (frameNumber == NextFrameSearch::noFrame) {
        QRT_ENGINE_DEBUG("PlayerImpl::_produceNextVideoBuffer() has no more frames to produce.");
        return status;
    }
    QRT_ENGINE_DEBUG("%s%lld", "PlayerImpl::_produceNextVideoBuffer() - Trying to produce frameNumber = ",
                     static_cast<long long>(frameNumber));
    m_isLookingAhead = true;
    status = guarded("looking ahead", [&] {
        SharedPtr<VideoBuffer> videoBuffer;
        return _produceVideoBuffer(frameNumber, false, videoBuffer);
    });
    m_isLookingAhead = false;
    if (status.failure()) {
        // The loop pauses; a resource that comes back to its pool restarts it.
        QRT_ENGINE_MESSAGE("%s%d", "Stop producing because status failure = ", static_cast<int>(status.get()));
    } else {
        _queueProduceNext();
    }
    return status;
}

Status PlayerImpl::_updateCurrentFrameNumber(int64 frameNumber) {
    const TraceSpan span("follow the host", m_number, "frame", frameNumber);
    if (!m_producing || frameNumber < m_playParams->getStartFrame() || frameNumber > m_playParams->getEndFrame()) {
        return Status();
    }
    if (const Status status = m_playParams->seek(frameNumber); status.failure()) return status;
    const auto graphEngine = _graphEngine();
    if (graphEngine->getStep() != m_playParams->getStep()) {
        const Status status = graphEngine->setStep(m_playParams->getStep());
        if (status.failure()) return status;
    }
    _queueProduceNext();
    return Status();
}

// ---- One frame

Status PlayerImpl::_produceVideoBuffer(int64 frameNumber, bool onDemand, SharedPtr<VideoBuffer>& videoBuffer) {
    if (const Status cached = _cacheGet(frameNumber, videoBuffer, 0); cached.success()) return cached;
    TraceSpan span("produce", m_number, "frame", frameNumber);
    span.note("on demand", onDemand);
    const Status status = _produceMissing(frameNumber, onDemand, videoBuffer);
    span.note("status", status.get());
    return status;
}

Status PlayerImpl::_produceMissing(int64 frameNumber, bool onDemand, SharedPtr<VideoBuffer>& videoBuffer) {
    SharedPtr<VideoBufferPrivate> rendered;
    if (const Status status = _lendBuffer(m_fboPool, onDemand, rendered); status.failure()) return status;
    QOpenGLFramebufferObject* framebuffer = nullptr;
    if (const Status status = rendered->getFBO(framebuffer); status.failure() || !framebuffer) return status;
    if (const Status status = _render(*framebuffer, frameNumber); status.failure()) return status;

    if (m_ramOutputs) {
        framebuffer->bind();  // the read-back takes what is bound, and a graph engine may have left its own
        SharedPtr<VideoBufferPrivate> copy;
        if (const Status status = _readBack(rendered, onDemand, copy); status.failure()) return status;
        QRT_ENGINE_DEBUG("%s %lld", "Produced RAMOutput frameNumber =", static_cast<long long>(frameNumber));
        videoBuffer = copy;
    } else {
        QRT_ENGINE_DEBUG("%s %lld", "Produced VRAMOutput frameNumber =", static_cast<long long>(frameNumber));
        videoBuffer = rendered;
    }
    const Status stored = _cachePut(frameNumber, videoBuffer);
    if (stored.failure()) return stored;
    return onDemand && m_producing ? _updateCurrentFrameNumber(frameNumber) : stored;
}

template <class Pool>
Status PlayerImpl::_lendBuffer(SharedPtr<Pool> const& pool, bool onDemand, SharedPtr<VideoBufferPrivate>& buffer) {
    for (;;) {
        if (buffer) {
            (void)buffer->lend();
        } else {
            buffer = VideoBufferPrivate::create(pool, onDemand);
        }
        const Status status = buffer ? buffer->getStatus() : Status(Status::general_failure);
        if (status.success()) return status;
        // A change for which there was no memory has left the pool empty, and no setting need change again.
        if (!pool->isInitialized() && m_initialized && _resizePools().success() && pool->isInitialized()) continue;
        const size_t numEvicted = onDemand ? _cacheEvictOne() : _cacheTryEvictOne();
        if (numEvicted == 0) return buffer ? Status::no_resource : Status::general_failure;
    }
}

Status PlayerImpl::_render(QOpenGLFramebufferObject& framebuffer, int64 frameNumber) {
    const TraceSpan span("render", m_number, "frame", frameNumber);
    if (const Status status = _makeContextCurrent(); status.failure()) return status;
    framebuffer.bind();
    // What a graph engine may have left behind, and what would hold the clear back.
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_RASTERIZER_DISCARD);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);  // a frame that is left undrawn shows as solid green
    glClear(GL_COLOR_BUFFER_BIT);
    glFinish();
    const Status status = _askForFrame(frameNumber, framebuffer.texture());
    if (status.failure()) return status;
    if (const Status current = _makeContextCurrent(); current.failure()) return current;
    const TraceSpan finishing("glFinish", m_number);
    glFinish();  // other contexts sample the texture without waiting for this one
    return status;
}

Status PlayerImpl::_askForFrame(int64 frameNumber, unsigned int texture) {
    const TraceSpan span("renderFrame", m_number, "frame", frameNumber);
    return _graphEngine()->renderFrame(m_videoResolution, frameNumber, texture);
}

// ---- Read-back

Status PlayerImpl::_readBack(SharedPtr<VideoBufferPrivate> const& source, bool onDemand,
                             SharedPtr<VideoBufferPrivate>& destination) {
    const TraceSpan span("read back", m_number);
    if (const Status status = _lendBuffer(m_ramPool, onDemand, destination); status.failure()) return status;
    return _copyVideoBuffer(source, destination);
}

Status PlayerImpl::_copyVideoBuffer(SharedPtr<VideoBuffer> const& source, SharedPtr<VideoBuffer> const& destination) {
    if (source->getType() != VideoBuffer::framebufferKind || destination->getType() == VideoBuffer::framebufferKind) {
        return Status::invalid_query;
    }
    void* data = nullptr;
    if (destination->getData(data).failure() || !data) return Status::no_resource;

    const uint64 size = m_videoResolution.getBufferSize();
    if (const Status status = _bindPixelBuffer(size); status.failure()) return status;
    const GLenum error = _readPixels();
    void const* const mapped = m_pixelBuffer->map(QOpenGLBuffer::ReadOnly);
    if (!mapped) {
        QRT_ENGINE_MESSAGE("PlayerImpl::_copyVideoBuffer()--PBO map() failed");
        m_pixelBuffer->release();
        return Status::graphics_failure;
    }
    std::memcpy(data, mapped, size);
    if (!m_pixelBuffer->unmap()) QRT_ENGINE_MESSAGE("PlayerImpl::_copyVideoBuffer()--PBO unmap() failed");
    m_pixelBuffer->release();
    if (error != GL_NO_ERROR) {
        QRT_ENGINE_MESSAGE("PlayerImpl::_copyVideoBuffer()--reading the pixels failed: OpenGL error %u", error);
    }
    return Status();
}

unsigned int PlayerImpl::_readPixels() {
    // A graph engine may have left errors, and a layout in which the picture is not what the host expects.
    drainGlErrors();
    constexpr GLenum layout[] = {GL_PACK_ROW_LENGTH, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS};
    for (const GLenum parameter : layout)
        glPixelStorei(parameter, 0);
    glReadPixels(0, 0, m_videoResolution.getWidth(), m_videoResolution.getHeight(), getOglFormat(m_videoResolution),
                 getOglType(m_videoResolution), nullptr);
    return glGetError();
}

Status PlayerImpl::_bindPixelBuffer(uint64 size) {
    if (m_pixelBuffer) {
        if (m_pixelBuffer->bind()) return Status();
        QRT_ENGINE_MESSAGE("PlayerImpl::_copyVideoBuffer()-PBO bind failed");
        return Status::graphics_failure;
    }
    constexpr uint64 largestSize = std::numeric_limits<int>::max();  // more would be cut off, and read beyond its end
    m_pixelBuffer = std::make_unique<QOpenGLBuffer>(QOpenGLBuffer::PixelPackBuffer);
    if (size > largestSize || !m_pixelBuffer->create()) {
        QRT_ENGINE_MESSAGE("PlayerImpl::_copyVideoBuffer()-PBO creation failed");
        _deletePixelBuffer();
        return Status::graphics_failure;
    }
    if (!m_pixelBuffer->bind()) {
        QRT_ENGINE_MESSAGE("PlayerImpl::_copyVideoBuffer()-PBO bind failed");
        _deletePixelBuffer();
        return Status::graphics_failure;
    }
    m_pixelBuffer->allocate(nullptr, static_cast<int>(size));
    return Status();
}

void PlayerImpl::_deletePixelBuffer() {
    m_pixelBuffer.reset();
}

}  // namespace QRT_0_81
