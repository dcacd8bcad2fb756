#pragma once

#include "foundation/core/qrtSharedPtr.h"
#include "generators/qrtGeneratorSegment.h"

namespace qrtplay {

/// A generator that the processor renders into memory: a title, on transparent ground, or a solid colour.
///
/// Four channels of 8 bits, red, green, blue, alpha, premultiplied; the first row is the bottom of the picture.
class RamGeneratorSegment final : public GeneratorSegment {
public:
    [[nodiscard]] static SharedPtr<RamGeneratorSegment> create(Generator const& generator) {
        return SharedPtr<RamGeneratorSegment>(new RamGeneratorSegment(generator));
    }

    [[nodiscard]] bool isRamSegment() const override { return true; }
    /// Always `Status::invalid_query`.
    Status renderToTexture(unsigned int texture, unsigned int rectangle, VideoBufferResolution const& resolution,
                           Time const& time) override;
    /// `Status::invalid_argument` for no buffer, another size than the format's or another format than the above,
    /// `Status::invalid_query` for a generator of another kind, `Status::general_failure` without a QGuiApplication or
    /// memory. Nothing is written then.
    Status renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                       Time const& time) override;

private:
    using GeneratorSegment::GeneratorSegment;
};

}  // namespace qrtplay
