// The out-of-line destructors of the pure interfaces: they anchor each virtual table in this library.
#include "foundation/composition/qrtComposition.h"
#include "foundation/composition/qrtGraphEngineInterface.h"

namespace QRT_0_81 {

Composition::~Composition() = default;
GraphEngineInterface::~GraphEngineInterface() = default;

}  // namespace QRT_0_81
