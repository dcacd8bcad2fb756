#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/core/qrtExport.h"

namespace QRT_0_81 {

/// Text as bytes, UTF-8 by convention, always zero-terminated. A thin value type over `std::string`.
///
/// A null character pointer counts as the empty text everywhere.
class QRT_CORE_EXPORT String final {
public:
    /// The empty text.
    String() = default;
    /// A copy of the text. Implicit: names and keys are written as literals.
    String(char const* text) : m_text(text ? text : "") {}
    /// Takes the text over; zero bytes in it are kept.
    explicit String(std::string text) noexcept : m_text(std::move(text)) {}

    /// The text with a zero byte behind it, never null; owned by the object, valid until it changes.
    [[nodiscard]] char const* c_str() const noexcept { return m_text.c_str(); }
    /// The number of bytes, without the zero byte.
    [[nodiscard]] size_t size() const noexcept { return m_text.size(); }
    /// The text as a view, valid until the object changes.
    [[nodiscard]] std::string_view view() const noexcept { return m_text; }
    /// Whether there is no text.
    [[nodiscard]] bool empty() const noexcept { return m_text.empty(); }

    /// Adds text at the end.
    String& append(char const* text) {
        if (text) m_text.append(text);
        return *this;
    }

    /// Whether all bytes are equal.
    [[nodiscard]] bool operator==(String const& other) const noexcept { return m_text == other.m_text; }
    /// The order of the bytes, for sorted containers.
    [[nodiscard]] bool operator<(String const& other) const noexcept { return m_text < other.m_text; }

private:
    std::string m_text;
};

/// One text behind the other.
[[nodiscard]] inline String operator+(char const* left, String const& right) {
    String joined(left);
    joined.append(right.c_str());
    return joined;
}

/// Writes the text up to its first zero byte.
inline std::ostream& operator<<(std::ostream& stream, String const& text) {
    return stream << text.c_str();
}

}  // namespace QRT_0_81

/// Makes `QRT_0_81::String` a key of unordered containers.
template <>
struct std::hash<QRT_0_81::String> {
    using is_transparent = void;  ///< A key that is no `String` yet need not become one to be looked up.
    /// The hash of the bytes.
    /// @{
    // Not noexcept: containers of the standard library then keep the hashes beside the texts, and need not make them
    // again for every neighbour that a look-up comes by.
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    size_t operator()(QRT_0_81::String const& text) const { return (*this)(text.view()); }
    /// @}
};
