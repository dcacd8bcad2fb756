#pragma once

#include <chrono>

#include "base/qrtKit.h"

namespace qrtplay {

constexpr int64 nanosecondsPerSecond = 1'000'000'000;

/// A time that playing follows. Never goes backwards; where it begins is of no meaning.
///
/// Threading: any thread.
class MediaClock {
public:
    virtual ~MediaClock() = default;
    [[nodiscard]] virtual int64 nanoseconds() const = 0;
};

/// The machine's own.
class WallClock final : public MediaClock {
public:
    [[nodiscard]] int64 nanoseconds() const override {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
    }
};

}  // namespace qrtplay
