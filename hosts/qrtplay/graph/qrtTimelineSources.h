#pragma once

#include <memory>

#include "base/qrtKit.h"
#include "foundation/core/qrtSharedPtr.h"
#include "graph/qrtTimelineComposition.h"
#include "media/qrtPictureStore.h"
#include "sound/qrtSoundMixer.h"

namespace qrtplay {

/// The pictures of a composition's media. Media that cannot be opened is a slate with its name; the composition is
/// told.
[[nodiscard]] std::shared_ptr<PictureStore> openPictureStore(SharedPtr<TimelineComposition> const& composition,
                                                             size_t budgetInBytes);

/// The sound of a composition's media. Media without sound is silent; of what cannot be opened the composition is told.
[[nodiscard]] std::shared_ptr<SoundMixer> openSoundMixer(SharedPtr<TimelineComposition> const& composition);

}  // namespace qrtplay
