#pragma once

#include <functional>
#include <memory>

#include "media/qrtAv.h"

namespace qrtplay {

/// A picture of `format` whose samples are code values: `code(component, x, y)`, the components in the order of
/// FFmpeg's descriptor of the format (chroma by its own columns and rows, alpha last).
std::shared_ptr<AVFrame> makePicture(AVPixelFormat format, int width, int height,
                                     std::function<double(int component, int x, int y)> const& code);

}  // namespace qrtplay
