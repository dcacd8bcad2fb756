#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/qrtKit.h"
#include "graph/qrtChromaSite.h"
#include "graph/qrtColourTransform.h"
#include "graph/qrtPixelLayout.h"
#include "graph/qrtSampleLines.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Makes opaque RGBA of 8 bits of the lines of a picture, on the CPU and by the same numbers that the shaders are told.
///
/// Within 0.6 of 255 of what exact arithmetic gives. FFmpeg's converter is as near only when it takes four times as
/// long; in its quick ways it repeats chroma samples, which at the edges of colours is off by the whole of them.
/// Threading: one thread at a time.
class RgbaLines final {
public:
    /// Empty for pictures that need more: alpha, floats, X Y Z, and what `SampleLines` cannot read.
    static std::optional<RgbaLines> create(PixelLayout const& layout, ColourTransform const& transform,
                                           ChromaPlace const& chroma);

    /// Writes line `line` of `picture`, 4 bytes a pixel. `picture` has to have the layout given to `create`.
    void convert(AVFrame const& picture, int line, std::uint8_t* pixels);

private:
    using Bytes = std::vector<std::uint8_t>;
    /// Of sums in parts of a step of 8 bits: what a sample of 16 bits contributes is its product with a factor,
    /// without the lower half.
    struct Colour {
        std::uint16_t light = 0;  // of luma, or of the colour's own samples
        std::int16_t blueness = 0;
        std::int16_t redness = 0;
        std::int16_t offset = 0;
    };

    RgbaLines(PixelLayout const& layout, ColourTransform const& transform, ChromaPlace const& chroma);
    [[nodiscard]] static Colour factorsOf(size_t colour, PixelLayout const& layout, ColourTransform const& transform);

    void fromDifferences(AVFrame const& picture, int line);
    void fromColours(AVFrame const& picture, int line);

    SampleLines m_samples;
    const int m_componentCount;
    const bool m_hasDifferences;
    const std::array<Colour, 3> m_colours;
    std::array<Bytes, 3> m_steps;  // red, green and blue of the line
};

}  // namespace qrtplay
