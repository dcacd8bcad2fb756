// The producer cache.
#include <algorithm>
#include <charconv>
#include <vector>

#include "foundation/cache/qrtForEachFunctorInterface.h"
#include "qrtPlayerImpl.h"
#include "qrtPlayerImplSource.h"
#include "qrtProducedVideoBuffer.h"

namespace QRT_0_81 {

namespace {

/// The frame's number in decimal, as text on the stack.
class CacheKey final {
public:
    explicit CacheKey(int64 frameNumber) noexcept
        : m_end(std::to_chars(m_text, m_text + sizeof m_text, frameNumber).ptr) {}
    CacheKey(CacheKey const&) = delete;
    CacheKey& operator=(CacheKey const&) = delete;

    [[nodiscard]] std::string_view view() const noexcept { return {m_text, static_cast<size_t>(m_end - m_text)}; }
    [[nodiscard]] String text() const { return String(std::string(view())); }

private:
    char m_text[20];  // the longest has 19 digits and a sign
    char const* const m_end;
};

/// Takes the frame out of a record.
class TakeVideoBuffer final : public ForEachFunctorInterface<SharedPtr<CacheData>> {
public:
    explicit TakeVideoBuffer(SharedPtr<VideoBuffer>& videoBuffer) : m_videoBuffer(videoBuffer) {}

    bool visit(SharedPtr<CacheData> const& data) override {
        auto const* const produced = ProducedVideoBuffer::from(data);
        if (produced) m_videoBuffer = produced->getVideoBuffer();
        m_isFrame = produced;
        return true;
    }
    [[nodiscard]] bool isFrame() const { return m_isFrame; }

private:
    SharedPtr<VideoBuffer>& m_videoBuffer;
    bool m_isFrame = false;
};

/// Collects the numbers of the cached frames, in order.
class ProducerCacheStats final : public ForEachFunctorInterface<SharedPtr<CacheData>> {
public:
    bool visit(SharedPtr<CacheData> const& data) override {
        if (auto const* const produced = ProducedVideoBuffer::from(data))
            m_frames.push_back(produced->getFrameNumber());
        return true;
    }

    /// Appends the runs of consecutive numbers.
    void appendRanges(Vector<CacheStats::FrameRange>& ranges) {
        std::sort(m_frames.begin(), m_frames.end());
        m_frames.erase(std::unique(m_frames.begin(), m_frames.end()), m_frames.end());
        for (const int64 frame : m_frames) {
            if (!ranges.empty() && ranges.back().last == frame - 1) {
                ranges.back().last = frame;
            } else {
                ranges.push_back({frame, frame});
            }
        }
    }

private:
    std::vector<int64> m_frames;
};

}  // namespace

Status PlayerImpl::_cacheGet(int64 frameNumber, SharedPtr<VideoBuffer>& videoBuffer, int32 timeoutMs) const {
    videoBuffer.reset();
    TakeVideoBuffer taking(videoBuffer);
    const CacheKey key(frameNumber);
    Status status;
    if (timeoutMs == 0) {
        // Every frame that a host fetches comes this way: the record itself is not taken, only its frame.
        status = m_producerCache->visit(key.view(), taking);
    } else {
        SharedPtr<CacheData> data;
        status = m_producerCache->get(key.text(), timeoutMs, data);
        if (status.success()) (void)taking.visit(data);
    }
    return status.success() && !taking.isFrame() ? Status(Status::out_of_range) : status;
}

Status PlayerImpl::_cachePut(int64 frameNumber, SharedPtr<VideoBuffer> const& videoBuffer) {
    const SharedPtr<CacheData> record(new ProducedVideoBuffer(frameNumber, videoBuffer));
    return m_producerCache->put(CacheKey(frameNumber).text(), record);
}

Status PlayerImpl::_cacheErase(int64 frameNumber) {
    return m_producerCache->erase(CacheKey(frameNumber).text());
}

bool PlayerImpl::_cacheContains(int64 frameNumber) const {
    return m_producerCache->containsKey(CacheKey(frameNumber).text());
}

size_t PlayerImpl::_cacheEvictOne() {
    if (m_producerCache->empty()) return 0;
    size_t numEvicted = 0;
    TraceSpan span("evict", m_number);
    if (m_producing) numEvicted = _cacheEvictUnwanted();
    if (numEvicted == 0) (void)m_producerCache->evict(evict_one, evict_least_recently_used, numEvicted);
    span.note("evicted", static_cast<int64>(numEvicted));
    QRT_ENGINE_DEBUG("%s %zd", "_cacheEvictOne() - after - numEvicted =", numEvicted);
    return numEvicted;
}

size_t PlayerImpl::_cacheEvictUnwanted() {
    size_t numEvicted = 0;
    (void)m_producerCache->evict(evict_one, evict_advised, numEvicted);
    // The advisor keeps what the search looks for: the counts of frames do not change during a run.
    m_nextFrameSearch.noteUnwantedRemoved(*m_playParams->m_private, numEvicted);
    return numEvicted;
}

size_t PlayerImpl::_cacheTryEvictOne() {
    if (m_producerCache->empty()) return 0;
    size_t numEvicted = 0;
    TraceSpan span("evict", m_number);
    // No fallback: looking ahead never costs a frame that playback still needs.
    if (m_producing) numEvicted = _cacheEvictUnwanted();
    span.note("evicted", static_cast<int64>(numEvicted));
    QRT_ENGINE_DEBUG("%s %zd", "_cacheTryEvictOne() - after - numEvicted =", numEvicted);
    return numEvicted;
}

Status PlayerImpl::getCacheStats(CacheStats::CacheType type, ConstSharedPtr<CacheStats>& stats) const {
    switch (type) {
        case CacheStats::CacheType::graph_engine: {
            const auto graphEngine = _graphEngine();
            return graphEngine ? graphEngine->getCacheStats(type, stats) : Status::general_failure;
        }
        case CacheStats::CacheType::producer: {
            const SharedPtr<CacheStats> record = CacheStats::create();
            stats = record;
            if (m_producerCache->empty()) return Status();
            ProducerCacheStats visitor;
            (void)m_producerCache->for_each(visitor);
            visitor.appendRanges(record->getFrameRanges());
            return Status();
        }
    }
    return Status::invalid_query;
}

}  // namespace QRT_0_81
