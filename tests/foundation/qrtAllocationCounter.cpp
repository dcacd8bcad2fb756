#include "foundation/qrtAllocationCounter.h"

#include <cstdlib>
#include <new>

#if defined(__has_feature)
#define QRT_HAS_FEATURE(name) __has_feature(name)
#else
#define QRT_HAS_FEATURE(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || QRT_HAS_FEATURE(address_sanitizer) || \
    QRT_HAS_FEATURE(thread_sanitizer)
#define QRT_COUNTS_ALLOCATIONS 0
#else
#define QRT_COUNTS_ALLOCATIONS 1
#endif

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

#if QRT_COUNTS_ALLOCATIONS
void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
#endif

namespace QRT_0_81 {

AllocationCounter::AllocationCounter() noexcept : m_before(allocations) {}

std::size_t AllocationCounter::count() const noexcept {
    return allocations - m_before;
}

bool AllocationCounter::works() noexcept {
    return QRT_COUNTS_ALLOCATIONS != 0;
}

}  // namespace QRT_0_81
