#pragma once

#include <string>

#include "base/qrtPrintable.h"

namespace qrtplay {

/// Success, or one line of text for people that names the thing and says what is wrong with it. What it names may come
/// from anywhere, so that it is made printable.
class [[nodiscard]] Outcome final {
public:
    Outcome() = default;
    [[nodiscard]] static Outcome failure(std::string const& message) {
        Outcome outcome;
        outcome.m_failed = true;
        outcome.m_message = printable(message);
        return outcome;
    }

    [[nodiscard]] bool success() const noexcept { return !m_failed; }
    [[nodiscard]] bool failed() const noexcept { return m_failed; }
    /// Empty after a success.
    [[nodiscard]] std::string const& message() const noexcept { return m_message; }

private:
    bool m_failed = false;
    std::string m_message;
};

}  // namespace qrtplay
