#include "graph/qrtDisplayConversion.h"

namespace qrtplay {

namespace {

// Display-referred: the light of a display in its studio, not of the scene.
constexpr char bt1886[] = R"(
vec3 decoded(vec3 v) { return pow(max(v, 0.0), vec3(2.4)); }  // ITU-R BT.1886, annex 1, for black at 0
)";
constexpr char gamma22[] = R"(
vec3 decoded(vec3 v) { return pow(max(v, 0.0), vec3(2.2)); }  // ITU-R BT.470, system M
)";
constexpr char gamma28[] = R"(
vec3 decoded(vec3 v) { return pow(max(v, 0.0), vec3(2.8)); }  // ITU-R BT.470, systems B and G
)";
constexpr char linear[] = R"(
vec3 decoded(vec3 v) { return v; }
)";
constexpr char srgb[] = R"(
vec3 decoded(vec3 v) {  // IEC 61966-2-1, 5.2
    return mix(pow((max(v, 0.04045) + 0.055) / 1.055, vec3(2.4)), max(v, 0.0) / 12.92, lessThanEqual(v, vec3(0.04045)));
}
)";
constexpr char log100[] = R"(
vec3 decoded(vec3 v) {  // ITU-T H.273, table 3, value 9: 100 to 1
    return mix(vec3(0.0), pow(vec3(10.0), 2.0 * (v - 1.0)), greaterThan(v, vec3(0.0)));
}
)";
constexpr char log316[] = R"(
vec3 decoded(vec3 v) {  // ITU-T H.273, table 3, value 10: 100 times the root of 10 to 1
    return mix(vec3(0.0), pow(vec3(10.0), 2.5 * (v - 1.0)), greaterThan(v, vec3(0.0)));
}
)";
constexpr char dci[] = R"(
vec3 decoded(vec3 v) { return 52.37 / 48.0 * pow(max(v, 0.0), vec3(2.6)); }  // SMPTE ST 428-1, 4.3
)";
// Reference white of both is 203 cd/m2: ITU-R BT.2408, table 1.
constexpr char pq[] = R"(
vec3 decoded(vec3 v) {  // SMPTE ST 2084, 5.1: 10000 cd/m2 at 1
    const float m1 = 2610.0 / 16384.0;
    const float m2 = 2523.0 / 4096.0 * 128.0;
    const float c1 = 3424.0 / 4096.0;
    const float c2 = 2413.0 / 4096.0 * 32.0;
    const float c3 = 2392.0 / 4096.0 * 32.0;
    vec3 p = pow(clamp(v, 0.0, 1.0), vec3(1.0 / m2));
    return 10000.0 / 203.0 * pow(max(p - c1, 0.0) / (c2 - c3 * p), vec3(1.0 / m1));
}
)";
constexpr char hlg[] = R"(
uniform vec3 luminance;
vec3 decoded(vec3 v) {  // ITU-R BT.2100, table 5, on a display of 1000 cd/m2
    const float a = 0.17883277;
    const float b = 1.0 - 4.0 * a;
    const float c = 0.55991073;  // 0.5 - a ln(4 a)
    v = max(v, 0.0);
    vec3 scene = mix((exp((v - c) / a) + b) / 12.0, v * v / 3.0, lessThanEqual(v, vec3(0.5)));
    return 1000.0 / 203.0 * pow(max(dot(scene, luminance), 1e-9), 0.2) * scene;
}
)";
constexpr char toVideo[] = R"(
vec3 encoded(vec3 light) { return pow(clamp(light, 0.0, 1.0), vec3(1.0 / 2.4)); }  // ITU-R BT.1886, backwards
)";
constexpr char toSrgb[] = R"(
vec3 encoded(vec3 light) {  // IEC 61966-2-1, 5.3
    light = clamp(light, 0.0, 1.0);
    return mix(1.055 * pow(light, vec3(1.0 / 2.4)) - 0.055, 12.92 * light, lessThanEqual(light, vec3(0.0031308)));
}
)";

