#include "foundation/core/qrtVideoBuffer.h"

namespace QRT_0_81 {

VideoBuffer::~VideoBuffer() = default;

}  // namespace QRT_0_81
