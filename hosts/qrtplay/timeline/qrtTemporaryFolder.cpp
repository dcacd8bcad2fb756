#include "timeline/qrtTemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace qrtplay {

TemporaryFolder::~TemporaryFolder() {
    if (m_path.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

Outcome TemporaryFolder::create() {
    std::error_code error;
    const std::filesystem::path parent = std::filesystem::temp_directory_path(error);
    if (error) return Outcome::failure("there is no folder for temporary files: " + error.message());
    std::string path = (parent / "qrtplay-XXXXXX").string();
    if (!mkdtemp(path.data())) {
        const std::string why = std::error_code(errno, std::generic_category()).message();
        return Outcome::failure("cannot make a temporary folder in '" + parent.string() + "': " + why);
    }
    m_path = path;
    return Outcome();
}

}  // namespace qrtplay
