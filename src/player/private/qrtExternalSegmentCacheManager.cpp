#include "qrtExternalSegmentCacheManager.h"

#include <charconv>
#include <mutex>
#include <string_view>
#include <utility>

#include "qrtExternalSegmentVideoBuffer.h"
#include "qrtResourcePoolFBO.h"
#include "qrtResourcePoolRAM.h"

namespace QRT_0_81 {

namespace {

using Cache = CacheBase<SharedPtr<CacheData>>;

constexpr char keySeparator[] = "_";

/// Whether the key names a frame of the segment between the two, both inclusive.
bool isKeyInRange(String const& key, String const& id, int64 firstFrame, int64 lastFrame) {
    const std::string_view text(key.c_str(), key.size());
    const std::string_view prefix(id.c_str(), id.size());
    if (text.size() <= prefix.size() + 1 || text.substr(0, prefix.size()) != prefix) return false;
    if (text[prefix.size()] != keySeparator[0]) return false;
    int64 frame = 0;
    char const* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + prefix.size() + 1, end, frame);
    return parsed.ec == std::errc() && parsed.ptr == end && frame >= firstFrame && frame <= lastFrame;
}

}  // namespace

/// One kind of memory: its budget, the pool that the budget buys, and the cache.
template <class Pool>
struct ExternalSegmentCacheKind {
    SharedPtr<Pool> pool;                      // null until a budget is set
    SharedPtr<Cache> cache = Cache::create();  // null once the engine is gone
    ResourceConstraint::ResizeMode mode{};
    size_t first = 0;
    size_t second = 0;

    [[nodiscard]] bool isEnabled() const { return second != 0; }
    [[nodiscard]] bool has(ResourceConstraint::ResizeMode otherMode, size_t otherFirst, size_t otherSecond) const {
        return mode == otherMode && first == otherFirst && second == otherSecond;
    }
    void store(ResourceConstraint::ResizeMode newMode, size_t newFirst, size_t newSecond) {
        mode = newMode;
        first = newFirst;
        second = newSecond;
    }
};

namespace {

template <class Pool>
using Kind = ExternalSegmentCacheKind<Pool>;
using VramKind = Kind<ResourcePoolFBO>;
using RamKind = Kind<ResourcePoolRAM>;

/// The cached record of a frame if it is one of `resolution` for which `matches` holds; a stale one is dropped.
template <class Pool, class Matches>
Status find(Kind<Pool> const& kind, String const& key, VideoBufferResolution const& resolution, Matches matches,
            SharedPtr<ExternalSegmentVideoBuffer>& record) {
    if (!kind.isEnabled() || !kind.pool) return Status::not_in_cache;
    if (const Status status = kind.pool->setResolution(resolution); status.failure()) return status;
    SharedPtr<CacheData> data;
    if (const Status status = kind.cache->get(key, data); status.failure()) return status;
    record = dynamicPtrCast<ExternalSegmentVideoBuffer>(data);
    if (record && matches(*record) && record->getResolution() == resolution) return Status();
    record.reset();
    (void)kind.cache->erase(key);
    return Status::not_in_cache;
}

/// A buffer of the kind's pool; cached frames make room for it when the budget is used up.
template <class Pool>
Status lend(Kind<Pool> const& kind, VideoBufferResolution const& resolution, SharedPtr<VideoBufferPrivate>& buffer) {
    if (!kind.pool) return Status::not_in_cache;
    for (;;) {
        if (const Status status = kind.pool->setResolution(resolution); status.failure()) return status;
        buffer = VideoBufferPrivate::create(kind.pool, true);
        const Status status = buffer ? buffer->getStatus() : Status(Status::general_failure);
        if (!(status == Status::no_resource)) return status;
        if (kind.cache->empty()) return status;
        size_t numEvicted = 0;
        (void)kind.cache->evict(evict_one, evict_least_recently_used, numEvicted);
        if (numEvicted == 0) return status;
    }
}

}  // namespace

