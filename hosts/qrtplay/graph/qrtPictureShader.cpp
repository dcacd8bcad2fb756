#include "graph/qrtPictureShader.h"

namespace qrtplay {

namespace {

// Rectangle textures are addressed in texels, so the planes of odd sizes need no correction.
constexpr char samplesSource[] = R"(
uniform sampler2DRect component0;
uniform sampler2DRect component1;
uniform sampler2DRect component2;
uniform sampler2DRect component3;
uniform vec4 channel0;
uniform vec4 channel1;
uniform vec4 channel2;
uniform vec4 channel3;
uniform vec2 chromaScale;
uniform vec2 chromaOffset;
uniform vec2 fieldSite;     // of the first chroma line of either field, in lines of the field
uniform vec2 lastFieldRow;  // of the chroma of either field
uniform mat3 toRgb;
uniform vec3 offset;
uniform float alphaScale;
uniform ivec2 lines;        // the first one and the step to the next

vec2 chromaAt(vec2 position) {
    return vec2(dot(texture(component1, position), channel1), dot(texture(component2, position), channel2));
}

vec2 fieldChromaAt(float column, int line) {
    int field = line & 1;
    float row = (float(line >> 1) - fieldSite[field]) * 0.5;
    vec2 rows = clamp(floor(row) + vec2(0.0, 1.0), 0.0, lastFieldRow[field]) * 2.0 + float(field) + 0.5;
    return mix(chromaAt(vec2(column, rows.x)), chromaAt(vec2(column, rows.y)), fract(row));
}

vec3 samplesAt(ivec2 pixel) {
    float first = dot(texelFetch(component0, pixel), channel0);
#if defined(GREY)
    return vec3(first);
#elif defined(SUBSAMPLED)
    vec2 chroma = (vec2(pixel) + 0.5) * chromaScale + chromaOffset;
#if defined(INTERLACED)
    return vec3(first, fieldChromaAt(chroma.x, pixel.y));
#else
    return vec3(first, chromaAt(chroma));
#endif
#else
    float second = dot(texelFetch(component1, pixel), channel1);
    float third = dot(texelFetch(component2, pixel), channel2);
    return vec3(first, second, third);
#endif
}
)";

constexpr char colourSource[] = R"(
vec4 texelAt(int column, int line) {
    ivec2 pixel = ivec2(column, lines.x + line * lines.y);
    vec3 samples = samplesAt(pixel);
#if defined(FLOAT)
    // Infinity times 0 is no number either.
    samples = clamp(mix(samples, vec3(0.0), isnan(samples)), -65504.0, 65504.0);
#endif
    vec3 rgb = toRgb * samples + offset;
#if defined(ALPHA)
    float alpha = dot(texelFetch(component3, pixel), channel3) * alphaScale;
    alpha = alpha > 0.0 ? min(alpha, 1.0) : 0.0;  // what is no number, too
#else
    float alpha = 1.0;
#endif
#if defined(PREMULTIPLIED)
    float factor = alpha > 0.0 ? alpha : 1.0;  // light without a body, as of a glow, stays
    rgb /= factor;
#else
    float factor = alpha;
#endif
    return vec4(clamp(displayed(rgb), 0.0, 1.0) * factor, alpha);
}
)";

}  // namespace

std::string pictureSource(PictureTraits const& traits, std::string const& displayedSource) {
    std::string source = "#version 150\n";
    const auto define = [&source](bool isSo, char const* name) {
        if (isSo) source += std::string("#define ") + name + "\n";
    };
    define(traits.isGrey, "GREY");
    define(traits.isSubsampled, "SUBSAMPLED");
    define(traits.isInterlaced, "INTERLACED");
    define(traits.isFloat, "FLOAT");
    define(traits.hasAlpha, "ALPHA");
    define(traits.hasAlpha && traits.isPremultiplied, "PREMULTIPLIED");
    return source + samplesSource + displayedSource + colourSource;
}

}  // namespace qrtplay
