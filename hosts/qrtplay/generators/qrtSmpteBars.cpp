#include "generators/qrtSmpteBars.h"

#include <span>

namespace qrtplay {

namespace {

/// A bar of a row; it begins where the one before it ends.
struct Bar {
    int end;  ///< in parts of the width
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

// A seventh of the width for a bar, a third of that for a strip of the PLUGE, five fourths for the fields beside it.
constexpr int partsOfWidth = 84;
constexpr int partsOfHeight = 12;

constexpr Bar colourBars[]{{12, 191, 191, 191}, {24, 191, 191, 0}, {36, 0, 191, 191}, {48, 0, 191, 0},
                           {60, 191, 0, 191},   {72, 191, 0, 0},   {84, 0, 0, 191}};
constexpr Bar castellation[]{{12, 0, 0, 191},   {24, 19, 19, 19}, {36, 191, 0, 191},  {48, 19, 19, 19},
                             {60, 0, 191, 191}, {72, 19, 19, 19}, {84, 191, 191, 191}};
constexpr Bar pluge[]{{15, 0, 33, 76}, {30, 255, 255, 255}, {45, 50, 0, 106}, {60, 19, 19, 19},
                      {64, 9, 9, 9},   {68, 19, 19, 19},    {72, 29, 29, 29}, {84, 19, 19, 19}};

/// Where part `part` of `parts` begins, to the nearest pixel.
int edge(int pixels, int part, int parts) {
    return static_cast<int>((std::int64_t{pixels} * part * 2 + parts) / (std::int64_t{parts} * 2));
}

/// Parts of the height from `bottom` to `top`, upwards.
void appendRow(std::vector<ColourPatch>& patches, std::span<Bar const> bars, int width, int bottom, int top) {
    int x = 0;
    for (Bar const& bar : bars) {
        const int end = edge(width, bar.end, partsOfWidth);
        if (end > x && top > bottom) {
            patches.push_back({x, bottom, end - x, top - bottom, bar.red, bar.green, bar.blue});
        }
        x = end;
    }
}

}  // namespace

std::vector<ColourPatch> smpteBars(int width, int height) {
    const int plugeTop = edge(height, 3, partsOfHeight);
    const int castellationTop = edge(height, 4, partsOfHeight);
    std::vector<ColourPatch> patches;
    appendRow(patches, pluge, width, 0, plugeTop);
    appendRow(patches, castellation, width, plugeTop, castellationTop);
    appendRow(patches, colourBars, width, castellationTop, height);
    return patches;
}

}  // namespace qrtplay
