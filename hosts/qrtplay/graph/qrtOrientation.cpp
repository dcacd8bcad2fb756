#include "graph/qrtOrientation.h"

namespace qrtplay {

namespace {

/// A coordinate along the upright picture, from its left or from its top: fromX * x + fromY * y + offset.
struct Along {
    int fromX;
    int fromY;
    int offset;

    /// The same coordinate counted from the other end of `length` pixels.
    [[nodiscard]] Along reversed(int length) const { return {-fromX, -fromY, length - offset}; }
};

}  // namespace

Turn turnInto(PixelRect const& place, Orientation const& orientation) {
    const Along right{1, 0, -place.x};
    const Along down{0, -1, place.y + place.height};  // the output grows upwards, the picture downwards
    Along column = right;
    Along row = down;
    switch (orientation.clockwiseQuarterTurns & 3) {
        case 0: break;
        case 1:  // what was at the top is at the right
            column = down;
            row = right.reversed(place.width);
            break;
        case 2:
            column = right.reversed(place.width);
            row = down.reversed(place.height);
            break;
        default:  // what was at the top is at the left
            column = down.reversed(place.height);
            row = right;
            break;
    }
    if (orientation.isFlippedHorizontally)
        column = column.reversed(orientation.isOnItsSide() ? place.height : place.width);
    return {column.fromX, column.fromY, column.offset, row.fromX, row.fromY, row.offset};
}

}  // namespace qrtplay
