#include "generators/qrtGeneratorSegments.h"

#include "generators/qrtGlGeneratorSegment.h"
#include "generators/qrtRamGeneratorSegment.h"

namespace qrtplay {

SharedPtr<ExternalSegment> makeGeneratorSegment(Generator const& generator) {
    if (generator.kind == Generator::Kind::title) return RamGeneratorSegment::create(generator);
    return GlGeneratorSegment::create(generator);
}

List<SharedPtr<ExternalSegment>> makeGeneratorSegments(std::vector<Generator> const& generators) {
    List<SharedPtr<ExternalSegment>> segments;
    for (Generator const& generator : generators)
        segments.append(makeGeneratorSegment(generator));
    return segments;
}

}  // namespace qrtplay
