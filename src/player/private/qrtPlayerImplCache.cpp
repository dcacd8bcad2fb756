// The producer cache.
#include <charconv>
#include <set>

#include "foundation/cache/qrtForEachFunctorInterface.h"
#include "qrtPlayerImpl.h"
#include "qrtPlayerImplSource.h"
#include "qrtProducedVideoBuffer.h"

namespace QRT_0_81 {

namespace {

/// The frame's number in decimal.
String cacheKey(int64 frameNumber) {
    char text[24] = "";  // 20 characters at most, and the zero that ends them
    std::to_chars(text, text + sizeof text - 1, frameNumber);
    return String(text);
}

/// Collects the numbers of the cached frames, in order.
class ProducerCacheStats final : public ForEachFunctorInterface<SharedPtr<CacheData>> {
public:
    bool visit(SharedPtr<CacheData> const& data) override {
        if (auto const* const produced = dynamic_cast<ProducedVideoBuffer const*>(data.get())) {
            m_frames.insert(produced->getFrameNumber());
        }
        return true;
    }

    /// Appends the runs of consecutive numbers.
    void appendRanges(Vector<CacheStats::FrameRange>& ranges) const {
        for (const int64 frame : m_frames) {
            if (!ranges.empty() && ranges.back().last == frame - 1) {
                ranges.back().last = frame;
            } else {
                ranges.push_back({frame, frame});
            }
        }
    }

private:
    std::set<int64> m_frames;
};

}  // namespace

Status PlayerImpl::_cacheGet(int64 frameNumber, SharedPtr<VideoBuffer>& videoBuffer, int32 timeoutMs) const {
    videoBuffer.reset();
    const String key = cacheKey(frameNumber);
    SharedPtr<CacheData> data;
    const Status status = timeoutMs == 0 ? m_producerCache->get(key, data) : m_producerCache->get(key, timeoutMs, data);
    if (status.failure()) return status;
    auto const* const produced = dynamic_cast<ProducedVideoBuffer const*>(data.get());
    if (!produced) return Status::out_of_range;
    videoBuffer = produced->getVideoBuffer();
    return status;
}

Status PlayerImpl::_cachePut(int64 frameNumber, SharedPtr<VideoBuffer> const& videoBuffer) {
    const SharedPtr<CacheData> record(new ProducedVideoBuffer(frameNumber, videoBuffer));
    return m_producerCache->put(cacheKey(frameNumber), record);
}

Status PlayerImpl::_cacheErase(int64 frameNumber) {
    return m_producerCache->erase(cacheKey(frameNumber));
}

bool PlayerImpl::_cacheContains(int64 frameNumber) const {
    return m_producerCache->containsKey(cacheKey(frameNumber));
}

size_t PlayerImpl::_cacheEvictOne() {
    if (m_producerCache->empty()) return 0;
    size_t numEvicted = 0;
    if (m_producing) (void)m_producerCache->evict(evict_one, evict_advised, numEvicted);
    if (numEvicted == 0) (void)m_producerCache->evict(evict_one, evict_least_recently_used, numEvicted);
    QRT_ENGINE_DEBUG("%s %zd", "_cacheEvictOne() - after - numEvicted =", numEvicted);
    return numEvicted;
}

size_t PlayerImpl::_cacheTryEvictOne() {
    if (m_producerCache->empty()) return 0;
    size_t numEvicted = 0;
    // No fallback: looking ahead never costs a frame that playback still needs.
    if (m_producing) (void)m_producerCache->evict(evict_one, evict_advised, numEvicted);
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