class ExternalSegmentCacheManager::State final : public RefCountedMT {
public:
    explicit State(SharedPtr<FramebufferReaper> const& framebufferReaper) : reaper(framebufferReaper) {}
    ~State() override {
        ram.cache.reset();
        vram.cache.reset();
        ram.pool.reset();
        vram.pool.reset();
    }

    /// The fields of a kind at this moment; the pool and the cache in it take care of their own threads.
    template <class Pool>
    [[nodiscard]] Kind<Pool> now(Kind<Pool> const& kind) const {
        const std::lock_guard lock(mutex);
        return kind;
    }

    const SharedPtr<FramebufferReaper> reaper;
    mutable std::mutex mutex;
    VramKind vram;  // under mutex
    RamKind ram;    // under mutex
};

ExternalSegmentCacheManager::ExternalSegmentCacheManager(SharedPtr<FramebufferReaper> const& reaper)
    : m_state(new State(reaper)) {}

ExternalSegmentCacheManager::ExternalSegmentCacheManager(ExternalSegmentCacheManager const& other) = default;
ExternalSegmentCacheManager::~ExternalSegmentCacheManager() = default;

Status ExternalSegmentCacheManager::setConstraint(Resource::Type type, ResourceConstraint::ResizeMode mode,
                                                  size_t first, size_t second) {
    const auto change = [&](auto& kind, auto makePool) {
        if (m_state->now(kind).has(mode, first, second)) return;
        auto pool = makePool();
        // The cache is replaced rather than cleared: a frame on its way into it at this moment must not stay behind,
        // outside the new budget.
        SharedPtr<Cache> cache = Cache::create();
        if (pool) (void)pool->setSize(second, ResourcePool::SizeUnit::megabytes);
        const std::lock_guard lock(m_state->mutex);
        if (pool) {
            kind.pool.swap(pool);  // what is replaced is let go of after the lock
            kind.cache.swap(cache);
        }
        kind.store(mode, first, second);
    };
    switch (type) {
        case Resource::Type::ram: change(m_state->ram, [] { return ResourcePoolRAM::create(); }); break;
        case Resource::Type::vram:
            change(m_state->vram, [this] { return ResourcePoolFBO::create(m_state->reaper); });
            break;
        default: change(m_state->vram, [] { return SharedPtr<ResourcePoolFBO>(); }); break;
    }
    return Status();
}

void ExternalSegmentCacheManager::getConstraint(Resource::Type type, ResourceConstraint::ResizeMode& mode,
                                                size_t& first, size_t& second) const {
    const auto report = [&](auto const& kind) {
        mode = kind.mode;
        first = kind.first;
        second = kind.second;
    };
    if (type == Resource::Type::ram) {
        report(m_state->now(m_state->ram));
    } else {
        report(m_state->now(m_state->vram));
    }
}

bool ExternalSegmentCacheManager::isEnabled(bool vram) const {
    const std::lock_guard lock(m_state->mutex);
    return vram ? m_state->vram.isEnabled() : m_state->ram.isEnabled();
}

bool ExternalSegmentCacheManager::isEnabled() const {
    return isEnabled(true) || isEnabled(false);
}

bool ExternalSegmentCacheManager::isEmpty(bool vram) const {
    const SharedPtr<Cache> cache = vram ? m_state->now(m_state->vram).cache : m_state->now(m_state->ram).cache;
    return !cache || cache->empty();
}

String ExternalSegmentCacheManager::cacheKey(String const& id, int64 frame) {
    String key(id);
    key.append(keySeparator);
    char number[24] = "";
    std::to_chars(number, number + sizeof number - 1, frame);
    key.append(number);
    return key;
}

Status ExternalSegmentCacheManager::invalidate(bool vram, String const& id, int64 frame) {
    return invalidate(vram, id, frame, frame);
}

