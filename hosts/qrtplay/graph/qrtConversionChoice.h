#pragma once

#include <QOpenGLExtraFunctions>
#include <string>

#include "base/qrtKit.h"

namespace qrtplay {

/// Where the colours of decoded pictures are converted and where they are scaled.
enum class ConversionChoice {
    automatic,  ///< on the CPU when OpenGL runs in software, else by the GPU
    cpu,        ///< on the CPU, but for what it cannot do as well (see `cpuForm`)
    gpu,        ///< in shaders
};

/// What users call it: auto, cpu or gpu.
[[nodiscard]] char const* conversionName(ConversionChoice choice) noexcept;
/// False for a word that is none of these.
[[nodiscard]] bool parseConversion(std::string const& word, ConversionChoice& choice);

/// Whether what GL_RENDERER says names one of Mesa's renderers that run on the CPU: there a shader that converts a
/// picture takes ten times as long as the CPU does by itself.
[[nodiscard]] bool isSoftwareRenderer(std::string const& renderer);
/// Whether pictures that can be are to be converted on the CPU in the current context.
[[nodiscard]] bool convertsOnCpu(ConversionChoice choice, QOpenGLExtraFunctions& gl);

}  // namespace qrtplay
