#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace QRT_0_81 {

/// Sets an environment variable for one scope. Only while no other thread reads the environment.
class ScopedEnvironment final {
public:
    ScopedEnvironment(std::string name, std::string const& value) : m_name(std::move(name)) {
        if (char const* const previous = std::getenv(m_name.c_str())) m_previous = previous;
        setenv(m_name.c_str(), value.c_str(), 1);
    }
    ~ScopedEnvironment() {
        if (m_previous) {
            setenv(m_name.c_str(), m_previous->c_str(), 1);
        } else {
            unsetenv(m_name.c_str());
        }
    }
    ScopedEnvironment(ScopedEnvironment const&) = delete;
    ScopedEnvironment& operator=(ScopedEnvironment const&) = delete;

private:
    const std::string m_name;
    std::optional<std::string> m_previous;
};

}  // namespace QRT_0_81
