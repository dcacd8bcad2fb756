#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "base/qrtKit.h"
#include "graph/qrtChromaSite.h"
#include "graph/qrtPixelLayout.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Lines of a picture's components on the CPU, with a sample of 16 bits for each pixel: the bits of the stored sample
/// from the high end on, chroma interpolated between the sites where it lies.
///
/// Threading: one thread at a time; holds the lines that it hands out.
class SampleLines final {
public:
    using Sample = std::uint16_t;
    static constexpr int bits = 16;

    /// Whether pictures can be read: integers, chroma shared by no more than two pixels in a row and two in a column,
    /// and not lying by fields.
    [[nodiscard]] static bool canRead(PixelLayout const& layout, ChromaPlace const& chroma);
    /// `layout`, `chroma`: such that they can be read.
    SampleLines(PixelLayout const& layout, ChromaPlace const& chroma);

    /// Line `line` of one of the first three components; valid until the same component is asked for again. `picture`
    /// has to have the layout given before.
    Sample const* read(AVFrame const& picture, size_t component, int line);

private:
    /// Of two neighbours: the first one, and how many quarters of the second one there are in the mix.
    struct Mix {
        int first = 0;
        int quarters = 0;
    };
    using Line = std::vector<Sample>;

    [[nodiscard]] static Mix mixAt(float position);
    void readBetween(AVFrame const& picture, size_t component, Mix const& rows, Line& line);
    void readStored(AVFrame const& picture, size_t component, int row, Line& line) const;
    void widen(Line const& narrow, Line& wide) const;

    const PixelLayout m_layout;
    const ChromaPlace m_chroma;
    const Mix m_even;  // of the chroma of even and odd columns
    const Mix m_odd;
    std::array<Line, 3> m_lines;
    Line m_row;  // chroma as it is stored
    Line m_nextRow;
};

}  // namespace qrtplay
