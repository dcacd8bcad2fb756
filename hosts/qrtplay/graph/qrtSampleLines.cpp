#include "graph/qrtSampleLines.h"

#include <algorithm>
#include <cmath>

#include "base/qrtCpuClones.h"

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

QRTPLAY_CPU_CLONES
void widenBytes(std::uint8_t const* __restrict bytes, int up, Sample* __restrict out, int count) {
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<Sample>(bytes[i] << up);
}

/// The mean of two rows, weighted with `quarters` of the second one. `up` is at least 2.
QRTPLAY_CPU_CLONES
void mixBytes(std::uint8_t const* __restrict row, std::uint8_t const* __restrict next, int quarters, int up,
              Sample* __restrict out, int count) {
    const auto weight = static_cast<Sample>((4 - quarters) << (up - 2));
    const auto nextWeight = static_cast<Sample>(quarters << (up - 2));
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<Sample>(row[i] * weight + next[i] * nextWeight);
}

/// `even` and `odd`: the samples before the even and before the odd ones of `out`, which has two for each of them.
QRTPLAY_CPU_CLONES
void mixNeighbours(Sample const* __restrict even, int evenQuarters, Sample const* __restrict odd, int oddQuarters,
                   Sample* __restrict out, size_t count) {
    const auto evenWeight = static_cast<Sample>(4 - evenQuarters);
    const auto evenNext = static_cast<Sample>(evenQuarters);
    const auto oddWeight = static_cast<Sample>(4 - oddQuarters);
    const auto oddNext = static_cast<Sample>(oddQuarters);
    for (size_t i = 0; i < count; ++i) {
        out[2 * i] = static_cast<Sample>((even[i] >> 2) * evenWeight + (even[i + 1] >> 2) * evenNext);
        out[2 * i + 1] = static_cast<Sample>((odd[i] >> 2) * oddWeight + (odd[i + 1] >> 2) * oddNext);
    }
}

PixelLayout::Plane const& planeOf(PixelLayout const& layout, size_t component) {
    return layout.planes[static_cast<size_t>(layout.components[component].plane)];
}

int storedCount(AVFrame const& picture, PixelLayout::Plane const& plane) {
    return (picture.width + (1 << plane.widthShift) - 1) >> plane.widthShift;
}

std::uint8_t const* rowOf(AVFrame const& picture, PixelLayout::Plane const& plane, int row) {
    return picture.data[plane.source] + std::ptrdiff_t{row} * picture.linesize[plane.source];
}

void repeatEdges(std::vector<Sample>& line) {
    line.front() = line[1];
    line.back() = line[line.size() - 2];
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
        readBetween(picture, component, mixAt((static_cast<float>(line) + 0.5f) * m_chroma.scaleY + m_chroma.offsetY),
                    stored);
    }
    if (plane.widthShift == 0) return wide.data() + 1;
    widen(m_row, wide);
    return wide.data();
}

/// What lies between two rows.
void SampleLines::readBetween(AVFrame const& picture, size_t component, Mix const& rows, Line& line) {
    const int lastRow = ((picture.height + 1) >> 1) - 1;
    const int row = std::clamp(rows.first, 0, lastRow);
    const int nextRow = std::clamp(rows.first + 1, 0, lastRow);
    PixelLayout::Plane const& plane = planeOf(m_layout, component);
    if (m_layout.bytesPerChannel == 1 && plane.channels == 1) {
        const int count = storedCount(picture, plane);
        line.resize(static_cast<size_t>(count) + 2);
        mixBytes(rowOf(picture, plane, row), rowOf(picture, plane, nextRow), rows.quarters,
                 bits - m_layout.bits - m_layout.shift, line.data() + 1, count);
        repeatEdges(line);
        return;
    }
    readStored(picture, component, row, line);
    readStored(picture, component, nextRow, m_nextRow);
    Sample* const sum = line.data();
    Sample const* const next = m_nextRow.data();
    fill(sum, static_cast<int>(line.size()),
         [=, quarters = rows.quarters](int i) { return mixed(sum[i], 4 - quarters, next[i], quarters); });
}

/// `line` gets a sample more at either end, that of the picture's edge.
void SampleLines::readStored(AVFrame const& picture, size_t component, int row, Line& line) const {
    PixelLayout::Plane const& plane = planeOf(m_layout, component);
    const int count = storedCount(picture, plane);
    line.resize(static_cast<size_t>(count) + 2);
    Sample* const out = line.data() + 1;
    const int channel = m_layout.components[component].channel;
    const int channels = plane.channels;
    std::uint8_t const* const bytes = rowOf(picture, plane, row);
    auto const* const words = reinterpret_cast<Sample const*>(bytes);
    const int up = bits - m_layout.bits - m_layout.shift;
    if (m_layout.bytesPerChannel == 1 && channels == 1)
        widenBytes(bytes, up, out, count);
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
    repeatEdges(line);
}

void SampleLines::widen(Line const& narrow, Line& wide) const {
    const size_t count = narrow.size() - 2;
    wide.resize(count * 2);
    Sample* const out = wide.data();
    mixNeighbours(narrow.data() + 1 + m_even.first, m_even.quarters, narrow.data() + 1 + m_odd.first, m_odd.quarters,
                  out, count);
}

}  // namespace qrtplay
