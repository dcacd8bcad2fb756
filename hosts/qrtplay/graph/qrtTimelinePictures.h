#pragma once

#include <memory>

#include "base/qrtKit.h"
#include "foundation/core/qrtSharedPtr.h"
#include "graph/qrtTimelineComposition.h"
#include "media/qrtPictureStore.h"

namespace qrtplay {

/// The pictures of a composition's media. Media that cannot be opened shows as a slate with its name, and the
/// composition is told.
[[nodiscard]] std::shared_ptr<PictureStore> openPictureStore(SharedPtr<TimelineComposition> const& composition,
                                                             size_t budgetInBytes);

}  // namespace qrtplay
