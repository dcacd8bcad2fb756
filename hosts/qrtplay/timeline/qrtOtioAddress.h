#pragma once

#include <string>
#include <vector>

#include "base/qrtOutcome.h"
#include "timeline/qrtMediaReference.h"

namespace qrtplay {

/// The file that an address in an OTIO file leads to: a file URL or a path, relative to `folder`. The path always has a
/// folder, so that nobody takes its beginning for a protocol. Failures say why it leads nowhere, as with http
/// addresses, which are never opened.
Outcome resolveOtioAddress(std::string const& address, std::string const& folder, std::string& path);

/// The folders that media may lie in, links followed. An empty list allows all.
class AllowedFolders final {
public:
    explicit AllowedFolders(std::vector<std::string> const& folders);

    void add(std::string const& folder);
    [[nodiscard]] bool allow(std::string const& path) const;
    /// The folder and what links in it lead to. A folder that cannot be listed is not allowed.
    [[nodiscard]] bool allow(ImageSequenceName const& images) const;

private:
    std::vector<std::string> m_folders;  // canonical
    const bool m_allowsAll;
};

}  // namespace qrtplay
