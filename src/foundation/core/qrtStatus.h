#pragma once

#include "foundation/core/qrtExport.h"
#include "foundation/core/qrtString.h"

namespace QRT_0_81 {

/// The result of an operation: success or the kind of failure, as one number.
///
/// A default-constructed `Status` is success. Values are cheap to copy and carry no text; `toString` gives words for
/// people. The numbers are part of the binary interface; numbers outside the list may come from a host's own graph
/// engine or composition and are passed through as they are.
class [[nodiscard]] QRT_CORE_EXPORT Status final {
public:
    /// The kinds of results. Numbers that are missing are not used.
    enum Type : int {
        ok = 0,                            ///< success
        general_failure = 1,               ///< no buffer object, incomplete framebuffer, unknown play mode in a seek
        invalid_argument = 3,              ///< negative preference, invalid resolution, null pointer, zero size
        invalid_query = 4,                 ///< wrong buffer kinds for read-back, unknown cache statistics type
        not_initialized = 256,             ///< the player must be initialized first
        already_producing = 257,           ///< a run must be stopped before the next begins
        out_of_range = 258,                ///< frame out of range; cached record of the wrong kind
        invalid_play_params = 259,         ///< the range leaves the composition, or the current frame the range
        no_resource = 260,                 ///< no pooled resource is free
        invalid_pool_configuration = 262,  ///< invalid resolution, unsupported channel count, buffer size 0
        no_composition = 265,              ///< a composition must be set first
        composition_incomplete = 269,      ///< from a graph engine: adopted, but not everything in it can be rendered
        not_producing = 271,               ///< there is no run to stop
        already_initialized = 272,         ///< the player has been initialized before
        no_composition_to_update = 273,    ///< an update needs a composition that was set
        graphics_failure = 274,     ///< pixel-buffer failure during read-back, or the context cannot be made current
        not_while_producing = 275,  ///< the run must be stopped first
        invalid_text = 532,         ///< text is not a valid JSON form of the object
        not_in_cache = 1536         ///< no live entry under that key
    };

    /// Success.
    constexpr Status() noexcept = default;
    /// A result of a kind. Implicit: `return Status::no_resource;` reads well.
    constexpr Status(Type type) noexcept : m_type(type) {}

    /// Becomes a result of that kind.
    constexpr void set(Type type) noexcept { m_type = type; }
    /// The kind of the result.
    [[nodiscard]] constexpr Type get() const noexcept { return m_type; }
    /// Whether all went well.
    [[nodiscard]] constexpr bool success() const noexcept { return m_type == ok; }
    /// Whether something went wrong.
    [[nodiscard]] constexpr bool failure() const noexcept { return m_type != ok; }
    /// Whether all went well, as `success`.
    [[nodiscard]] constexpr explicit operator bool() const noexcept { return success(); }
    /// Whether the result is of that kind.
    [[nodiscard]] constexpr bool operator==(Type type) const noexcept { return m_type == type; }
    /// Whether both results are of the same kind.
    [[nodiscard]] constexpr bool operator==(Status const& other) const noexcept { return m_type == other.m_type; }

    /// A short English phrase for people, e.g. "not initialized"; "unknown status 17" for a number outside the list.
    [[nodiscard]] String toString() const;

private:
    Type m_type = ok;
};

}  // namespace QRT_0_81
