#pragma once

#include <cstddef>

namespace QRT_0_81 {

/// Lets every `new (std::nothrow)` of one size on the calling thread find no memory, for one scope. The size keeps it
/// from what drivers allocate.
class AllocationFault final {
public:
    explicit AllocationFault(std::size_t size);
    ~AllocationFault();
    AllocationFault(AllocationFault const&) = delete;
    AllocationFault& operator=(AllocationFault const&) = delete;
};

}  // namespace QRT_0_81
