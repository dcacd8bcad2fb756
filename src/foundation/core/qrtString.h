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
    String() = default;
    String(char const* text) : m_text(text ? text : "") {}  // implicit: names and keys are written as literals
    explicit String(std::string text) noexcept : m_text(std::move(text)) {}

    [[nodiscard]] char const* c_str() const noexcept { return m_text.c_str(); }
    [[nodiscard]] size_t size() const noexcept { return m_text.size(); }
    [[nodiscard]] std::string_view view() const noexcept { return m_text; }
    [[nodiscard]] bool empty() const noexcept { return m_text.empty(); }

    String& append(char const* text) {
        if (text) m_text.append(text);
        return *this;
    }

    [[nodiscard]] bool operator==(String const& other) const noexcept { return m_text == other.m_text; }
    [[nodiscard]] bool operator<(String const& other) const noexcept { return m_text < other.m_text; }

private:
    std::string m_text;
};

[[nodiscard]] inline String operator+(char const* left, String const& right) {
    String joined(left);
    joined.append(right.c_str());
    return joined;
}

inline std::ostream& operator<<(std::ostream& stream, String const& text) {
    return stream << text.c_str();
}

}  // namespace QRT_0_81

template <>
struct std::hash<QRT_0_81::String> {
    using is_transparent = void;  // a key that is no `String` yet need not become one to be looked up
    // Not noexcept: containers of the standard library then keep the hashes beside the texts, and need not make them
    // again for every neighbour that a look-up comes by.
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    size_t operator()(QRT_0_81::String const& text) const { return (*this)(text.view()); }
};
