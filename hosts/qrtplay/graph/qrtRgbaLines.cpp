#include "graph/qrtRgbaLines.h"

#include <bit>
#include <cmath>
#include <utility>

#include "base/qrtCpuClones.h"

namespace qrtplay {

namespace {

// Sums take 16 bits with a sign, so that processors add eight or more of them at a time: luma with chroma stays within
// 570 steps either way, which leaves five bits for parts of a step.
constexpr int fractionBits = 5;
constexpr int factorBits = 16;
constexpr int middle = 1 << (SampleLines::bits - 1);

using Sample = SampleLines::Sample;

std::int16_t product(Sample sample, std::uint16_t factor) {
    return static_cast<std::int16_t>((std::uint32_t{sample} * factor) >> factorBits);
}

std::int16_t product(std::int16_t difference, std::int16_t factor) {
    return static_cast<std::int16_t>((std::int32_t{difference} * factor) >> factorBits);
}

std::uint8_t clipped(int sum) {
    auto steps = static_cast<std::int16_t>(static_cast<std::int16_t>(sum) >> fractionBits);
    steps = steps < 0 ? std::int16_t{0} : steps;
    return static_cast<std::uint8_t>(steps > 255 ? std::int16_t{255} : steps);
}

std::uint16_t pairOf(int first, int second) {
    if constexpr (std::endian::native == std::endian::big) std::swap(first, second);
    return static_cast<std::uint16_t>(first | second << 8);
}

// One colour at a time, and not two of everything: compilers then find that they can take many samples at once.

QRTPLAY_CPU_CLONES
void addDifference(Sample const* __restrict luma, Sample const* __restrict differences, std::uint16_t light,
                   std::int16_t factor, std::int16_t offset, std::uint8_t* __restrict steps, int count) {
    for (int i = 0; i < count; ++i) {
        const auto difference = static_cast<std::int16_t>(differences[i] - middle);
        steps[i] = clipped(product(luma[i], light) + product(difference, factor) + offset);
    }
}

QRTPLAY_CPU_CLONES
void addDifferences(Sample const* __restrict luma, Sample const* __restrict blueness, Sample const* __restrict redness,
                    std::uint16_t light, std::int16_t blueFactor, std::int16_t redFactor, std::int16_t offset,
                    std::uint8_t* __restrict steps, int count) {
    for (int i = 0; i < count; ++i) {
        const auto blue = static_cast<std::int16_t>(blueness[i] - middle);
        const auto red = static_cast<std::int16_t>(redness[i] - middle);
        steps[i] = clipped(product(luma[i], light) + product(blue, blueFactor) + product(red, redFactor) + offset);
    }
}

/// Two bytes at a time: four at a time keep GCC from using more than one lane.
QRTPLAY_CPU_CLONES
void interleave(std::uint8_t const* red, std::uint8_t const* green, std::uint8_t const* blue, int count,
                std::uint8_t* pixels) {
    auto* __restrict const pairs = reinterpret_cast<std::uint16_t*>(pixels);
    for (int i = 0; i < count; ++i) {
        // NOLINTBEGIN(bugprone-implicit-widening-of-multiplication-result): the side of a picture is bounded
        pairs[2 * i] = pairOf(red[i], green[i]);
        pairs[2 * i + 1] = pairOf(blue[i], 255);
        // NOLINTEND(bugprone-implicit-widening-of-multiplication-result)
    }
}

bool hasDifferences(PixelLayout const& layout) {
    return !layout.isRgb && layout.componentCount == 3;
}

}  // namespace

std::optional<RgbaLines> RgbaLines::create(PixelLayout const& layout, ColourTransform const& transform,
                                           ChromaPlace const& chroma) {
    // Of the matrices that there are only that of YCgCo lets red depend on both differences.
    const bool isUsual = !hasDifferences(layout) || (transform.matrix[1] == 0 && transform.matrix[8] == 0);
    if (layout.hasAlpha || layout.isXyz || !isUsual || !SampleLines::canRead(layout, chroma)) return std::nullopt;
    return RgbaLines(layout, transform, chroma);
}

RgbaLines::RgbaLines(PixelLayout const& layout, ColourTransform const& transform, ChromaPlace const& chroma)
    : m_samples(layout, chroma),
      m_componentCount(layout.componentCount),
      m_hasDifferences(hasDifferences(layout)),
      m_colours{factorsOf(0, layout, transform), factorsOf(1, layout, transform), factorsOf(2, layout, transform)} {}

RgbaLines::Colour RgbaLines::factorsOf(size_t colour, PixelLayout const& layout, ColourTransform const& transform) {
    // The transform counts in textures' samples, of which 1 has all bits of a channel set.
    const int channelBits = layout.bytesPerChannel * 8;
    const int up = SampleLines::bits - layout.bits - layout.shift;
    constexpr double partsPerColour = 255 << fractionBits;
    const double partsPerSample = partsPerColour / ((std::exp2(channelBits) - 1) * std::exp2(up));
    double const* const row = transform.matrix.data() + colour * 3;
    const auto factor = [&](double number) { return std::lround(number * partsPerSample * (1 << factorBits)); };

    Colour factors;
    constexpr double lostPerProduct = 0.5;  // at the middle, as its lower half is cut off
    double offset = transform.offset[colour] * partsPerColour + (1 << (fractionBits - 1)) + lostPerProduct;
    if (hasDifferences(layout)) {
        factors.blueness = static_cast<std::int16_t>(factor(row[1]));
        factors.redness = static_cast<std::int16_t>(factor(row[2]));
        offset += (row[1] + row[2]) * partsPerSample * middle;
        offset += (factors.blueness != 0 ? lostPerProduct : 0) + (factors.redness != 0 ? lostPerProduct : 0);
    }
    const bool isOwn = layout.isRgb && layout.componentCount == 3;
    factors.light = static_cast<std::uint16_t>(factor(row[isOwn ? colour : 0]));
    factors.offset = static_cast<std::int16_t>(std::lround(offset));
    return factors;
}

void RgbaLines::convert(AVFrame const& picture, int line, std::uint8_t* pixels) {
    for (Bytes& steps : m_steps)
        steps.resize(static_cast<size_t>(picture.width));
    if (m_hasDifferences)
        fromDifferences(picture, line);
    else
        fromColours(picture, line);
    interleave(m_steps[0].data(), m_steps[1].data(), m_steps[2].data(), picture.width, pixels);
}

void RgbaLines::fromDifferences(AVFrame const& picture, int line) {
    Sample const* const luma = m_samples.read(picture, 0, line);
    Sample const* const blueness = m_samples.read(picture, 1, line);
    Sample const* const redness = m_samples.read(picture, 2, line);
    Colour const& green = m_colours[1];
    addDifference(luma, redness, m_colours[0].light, m_colours[0].redness, m_colours[0].offset, m_steps[0].data(),
                  picture.width);
    addDifferences(luma, blueness, redness, green.light, green.blueness, green.redness, green.offset, m_steps[1].data(),
                   picture.width);
    addDifference(luma, blueness, m_colours[2].light, m_colours[2].blueness, m_colours[2].offset, m_steps[2].data(),
                  picture.width);
}

void RgbaLines::fromColours(AVFrame const& picture, int line) {
    const int count = picture.width;
    for (size_t colour = 0; colour < m_steps.size(); ++colour) {
        Sample const* const samples = m_samples.read(picture, m_componentCount == 1 ? 0 : colour, line);
        const Colour factors = m_colours[colour];
        std::uint8_t* __restrict const steps = m_steps[colour].data();
        for (int i = 0; i < count; ++i)
            steps[i] = clipped(product(samples[i], factors.light) + factors.offset);
    }
}

}  // namespace qrtplay
