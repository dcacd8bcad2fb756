#include "graph/qrtConversionChoice.h"

#include <algorithm>
#include <array>

namespace qrtplay {

namespace {

constexpr std::array<char const*, 3> conversionNames{"auto", "cpu", "gpu"};

}  // namespace

char const* conversionName(ConversionChoice choice) noexcept {
    return conversionNames[static_cast<size_t>(choice)];
}

bool parseConversion(std::string const& word, ConversionChoice& choice) {
    const auto found = std::find(conversionNames.begin(), conversionNames.end(), word);
    if (found == conversionNames.end()) return false;
    choice = static_cast<ConversionChoice>(found - conversionNames.begin());
    return true;
}

bool isSoftwareRenderer(std::string const& renderer) {
    constexpr std::array<char const*, 4> known{"llvmpipe", "softpipe", "swrast", "Software Rasterizer"};
    return std::any_of(known.begin(), known.end(),
                       [&](char const* name) { return renderer.find(name) != std::string::npos; });
}

bool convertsOnCpu(ConversionChoice choice, QOpenGLExtraFunctions& gl) {
    if (choice != ConversionChoice::automatic) return choice == ConversionChoice::cpu;
    auto const* const renderer = reinterpret_cast<char const*>(gl.glGetString(GL_RENDERER));
    return renderer && isSoftwareRenderer(renderer);
}

}  // namespace qrtplay
