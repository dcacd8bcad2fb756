#include "qrtAllocationHook.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> allThreads{0};
thread_local long thisThread = 0;

void* allocate(std::size_t size, std::size_t alignment) {
    allThreads.fetch_add(1, std::memory_order_relaxed);
    ++thisThread;
    const std::size_t rounded = (size + alignment) / alignment * alignment;  // never 0
    if (void* const memory = std::aligned_alloc(alignment, rounded)) return memory;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}

namespace QRT_0_81 {

long allocationsOfAllThreads() {
    return allThreads.load(std::memory_order_relaxed);
}

long allocationsOfThisThread() {
    return thisThread;
}

}  // namespace QRT_0_81
