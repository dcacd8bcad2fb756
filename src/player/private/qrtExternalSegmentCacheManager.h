#pragma once

#include "foundation/cache/qrtCacheBase.h"
#include "foundation/core/qrtResource.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtString.h"
#include "foundation/core/qrtVideoBufferResolution.h"
#include "qrtFramebufferReaper.h"

namespace QRT_0_81 {

/// Keeps copies of the frames that a host's segments have rendered, within one budget for textures (VRAM) and one for
/// memory (RAM). Off until a budget is set.
///
/// A handle: copies refer to the same caches, which live as long as any copy, so a segment's wrapper may outlive the
/// engine.
///
/// Threading: everything may be called from any thread, but what takes a texture only on the player thread with its
/// context current. The manager's lock guards its fields only and is not held while a pool or a cache is used.
class ExternalSegmentCacheManager {
public:
    /// `reaper` ends the framebuffers that are dropped where their context is not current.
    explicit ExternalSegmentCacheManager(SharedPtr<FramebufferReaper> const& reaper);
    virtual ~ExternalSegmentCacheManager();
    ExternalSegmentCacheManager(ExternalSegmentCacheManager const& other);
    ExternalSegmentCacheManager& operator=(ExternalSegmentCacheManager const&) = delete;

    /// Sets the budget of a kind to `second` mebibytes, 0 switching it off; `mode` and `first` are only stored.
    /// A change empties that kind's cache. A type that is neither RAM nor VRAM is stored as VRAM and changes no cache.
    /// Always succeeds.
    Status setConstraint(Resource::Type type, ResourceConstraint::ResizeMode mode, size_t first, size_t second);
    void getConstraint(Resource::Type type, ResourceConstraint::ResizeMode& mode, size_t& first, size_t& second) const;

    [[nodiscard]] bool isEnabled(bool vram) const;
    [[nodiscard]] bool isEnabled() const;
    [[nodiscard]] bool isEmpty(bool vram) const;

    /// Under what a frame is cached: the segment's identifier, "_", and the frame's number in decimal.
    [[nodiscard]] static String cacheKey(String const& id, int64 frame);

    /// Drops a cached frame, or all of a range (both ends inclusive; nothing when the start is above the end) at a cost
    /// that the number of cached frames bounds. Success also when nothing is cached or the kind is off.
    Status invalidate(bool vram, String const& id, int64 frame);
    Status invalidate(bool vram, String const& id, int64 firstFrame, int64 lastFrame);

    /// Copy a cached frame out. `Status::not_in_cache` when it is not there, was made for another format or kind of
    /// texture or with another size (and is dropped then), or the kind is off.
    Status getTextureFrame(String const& id, int64 ticks, VideoBufferResolution const& resolution,
                           unsigned int rectangle, unsigned int texture);
    Status getRamFrame(String const& id, int64 ticks, VideoBufferResolution const& resolution, void* buffer,
                       size_t size);

    /// Copy a frame into the cache, evicting others while the budget is used up. `Status::no_resource` when the budget
    /// is too small for one frame, `Status::not_in_cache` when the kind never had a budget.
    Status putTextureFrame(String const& id, int64 ticks, VideoBufferResolution const& resolution,
                           unsigned int rectangle, unsigned int texture);
    Status putRamFrame(String const& id, int64 ticks, VideoBufferResolution const& resolution, void const* buffer,
                       size_t size);

    /// The player thread is about to lose its context: drops the cached textures. They are made anew when next needed.
    void releaseTextures();
    /// The engine is gone: drops everything and switches both kinds off.
    void close();

private:
    class State;
    SharedPtr<State> m_state;
};

}  // namespace QRT_0_81
