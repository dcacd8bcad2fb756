#pragma once

#include <type_traits>

#include "foundation/core/qrtStatus.h"

namespace QRT_0_81 {

/// To be called while an exception is handled: posts what it is, and answers `Status::general_failure`.
[[nodiscard]] Status failureOfException(char const* operation) noexcept;

/// Does the work and answers with its result, which may be none; an exception ends here, as a failure and a message.
///
/// Hosts are called back at many places, and what their graph engines, segments, compositions and observers throw must
/// neither end the player thread nor leave its callers waiting. The same holds when memory runs out.
/// `operation`: what failed, for the message, e.g. "initialize()".
template <class Work>
Status guarded(char const* operation, Work const& work) noexcept {
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Work const&>>) {
            work();
            return Status();
        } else {
            return work();
        }
    } catch (...) {
        return failureOfException(operation);
    }
}

/// The same for work with another result than a `Status`; an exception makes it `fallback`.
template <class Result, class Work>
Result guardedOr(Result fallback, char const* operation, Work const& work) noexcept {
    try {
        return work();
    } catch (...) {
        (void)failureOfException(operation);
        return fallback;
    }
}

}  // namespace QRT_0_81
