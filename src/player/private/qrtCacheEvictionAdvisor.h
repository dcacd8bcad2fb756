#pragma once

#include "foundation/cache/qrtCacheData.h"
#include "foundation/cache/qrtEvictionAdvisorInterfaceBase.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtTypes.h"
#include "player/qrtPlayParams.h"

namespace QRT_0_81 {

/// Keeps the frames in the producer cache that playback still needs: the current one, those ahead and those behind.
///
/// It shares the play parameters with the production loop, so the frames it keeps follow every seek; the two counts
/// stay those of the moment at which the run started. Threading: player thread only, the one writer of the parameters.
class CacheEvictionAdvisor final : public EvictionAdvisorInterfaceBase<SharedPtr<CacheData>> {
public:
    CacheEvictionAdvisor(SharedPtr<PlayParams> const& playParams, int32 headFrames, int32 tailFrames);
    ~CacheEvictionAdvisor() override;

    /// True for a frame that is not wanted, and for a record that is no frame.
    [[nodiscard]] bool canEvict(String const& key, SharedPtr<CacheData> const& data) override;

private:
    [[nodiscard]] bool isFrameWanted(int64 frame) const;

    const SharedPtr<PlayParams> m_playParams;
    const int32 m_headFrames;
    const int32 m_tailFrames;
};

}  // namespace QRT_0_81
