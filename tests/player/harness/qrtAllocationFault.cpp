#include "harness/qrtAllocationFault.h"

#include <new>

namespace {

thread_local std::size_t failingSize = 0;

}  // namespace

void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    if (size == failingSize) return nullptr;
    try {
        return ::operator new(size);
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

namespace QRT_0_81 {

AllocationFault::AllocationFault(std::size_t size) {
    failingSize = size;
}

AllocationFault::~AllocationFault() {
    failingSize = 0;
}

}  // namespace QRT_0_81
