#pragma once

#include <cstddef>

namespace QRT_0_81 {

/// Lets the n-th allocation that the kit's libraries make from now on, on whatever thread, find no memory.
///
/// The program replaces `operator new`. Only what the libraries ask for fails, themselves or through the standard
/// library: drivers and Qt are not written to go on without memory, and the test is not the one under test.
class AllocationFaults final {
public:
    enum class Extent { once, fromThenOn };

    AllocationFaults(std::size_t n, Extent extent);
    ~AllocationFaults();
    AllocationFaults(AllocationFaults const&) = delete;
    AllocationFaults& operator=(AllocationFaults const&) = delete;

    /// How many allocations have failed so far.
    [[nodiscard]] std::size_t count() const;
};

}  // namespace QRT_0_81
