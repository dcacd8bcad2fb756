#pragma once

#include <cstddef>

namespace QRT_0_81 {

/// Counts what the calling thread allocates with `new` while the counter lives.
class AllocationCounter final {
public:
    AllocationCounter() noexcept;
    [[nodiscard]] std::size_t count() const noexcept;

    /// False in sanitizer builds, which bring an allocator of their own.
    [[nodiscard]] static bool works() noexcept;

private:
    std::size_t m_before;
};

}  // namespace QRT_0_81
