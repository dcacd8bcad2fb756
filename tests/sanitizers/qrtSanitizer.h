#pragma once

namespace QRT_0_81 {

/// Under a sanitizer everything takes several times as long, so tests that repeat a step do it fewer times: what the
/// sanitizers look for shows without thousands of rounds.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool isUnderSanitizer = true;
#else
inline constexpr bool isUnderSanitizer = false;
#endif

}  // namespace QRT_0_81
