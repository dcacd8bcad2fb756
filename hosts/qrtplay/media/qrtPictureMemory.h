#pragma once

#include "media/qrtAv.h"

namespace qrtplay {

/// Has a decoder take the memory of its pictures from a pool that all decoders of this process share.
///
/// Memory that is fresh from the operating system costs more than the decoding of a picture into it. A decoder's own
/// pool never gives any back and is of no use to the others, which would add up to several times what the pictures
/// need: here a picture that is let go makes room for the next one, whoever decodes it, and what lies idle is bounded.
/// To be called before the decoder is opened. Threading: the decoder may use any number of threads.
void usePictureMemory(AVCodecContext& decoder);

/// How much memory lies idle at the moment.
[[nodiscard]] size_t idlePictureMemory();

}  // namespace qrtplay
