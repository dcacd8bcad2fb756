#include "faults/qrtAllocationFaults.h"

#include <execinfo.h>
#include <link.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

/// Where code of the kit's libraries and of the standard library lies. Found once, before anything can fail.
struct Modules {
    enum class Owner { other, kit, standardLibrary };

    struct Range {
        std::uintptr_t begin = 0;
        std::uintptr_t end = 0;
        Owner owner = Owner::other;
    };
    static constexpr std::size_t most = 64;
    Range ranges[most];
    std::size_t count = 0;

    Modules() {
        dl_iterate_phdr(
            [](dl_phdr_info* info, std::size_t, void* self) {
                static_cast<Modules*>(self)->add(*info);
                return 0;
            },
            this);
        void* frames[1];
        (void)backtrace(frames, 1);  // the first call loads a library
    }

    void add(dl_phdr_info const& info) {
        const Owner owner = std::strstr(info.dlpi_name, "/libqrt")         ? Owner::kit
                            : std::strstr(info.dlpi_name, "/libstdc++.so") ? Owner::standardLibrary
                                                                           : Owner::other;
        if (owner == Owner::other) return;
        for (int i = 0; i < info.dlpi_phnum && count < most; ++i) {
            auto const& segment = info.dlpi_phdr[i];
            if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0) continue;
            const std::uintptr_t begin = info.dlpi_addr + segment.p_vaddr;
            ranges[count++] = {begin, begin + segment.p_memsz, owner};
        }
    }

    [[nodiscard]] Owner ownerOf(void const* address) const {
        const auto place = reinterpret_cast<std::uintptr_t>(address);
        for (std::size_t i = 0; i < count; ++i) {
            if (place >= ranges[i].begin && place < ranges[i].end) return ranges[i].owner;
        }
        return Owner::other;
    }
};

std::atomic<bool> isArmed{false};
std::atomic<std::size_t> numToGo{0};
std::atomic<std::size_t> numFailed{0};
std::atomic<bool> isLasting{false};

Modules const& modules() {
    static const Modules instance;
    return instance;
}

/// Whether it is the kit that asks, be it through the standard library.
bool isAskedByKit(void const* caller) {
    using Owner = Modules::Owner;
    const Owner owner = modules().ownerOf(caller);
    if (owner != Owner::standardLibrary) return owner == Owner::kit;
    constexpr int depth = 24;
    void* frames[depth];
    const int found = backtrace(frames, depth);
    bool isBelow = false;
    for (int i = 0; i < found; ++i) {
        isBelow = isBelow || frames[i] == caller;
        if (isBelow && modules().ownerOf(frames[i]) != Owner::standardLibrary) {
            return modules().ownerOf(frames[i]) == Owner::kit;
        }
    }
    return false;
}

bool isToFail(void const* caller) {
    if (!isArmed || !isAskedByKit(caller)) return false;
    std::size_t left = numToGo.load();
    while (left > 0 && !numToGo.compare_exchange_weak(left, left - 1)) {
    }
    const bool fails = left == 1 || (left == 0 && isLasting);
    if (fails) ++numFailed;
    return fails;
}

void* allocate(std::size_t size, void const* caller) noexcept {
    return isToFail(caller) ? nullptr : std::malloc(size > 0 ? size : 1);
}

void* allocateOrThrow(std::size_t size, void const* caller) {
    if (void* const memory = allocate(size, caller)) return memory;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return allocateOrThrow(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size, __builtin_return_address(0));
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    return allocate(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept {
    return allocate(size, __builtin_return_address(0));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::nothrow_t const&) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::nothrow_t const&) noexcept {
    std::free(memory);
}

namespace QRT_0_81 {

AllocationFaults::AllocationFaults(std::size_t n, Extent extent) {
    (void)modules();
    numFailed = 0;
    numToGo = n;
    isLasting = extent == Extent::fromThenOn;
    isArmed = true;
}

AllocationFaults::~AllocationFaults() {
    isArmed = false;
}

std::size_t AllocationFaults::count() const {
    return numFailed;
}

}  // namespace QRT_0_81
