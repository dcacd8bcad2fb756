#pragma once

#include "foundation/core/qrtSharedPtr.h"
#include "generators/qrtGeneratorSegment.h"

namespace qrtplay {

/// A generator that is drawn with OpenGL: a solid colour, SMPTE bars or a counting leader.
///
/// Row 0 of the texture is the bottom of the picture; alpha is premultiplied. Any format that can be drawn into.
/// OpenGL: every call makes what it needs and deletes it again. The host holds segments for longer than the player's
/// context lives, and what a segment kept could not be deleted any more. The state is left as it was, and no error.
class GlGeneratorSegment final : public GeneratorSegment {
public:
    [[nodiscard]] static SharedPtr<GlGeneratorSegment> create(Generator const& generator) {
        return SharedPtr<GlGeneratorSegment>(new GlGeneratorSegment(generator));
    }

    [[nodiscard]] bool isRamSegment() const override { return false; }
    /// `Status::invalid_argument` for texture 0 or an invalid format, `Status::invalid_query` for a generator of
    /// another kind, `Status::general_failure` without a current context or when the texture cannot be drawn into.
    Status renderToTexture(unsigned int texture, unsigned int rectangle, VideoBufferResolution const& resolution,
                           Time const& time) override;
    /// Always `Status::invalid_query`.
    Status renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                       Time const& time) override;

private:
    using GeneratorSegment::GeneratorSegment;
};

}  // namespace qrtplay