/// The curve from code to light; null for one that is not known.
char const* curveOf(AVColorTransferCharacteristic transfer) {
    switch (transfer) {
        case AVCOL_TRC_RESERVED0:
        case AVCOL_TRC_RESERVED:
        case AVCOL_TRC_UNSPECIFIED:
        case AVCOL_TRC_BT709:
        case AVCOL_TRC_SMPTE170M:
        case AVCOL_TRC_SMPTE240M:
        case AVCOL_TRC_IEC61966_2_4:
        case AVCOL_TRC_BT1361_ECG:
        case AVCOL_TRC_BT2020_10:
        case AVCOL_TRC_BT2020_12: return bt1886;
        case AVCOL_TRC_GAMMA22: return gamma22;
        case AVCOL_TRC_GAMMA28: return gamma28;
        case AVCOL_TRC_LINEAR: return linear;
        case AVCOL_TRC_LOG: return log100;
        case AVCOL_TRC_LOG_SQRT: return log316;
        case AVCOL_TRC_IEC61966_2_1: return srgb;
        case AVCOL_TRC_SMPTE2084: return pq;
        case AVCOL_TRC_SMPTE428: return dci;
        case AVCOL_TRC_ARIB_STD_B67: return hlg;
        default: return nullptr;
    }
}

}  // namespace

ColourFacts coloursOf(AVFrame const& picture, PixelLayout const& layout, VideoFacts const& facts) {
    ColourFacts colour{picture.colorspace, picture.color_range, picture.color_primaries, picture.color_trc};
    if (colour.matrix == AVCOL_SPC_UNSPECIFIED) colour.matrix = facts.colour.matrix;
    if (colour.range == AVCOL_RANGE_UNSPECIFIED) colour.range = facts.colour.range;
    if (colour.transfer == AVCOL_TRC_UNSPECIFIED) colour.transfer = facts.colour.transfer;
    colour = completeColour(colour, static_cast<AVPixelFormat>(picture.format), picture.height);

    colour.primaries = picture.color_primaries;
    if (layout.isXyz) {
        colour.range = AVCOL_RANGE_JPEG;
        colour.primaries = AVCOL_PRI_SMPTE428;
        if (picture.color_trc == AVCOL_TRC_UNSPECIFIED) colour.transfer = AVCOL_TRC_SMPTE428;
    }
    if (colour.primaries == AVCOL_PRI_UNSPECIFIED || colour.primaries == AVCOL_PRI_RESERVED) {
        // Small pictures of unknown primaries have been given these to be complete.
        const bool isGuess =
            facts.colour.primaries == AVCOL_PRI_SMPTE170M || facts.colour.primaries == AVCOL_PRI_UNSPECIFIED;
        colour.primaries = isGuess ? AVCOL_PRI_BT709 : facts.colour.primaries;
    }
    return colour;
}

Outcome displayConversion(ColourFacts const& colour, DisplayConversion& conversion) {
    char const* const decode = curveOf(colour.transfer);
    if (!decode) {
        char const* const name = av_color_transfer_name(colour.transfer);
        return Outcome::failure(std::string("its transfer curve is not supported (") + (name ? name : "unknown") + ")");
    }
    const auto matrix = toBt709(colour.primaries);
    const auto luminance = luminanceWeights(colour.primaries);
    if (!matrix || !luminance) {
        char const* const name = av_color_primaries_name(colour.primaries);
        return Outcome::failure(std::string("its primaries are not supported (") + (name ? name : "unknown") + ")");
    }
    conversion = DisplayConversion();
    const bool isDisplayCurve = decode == bt1886 || decode == srgb;
    conversion.isUnchanged = isDisplayCurve && colour.primaries == AVCOL_PRI_BT709;
    if (conversion.isUnchanged) return Outcome();
    conversion.functions = decode;
    // What came by the curve of sRGB goes back by it, so that greys keep their values; renderings are looked at with
    // it.
    conversion.functions += decode == srgb || decode == linear ? toSrgb : toVideo;
    conversion.matrix = *matrix;
    conversion.luminance = *luminance;
    return Outcome();
}

}  // namespace qrtplay
