#pragma once

#include <vector>

#include "base/qrtKit.h"
#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtList.h"
#include "foundation/core/qrtSharedPtr.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// The segment that renders `generator`: a `RamGeneratorSegment` for a title, a `GlGeneratorSegment` for all others.
[[nodiscard]] SharedPtr<ExternalSegment> makeGeneratorSegment(Generator const& generator);

/// One segment for each generator, in their order.
[[nodiscard]] List<SharedPtr<ExternalSegment>> makeGeneratorSegments(std::vector<Generator> const& generators);

}  // namespace qrtplay
