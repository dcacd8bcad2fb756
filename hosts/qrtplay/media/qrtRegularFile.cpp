#include "media/qrtRegularFile.h"

#include <filesystem>
#include <system_error>

namespace qrtplay {

Outcome checkRegularFile(std::string const& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    switch (status.type()) {
        case std::filesystem::file_type::regular: return Outcome();
        case std::filesystem::file_type::not_found: return Outcome::failure(path + ": no such file");
        case std::filesystem::file_type::directory: return Outcome::failure(path + ": is a folder, not a media file");
        case std::filesystem::file_type::none: return Outcome::failure(path + ": " + error.message());
        default: return Outcome::failure(path + ": is not a regular file");
    }
}

}  // namespace qrtplay
