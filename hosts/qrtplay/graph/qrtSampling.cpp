#include "graph/qrtSampling.h"

namespace qrtplay {

namespace {

constexpr char fetchSource[] = R"(
vec4 sampled(float middle, int across) { return texelAt(int(middle), across); }
)";

constexpr char averageSource[] = R"(
vec4 sampled(float middle, int across) {
    float low = middle - 0.5 * scale;
    float high = middle + 0.5 * scale;
    vec4 sum = vec4(0.0);
    float total = 0.0;
    for (int i = int(floor(low)); float(i) < high; ++i) {
        float share = min(high, float(i) + 1.0) - max(low, float(i));
        sum += share * texelAt(clamp(i, 0, size - 1), across);
        total += share;
    }
    return clamp(sum / total, 0.0, 1.0);
}
)";

constexpr char cubicSource[] = R"(
vec4 at(int along, int across) { return texelAt(clamp(along, 0, size - 1), across); }
vec4 sampled(float middle, int across) {
    int i = int(floor(middle - 0.5));
    float t = middle - 0.5 - float(i);
    vec4 a = at(i - 1, across);
    vec4 b = at(i, across);
    vec4 c = at(i + 1, across);
    vec4 d = at(i + 2, across);
    vec4 curve = b + 0.5 * t * (c - a + t * (2.0 * a - 5.0 * b + 4.0 * c - d + t * (3.0 * (b - c) + d - a)));
    return clamp(curve, 0.0, 1.0);
}
)";

constexpr char head[] = R"(
uniform mat2 turn;
uniform vec2 shift;
uniform float scale;
uniform float begin;
uniform int size;
uniform float weight;
out vec4 colour;
)";

constexpr char tail[] = R"(
void main() {
    vec2 place = turn * gl_FragCoord.xy + shift;
    colour = sampled(place.x * scale + begin, int(place.y)) * weight;
})";

Kernel kernelFor(int size, int length) {
    if (length == size) return Kernel::fetch;
    return length < size ? Kernel::average : Kernel::cubic;
}

}  // namespace

Sampling wholeLine(int size, int length) {
    return {kernelFor(size, length), size, static_cast<double>(size) / length, 0};
}

Sampling fieldLines(int size, int length, bool isSecond) {
    Sampling sampling;
    sampling.size = isSecond ? size / 2 : (size + 1) / 2;
    sampling.scale = static_cast<double>(size) / length / 2;
    // Line k of the field is line 2k, or 2k + 1, of the whole, and the middles of lines are at halves in both.
    sampling.begin = isSecond ? -0.25 : 0.25;
    sampling.kernel = sampling.scale > 1 ? Kernel::average : Kernel::cubic;
    return sampling;
}

std::string samplingSource(Kernel kernel) {
    std::string source = head;
    switch (kernel) {
        case Kernel::fetch: source += fetchSource; break;
        case Kernel::average: source += averageSource; break;
        case Kernel::cubic: source += cubicSource; break;
    }
    return source + tail;
}

}  // namespace qrtplay