Status ExternalSegmentCacheManager::invalidate(bool vram, String const& id, int64 firstFrame, int64 lastFrame) {
    if (!isEnabled(vram) || firstFrame > lastFrame) return Status();
    const SharedPtr<Cache> cache = vram ? m_state->now(m_state->vram).cache : m_state->now(m_state->ram).cache;
    if (!cache) return Status();
    const uint64 numFrames = static_cast<uint64>(lastFrame) - static_cast<uint64>(firstFrame);  // one less, to fit
    if (numFrames >= cache->size()) {
        return cache->eraseIf([&](String const& key) { return isKeyInRange(key, id, firstFrame, lastFrame); });
    }
    for (uint64 i = 0; i <= numFrames; ++i)
        (void)cache->erase(cacheKey(id, firstFrame + static_cast<int64>(i)));
    return Status();
}

Status ExternalSegmentCacheManager::getTextureFrame(String const& id, int64 ticks,
                                                    VideoBufferResolution const& resolution, unsigned int rectangle,
                                                    unsigned int texture) {
    SharedPtr<ExternalSegmentVideoBuffer> record;
    const Status status = find(
        m_state->now(m_state->vram), cacheKey(id, ticks), resolution,
        [rectangle](auto const& candidate) { return candidate.getRectangle() == rectangle; }, record);
    return status.success() ? record->copyToTexture(texture) : status;
}

Status ExternalSegmentCacheManager::getRamFrame(String const& id, int64 ticks, VideoBufferResolution const& resolution,
                                                void* buffer, size_t size) {
    SharedPtr<ExternalSegmentVideoBuffer> record;
    const Status status = find(
        m_state->now(m_state->ram), cacheKey(id, ticks), resolution,
        [size](auto const& candidate) { return candidate.getSize() == size; }, record);
    return status.success() ? record->copyToRam(buffer, size) : status;
}

Status ExternalSegmentCacheManager::putTextureFrame(String const& id, int64 ticks,
                                                    VideoBufferResolution const& resolution, unsigned int rectangle,
                                                    unsigned int texture) {
    const VramKind kind = m_state->now(m_state->vram);
    SharedPtr<VideoBufferPrivate> buffer;
    if (const Status status = lend(kind, resolution, buffer); status.failure()) return status;
    const SharedPtr<ExternalSegmentVideoBuffer> record(new ExternalSegmentVideoBuffer(rectangle, resolution, buffer));
    if (const Status status = record->copyFromTexture(texture); status.failure()) return status;
    return kind.cache->put(cacheKey(id, ticks), record);
}

Status ExternalSegmentCacheManager::putRamFrame(String const& id, int64 ticks, VideoBufferResolution const& resolution,
                                                void const* buffer, size_t size) {
    const RamKind kind = m_state->now(m_state->ram);
    SharedPtr<VideoBufferPrivate> lent;
    if (const Status status = lend(kind, resolution, lent); status.failure()) return status;
    const SharedPtr<ExternalSegmentVideoBuffer> record(
        new ExternalSegmentVideoBuffer(size_t{kind.pool->getBufferSize()}, resolution, lent));
    if (const Status status = record->copyFromRam(buffer, size); status.failure()) return status;
    return kind.cache->put(cacheKey(id, ticks), record);
}

void ExternalSegmentCacheManager::releaseTextures() {
    const VramKind kind = m_state->now(m_state->vram);
    if (kind.cache) (void)kind.cache->clear();
    if (kind.pool) (void)kind.pool->uninitialize();
}

void ExternalSegmentCacheManager::close() {
    VramKind vram{nullptr, nullptr};  // an engine's end must not need memory for new caches
    RamKind ram{nullptr, nullptr};
    const std::lock_guard lock(m_state->mutex);
    std::swap(m_state->vram, vram);
    std::swap(m_state->ram, ram);
}

}  // namespace QRT_0_81
