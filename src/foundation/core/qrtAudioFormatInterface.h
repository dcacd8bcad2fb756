#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtRefCountedMT.h"
#include "foundation/core/qrtTypes.h"

namespace QRT_0_81 {

/// The layout of audio samples, supplied by the host. Immutable once handed over: it is read from several threads.
class QRT_CORE_EXPORT AudioFormatInterface : public RefCountedMT {
public:
    ~AudioFormatInterface() override;

    /// Bytes taken by `sampleFrames` sample frames (one sample of every channel each).
    [[nodiscard]] virtual size_t getSizeInBytes(size_t sampleFrames) const = 0;
    /// Sample frames per second.
    [[nodiscard]] virtual int32 getSampleRate() const = 0;
};

}  // namespace QRT_0_81
