#include "graph/qrtSampleLines.h"

#include <algorithm>
#include <cmath>

namespace qrtplay {

namespace {

using Sample = SampleLines::Sample;

template <class Read>
void fill(Sample* out, int count, Read read) {
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<Sample>(read(i));
}

/// Of samples of 16 bits whose lowest two do not count, so that the sum stays within 16.
int mixed(Sample one, int quarters, Sample other, int otherQuarters) {
    return (one >> 2) * quarters + (other >> 2) * otherQuarters;
}

PixelLayout::Plane const& planeOf(PixelLayout const& layout, size_t component) {
    return layout.planes[static_cast<size_t>(layout.components[component].plane)];
}

}  // namespace

bool SampleLines::canRead(PixelLayout const& layout, ChromaPlace const& chroma) {
    PixelLayout::Plane const& plane = planeOf(layout, 1);
    return !layout.isFloat && !chroma.isByField && plane.widthShift <= 1 && plane.heightShift <= 1;
}

SampleLines::SampleLines(PixelLayout const& layout, ChromaPlace const& chroma)
    : m_layout(layout),
      m_chroma(chroma),
      m_even(mixAt(0.5f * chroma.scaleX + chroma.offsetX)),
      m_odd(mixAt(1.5f * chroma.scaleX + chroma.offsetX)) {}

/// `position`: in samples, whose middles lie at halves. Where two pixels share a sample, all lie at whole quarters.
SampleLines::Mix SampleLines::mixAt(float position) {
    const int quarters = static_cast<int>(std::lround((position - 0.5f) * 4));
    const int first = static_cast<int>(std::floor(static_cast<float>(quarters) / 4));
    return {first, quarters - first * 4};
}

Sample const* SampleLines::read(AVFrame const& picture, size_t component, int line) {
    PixelLayout::Plane const& plane = planeOf(m_layout, component);
    Line& wide = m_lines[component];
    Line& stored = plane.widthShift == 0 ? wide : m_row;
    if (plane.heightShift == 0) {
        readStored(picture, component, line, stored);
    } else {
        const int lastRow = ((picture.height + 1) >> 1) - 1;
        const Mix mix = mixAt((static_cast<float>(line) + 0.5f) * m_chroma.scaleY + m_chroma.offsetY);
        readStored(picture, component, std::clamp(mix.first, 0, lastRow), stored);
        readStored(picture, component, std::clamp(mix.first + 1, 0, lastRow), m_nextRow);
        Sample* const sum = stored.data();
        Sample const* const next = m_nextRow.data();
        fill(sum, static_cast<int>(stored.size()),
             [=, quarters = mix.quarters](int i) { return mixed(sum[i], 4 - quarters, next[i], quarters); });
    }
    if (plane.widthShift == 0) return wide.data() + 1;
    widen(m_row, wide);
    return wide.data();
}

/// `line` gets a sample more at either end, that of the picture's edge.
void SampleLines::readStored(AVFrame const& picture, size_t component, int row, Line& line) const {
    PixelLayout::Plane const& plane = planeOf(m_layout, component);
    const int count = (picture.width + (1 << plane.widthShift) - 1) >> plane.widthShift;
    line.resize(static_cast<size_t>(count) + 2);
    Sample* const out = line.data() + 1;
    const int channel = m_layout.components[component].channel;
    const int channels = plane.channels;
    std::uint8_t const* const bytes = picture.data[plane.source] + std::ptrdiff_t{row} * picture.linesize[plane.source];
    auto const* const words = reinterpret_cast<Sample const*>(bytes);
    const int up = bits - m_layout.bits - m_layout.shift;
    if (m_layout.bytesPerChannel == 1 && channels == 1)
        fill(out, count, [=](int i) { return bytes[i] << up; });
    else if (m_layout.bytesPerChannel == 1)
        fill(out, count, [=](int i) { return bytes[i * channels + channel] << up; });
    else if (m_layout.isSwapped)
        fill(out, count, [=](int i) {
            const int word = words[i * channels + channel];
            return ((word << 8 & 0xff00) | word >> 8) << up;
        });
    else if (channels == 1)
        fill(out, count, [=](int i) { return words[i] << up; });
    else
        fill(out, count, [=](int i) { return words[i * channels + channel] << up; });
    line.front() = out[0];
    line.back() = out[count - 1];
}

void SampleLines::widen(Line const& narrow, Line& wide) const {
    const size_t count = narrow.size() - 2;
    wide.resize(count * 2);
    Sample* const out = wide.data();
    Sample const* const even = narrow.data() + 1 + m_even.first;
    Sample const* const odd = narrow.data() + 1 + m_odd.first;
    const int evenQuarters = m_even.quarters;
    const int oddQuarters = m_odd.quarters;
    for (size_t i = 0; i < count; ++i) {
        out[2 * i] = static_cast<Sample>(mixed(even[i], 4 - evenQuarters, even[i + 1], evenQuarters));
        out[2 * i + 1] = static_cast<Sample>(mixed(odd[i], 4 - oddQuarters, odd[i + 1], oddQuarters));
    }
}

}  // namespace qrtplay
