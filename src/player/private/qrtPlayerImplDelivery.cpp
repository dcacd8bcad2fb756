// How frames and samples reach the host.
#include <cmath>
#include <limits>
#include <memory>
#include <new>

#include "qrtPlayerImplCommands.h"
#include "qrtPlayerImplSource.h"

namespace QRT_0_81 {

namespace {

/// Whether `frame` lies in the `count` frames from `first` on or is the one behind them: a host that rounds a time
/// at the very end of a composition upwards still gets a picture.
bool isInOrJustBehind(int64 frame, int64 first, int64 count) {
    if (frame < first) return false;
    int64 end = 0;
    return __builtin_add_overflow(first, count, &end) || frame <= end;
}

/// The number without its fraction; what lies outside the range, or is no number, gives the nearest end of it.
size_t samplePosition(double position) {
    constexpr double limit = 18446744073709551616.0;  // 2^64
    if (!(position > 0.0)) return 0;
    return position < limit ? static_cast<size_t>(position) : std::numeric_limits<size_t>::max();
}

}  // namespace

bool PlayerImpl::isVideoBufferReady(int64 frameNumber) {
    return _cacheContains(frameNumber);
}

Status PlayerImpl::getVideoBuffer(int64 frameNumber, SharedPtr<VideoBuffer>& videoBuffer) {
    TraceSpan span("getVideoBuffer", m_number, "frame", frameNumber);
    videoBuffer.reset();
    if (!m_initialized) return Status::not_initialized;
    SharedPtr<Composition> composition;
    Rational rate;
    {
        const std::lock_guard lock(m_engineMutex);
        composition = m_composition;
        rate = m_videoFrameRate;
    }
    if (!composition) return Status::no_composition;
    Time start;
    Time duration;
    if (const Status status = composition->getStartTime(start); status.failure()) return status;
    if (const Status status = composition->getDuration(duration); status.failure()) return status;
    if (!isInOrJustBehind(frameNumber, PlayParams::getFrame(start, rate), PlayParams::getFrame(duration, rate))) {
        return Status::out_of_range;
    }

    QRT_ENGINE_DEBUG("%s %lld", "getVideoBuffer()-before frameNumber =", static_cast<long long>(frameNumber));
    const bool isCached = _cacheGet(frameNumber, videoBuffer, 0).success();
    span.note("cached", isCached);
    if (!isCached) {
        const Status status = _cmdProduceVideoBuffer(frameNumber, videoBuffer, true);
        if (status.failure()) {
            QRT_ENGINE_MESSAGE("getVideoBuffer() failed = %d", static_cast<int>(status.get()));
            return status;
        }
    }
    QRT_ENGINE_DEBUG("%s %lld", "getVideoBuffer()-after frameNumber =", static_cast<long long>(frameNumber));
    if (m_producing) _postCurrentFrameNumber(frameNumber);
    return Status();
}

void PlayerImpl::_postCurrentFrameNumber(int64 frameNumber) {
    // Outside of what is played it moves nothing, and must not keep out one that does.
    if (frameNumber < m_firstFramePlayed || frameNumber > m_lastFramePlayed) return;
    if (m_commandQueue.isUpdateOverruled(frameNumber)) return;
    m_commandQueue.pushFrontUpdate(std::make_unique<CmdUpdateCurrentFrameNumber>(frameNumber), frameNumber);
}

Status PlayerImpl::_cmdProduceVideoBuffer(int64 frameNumber, SharedPtr<VideoBuffer>& videoBuffer, bool onDemand) {
    QRT_ENGINE_DEBUG("_cmdProduceVideoBuffer() frameNumber = %lld", static_cast<long long>(frameNumber));
    return onDemand ? _executeUrgently<CmdProduceVideoBuffer>(frameNumber, onDemand, videoBuffer)
                    : _execute<CmdProduceVideoBuffer>(frameNumber, onDemand, videoBuffer);
}

Status PlayerImpl::fillAudioBuffer(char* buffer, size_t size, size_t position) {
    const TraceSpan span("fillAudioBuffer", m_number, "bytes", static_cast<int64>(size));
    const auto graphEngine = _graphEngine();
    return graphEngine ? graphEngine->fillAudio(getAudioFormat(), buffer, size, position) : Status::general_failure;
}

Status PlayerImpl::_startProducingAudio() {
    Status status;
    const auto format = getAudioFormat();
    const PlayParams::ProductionMode mode = m_playParams->getProductionMode();
    // Settings may have changed while the command waited.
    if (m_producing && format && (mode == PlayParams::audio_only || mode == PlayParams::all)) {
        const double framesPerSecond = getVideoFrameRate().getValue();
        const size_t bytes = format->getSizeInBytes(1);
        if (std::abs(framesPerSecond) >= std::numeric_limits<double>::epsilon() && bytes != 0) {
            // Reading one sample frame positions the graph engine's audio at the current video frame.
            const std::unique_ptr<char[]> sample(new (std::nothrow) char[bytes]());
            const double seconds = static_cast<double>(m_playParams->getCurrentFrame()) / framesPerSecond;
            const size_t position = samplePosition(format->getSampleRate() * seconds + 0.5);
            status = sample ? _graphEngine()->fillAudio(format, sample.get(), bytes, position)
                            : Status(Status::general_failure);
        }
    }
    if (status.failure()) {
        QRT_ENGINE_MESSAGE("%s%d", "Start producing audio failure = ", static_cast<int>(status.get()));
    }
    return status;
}

}  // namespace QRT_0_81
