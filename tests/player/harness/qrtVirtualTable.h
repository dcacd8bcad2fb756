#pragma once

#include <cstddef>

namespace QRT_0_81 {

/// Calls what stands in slot `slot` (1 or above) of the object's main virtual table, as a host that was built against
/// another version of the header would. In the Itanium C++ ABI the destructor, slot 0, takes two entries.
template <class Result, class Object, class... Arguments>
Result callSlot(std::size_t slot, Object* object, Arguments... arguments) {
    auto const* const table = *reinterpret_cast<void* const* const*>(object);
    return reinterpret_cast<Result (*)(Object*, Arguments...)>(table[slot + 1])(object, arguments...);
}

/// Ends the object through slot 0, with the entry that also frees it.
template <class Object>
void deleteThroughSlot0(Object* object) {
    auto const* const table = *reinterpret_cast<void* const* const*>(object);
    reinterpret_cast<void (*)(Object*)>(table[1])(object);
}

}  // namespace QRT_0_81
