#pragma once

#include <string>

#include "base/qrtKit.h"

namespace qrtplay {

/// How samples along a line become pixels of the output.
///
/// Values are weighed as they are coded for the display, as video equipment does, with alpha premultiplied, so that
/// what nobody sees colours no edge. Beyond the ends of the line the last samples go on.
enum class Kernel {
    fetch,    ///< a sample a pixel
    average,  ///< the mean of all that a pixel covers, parts of samples by their share
    cubic,    ///< the curve of Catmull and Rom through the four nearest
};

/// Samples along one direction of a picture: where those of an output pixel lie. position = pixel * scale + begin, in
/// samples from the line's beginning; the middle of the first pixel and of the first sample is at 0.5.
struct Sampling {
    Kernel kernel = Kernel::fetch;
    int size = 0;  ///< samples
    double scale = 1;
    double begin = 0;
};

/// `size` samples brought to the length of `length` pixels.
[[nodiscard]] Sampling wholeLine(int size, int length);
/// The same when only the lines of one field count: every other of `size`, the second one first if `isSecond`.
[[nodiscard]] Sampling fieldLines(int size, int length, bool isSecond);

/// The rest of a fragment shader in GLSL 1.50 that begins with `vec4 texelAt(int along, int across)`: it writes to
/// `colour` what the kernel makes of them, clipped to 0 to 1 as they are, times `weight`. Its uniforms `turn` and
/// `shift` lead from the pixel to the place along and across the line; `scale`, `begin` and `size` are those of the
/// sampling.
[[nodiscard]] std::string samplingSource(Kernel kernel);

}  // namespace qrtplay
