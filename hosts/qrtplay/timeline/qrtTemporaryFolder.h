#pragma once

#include <string>

#include "base/qrtOutcome.h"

namespace qrtplay {

/// A folder for files that are needed only for a while: its end removes it with all that is in it.
class TemporaryFolder final {
public:
    TemporaryFolder() = default;
    ~TemporaryFolder();
    TemporaryFolder(TemporaryFolder const&) = delete;
    TemporaryFolder& operator=(TemporaryFolder const&) = delete;

    /// To be called once. Only this user may look into the folder.
    Outcome create();
    [[nodiscard]] std::string const& path() const noexcept { return m_path; }

private:
    std::string m_path;  // empty until it is created
};

}  // namespace qrtplay
