#pragma once

#include <cstddef>
#include <cstdint>

/// Everything of the kit, in the namespace of its binary interface: two versions can live in one process.
namespace QRT_0_81 {

/// Integers of a fixed width.
/// @{
using int32 = std::int32_t;
using uint32 = std::uint32_t;
using int64 = std::int64_t;
using uint64 = std::uint64_t;
/// @}
using std::size_t;

}  // namespace QRT_0_81
