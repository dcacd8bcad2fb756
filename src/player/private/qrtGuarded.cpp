#include "qrtGuarded.h"

#include <exception>

#include "qrtDebugLine.h"
#include "qrtPlayerImplSource.h"

namespace QRT_0_81 {

Status failureOfException(char const* operation) noexcept {
    try {
        throw;
    } catch (std::exception const& exception) {
        QRT_ENGINE_MESSAGE("%s failed: %s", operation, exception.what());
    } catch (...) {
        QRT_ENGINE_MESSAGE("%s failed: an exception that is no std::exception", operation);
    }
    return Status::general_failure;
}

}  // namespace QRT_0_81
