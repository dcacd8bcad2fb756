// The out-of-line destructors of the pure interfaces: they anchor each virtual table in this library.
#include "foundation/core/qrtAudioFormatInterface.h"
#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtTokenResolver.h"

namespace QRT_0_81 {

AudioFormatInterface::~AudioFormatInterface() = default;
ExternalSegment::~ExternalSegment() = default;
TokenResolver::~TokenResolver() = default;

}  // namespace QRT_0_81
