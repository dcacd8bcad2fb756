#include "graph/qrtPrimaries.h"

namespace qrtplay {

namespace {

using Vector3 = std::array<double, 3>;

/// A colour without its luminance, as CIE 1931 x and y.
struct Chromaticity {
    double x;
    double y;

    [[nodiscard]] Vector3 xyz() const { return {x / y, 1, (1 - x - y) / y}; }  // of luminance 1
};

struct Primaries {
    Chromaticity red;
    Chromaticity green;
    Chromaticity blue;
    Chromaticity white;
};

constexpr Chromaticity d65{0.3127, 0.3290};
constexpr Chromaticity illuminantC{0.310, 0.316};
constexpr Chromaticity dciWhite{0.314, 0.351};
constexpr Primaries bt709{{0.640, 0.330}, {0.300, 0.600}, {0.150, 0.060}, d65};  // ITU-R BT.709-6, items 1.3 and 1.4

/// The chromaticities of ITU-T H.273, table 2, but for XYZ.
std::optional<Primaries> primariesOf(AVColorPrimaries primaries) {
    switch (primaries) {
        case AVCOL_PRI_BT709: return bt709;
        case AVCOL_PRI_BT470M: return Primaries{{0.67, 0.33}, {0.21, 0.71}, {0.14, 0.08}, illuminantC};
        case AVCOL_PRI_BT470BG: return Primaries{{0.64, 0.33}, {0.29, 0.60}, {0.15, 0.06}, d65};  // BT.601, 625 lines
        case AVCOL_PRI_SMPTE170M:                                                                 // BT.601, 525 lines
        case AVCOL_PRI_SMPTE240M: return Primaries{{0.630, 0.340}, {0.310, 0.595}, {0.155, 0.070}, d65};
        case AVCOL_PRI_FILM: return Primaries{{0.681, 0.319}, {0.243, 0.692}, {0.145, 0.049}, illuminantC};
        case AVCOL_PRI_BT2020: return Primaries{{0.708, 0.292}, {0.170, 0.797}, {0.131, 0.046}, d65};
        case AVCOL_PRI_SMPTE431: return Primaries{{0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, dciWhite};
        case AVCOL_PRI_SMPTE432: return Primaries{{0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}, d65};
        case AVCOL_PRI_EBU3213: return Primaries{{0.630, 0.340}, {0.295, 0.605}, {0.155, 0.077}, d65};
        default: return std::nullopt;
    }
}

Vector3 product(Matrix3 const& m, Vector3 const& v) {
    Vector3 result{};
    for (size_t row = 0; row < 3; ++row)
        result[row] = m[row * 3] * v[0] + m[row * 3 + 1] * v[1] + m[row * 3 + 2] * v[2];
    return result;
}

Matrix3 product(Matrix3 const& a, Matrix3 const& b) {
    Matrix3 result{};
    for (size_t column = 0; column < 3; ++column) {
        const Vector3 image = product(a, Vector3{b[column], b[column + 3], b[column + 6]});
        for (size_t row = 0; row < 3; ++row)
            result[row * 3 + column] = image[row];
    }
    return result;
}

Matrix3 inverse(Matrix3 const& m) {
    const auto minor = [&m](size_t row, size_t column) {  // cyclic, so that the sign is right
        const size_t r1 = (row + 1) % 3;
        const size_t r2 = (row + 2) % 3;
        const size_t c1 = (column + 1) % 3;
        const size_t c2 = (column + 2) % 3;
        return m[r1 * 3 + c1] * m[r2 * 3 + c2] - m[r1 * 3 + c2] * m[r2 * 3 + c1];
    };
    const double determinant = m[0] * minor(0, 0) + m[1] * minor(0, 1) + m[2] * minor(0, 2);
    Matrix3 result{};
    for (size_t row = 0; row < 3; ++row) {
        for (size_t column = 0; column < 3; ++column)
            result[row * 3 + column] = minor(column, row) / determinant;
    }
    return result;
}

Matrix3 columns(Vector3 const& a, Vector3 const& b, Vector3 const& c) {
    return {a[0], b[0], c[0], a[1], b[1], c[1], a[2], b[2], c[2]};
}

Matrix3 diagonal(Vector3 const& v) {
    return {v[0], 0, 0, 0, v[1], 0, 0, 0, v[2]};
}

/// SMPTE RP 177: the primaries are weighted so that together they make white.
Matrix3 toXyz(Primaries const& primaries) {
    const Matrix3 directions = columns(primaries.red.xyz(), primaries.green.xyz(), primaries.blue.xyz());
    return product(directions, diagonal(product(inverse(directions), primaries.white.xyz())));
}

/// The linear Bradford transform, which CIE 159 and ICC.1 annex E use to carry one white over to another.
Matrix3 adaptation(Chromaticity const& from, Chromaticity const& to) {
    constexpr Matrix3 bradford{0.8951, 0.2664, -0.1614, -0.7502, 1.7135, 0.0367, 0.0389, -0.0685, 1.0296};
    const Vector3 source = product(bradford, from.xyz());
    const Vector3 wanted = product(bradford, to.xyz());
    const Vector3 ratio{wanted[0] / source[0], wanted[1] / source[1], wanted[2] / source[2]};
    return product(inverse(bradford), product(diagonal(ratio), bradford));
}

}  // namespace

std::optional<Matrix3> toBt709(AVColorPrimaries primaries) {
    const Matrix3 fromXyz = inverse(toXyz(bt709));
    if (primaries == AVCOL_PRI_SMPTE428) return fromXyz;  // SMPTE ST 428-1: X, Y and Z themselves, whatever is white
    const auto source = primariesOf(primaries);
    if (!source) return std::nullopt;
    return product(fromXyz, product(adaptation(source->white, d65), toXyz(*source)));
}

std::optional<std::array<double, 3>> luminanceWeights(AVColorPrimaries primaries) {
    if (primaries == AVCOL_PRI_SMPTE428) return Vector3{0, 1, 0};
    const auto source = primariesOf(primaries);
    if (!source) return std::nullopt;
    const Matrix3 matrix = toXyz(*source);
    return Vector3{matrix[3], matrix[4], matrix[5]};
}

}  // namespace qrtplay
