#include "timeline/qrtOtioAddress.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace qrtplay {

namespace {

namespace fs = std::filesystem;

/// The protocol of an address in lower case, or empty. A single letter is the drive of a path from elsewhere.
std::string protocolOf(std::string_view address) {
    const size_t colon = address.find(':');
    if (colon == std::string_view::npos || colon < 2) return "";
    std::string protocol(address.substr(0, colon));
    const auto isAllowed = [](unsigned char c) { return std::isalnum(c) || c == '+' || c == '-' || c == '.'; };
    if (!std::isalpha(static_cast<unsigned char>(protocol.front()))) return "";
    if (!std::all_of(protocol.begin(), protocol.end(), isAllowed)) return "";
    std::transform(protocol.begin(), protocol.end(), protocol.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return protocol;
}

std::optional<int> hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return std::nullopt;
}

/// A percent sign that two digits do not follow stands for itself.
std::string percentDecoded(std::string_view text) {
    std::string decoded;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : std::nullopt;
        const auto low = high ? hexDigit(text[i + 2]) : std::nullopt;
        decoded += low ? static_cast<char>(*high * 16 + *low) : text[i];
        if (low) i += 2;
    }
    return decoded;
}

std::string inFolder(std::string const& folder, std::string const& path) {
    return path.starts_with('/') ? path : (fs::path(folder) / path).string();
}

/// The path of "file:" + `rest`, or none when it is on another machine.
std::optional<std::string> filePathOf(std::string_view rest) {
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        constexpr std::string_view thisMachine = "localhost/";
        if (rest.starts_with(thisMachine)) rest.remove_prefix(thisMachine.size() - 1);
        if (!rest.starts_with('/')) return std::nullopt;
    }
    return percentDecoded(rest);
}

/// Links followed as far as there is anything; empty when that fails.
std::string canonical(std::string const& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    if (error) return "";
    const fs::path resolved = fs::weakly_canonical(absolute, error);
    return error ? "" : resolved.string();
}

}  // namespace

Outcome resolveOtioAddress(std::string const& address, std::string const& folder, std::string& path) {
    if (address.empty()) return Outcome::failure("has no address");
    std::string resolved;
    if (const std::string protocol = protocolOf(address); protocol == "file") {
        const std::optional<std::string> local = filePathOf(std::string_view(address).substr(5));
        if (!local) return Outcome::failure("is on another machine");
        resolved = inFolder(folder, *local);
    } else if (!protocol.empty()) {
        return Outcome::failure("is no file: '" + protocol + "' is not opened");
    } else {
        resolved = inFolder(folder, address);
        // Some programs write paths as parts of URLs. A file that has the very name comes first.
        const std::string decoded = inFolder(folder, percentDecoded(address));
        std::error_code error;
        if (decoded != resolved && !fs::exists(resolved, error) && fs::exists(decoded, error)) resolved = decoded;
    }
    if (resolved.find('\0') != std::string::npos) return Outcome::failure("has a zero byte in its address");
    path = resolved;
    return Outcome();
}

AllowedFolders::AllowedFolders(std::vector<std::string> const& folders) : m_allowsAll(folders.empty()) {
    for (std::string const& folder : folders)
        add(folder);
}

void AllowedFolders::add(std::string const& folder) {
    std::string resolved = canonical(folder);
    while (resolved.size() > 1 && resolved.back() == '/')
        resolved.pop_back();
    if (!resolved.empty()) m_folders.push_back(std::move(resolved));
}

bool AllowedFolders::allow(std::string const& path) const {
    if (m_allowsAll) return true;
    const std::string resolved = canonical(path);
    return std::any_of(m_folders.begin(), m_folders.end(), [&](std::string const& folder) {
        if (!resolved.starts_with(folder)) return false;
        return resolved.size() == folder.size() || folder == "/" || resolved[folder.size()] == '/';
    });
}

bool AllowedFolders::allow(ImageSequenceName const& images) const {
    if (m_allowsAll) return true;
    if (!allow(images.folder)) return false;
    std::error_code error;
    for (fs::directory_iterator entry(images.folder, error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const bool isOne = name.starts_with(images.prefix) && name.ends_with(images.suffix);
        std::error_code ignored;
        if (isOne && entry->is_symlink(ignored) && !allow(entry->path().string())) return false;
    }
    // In a folder that may be entered and not be listed a link would go unnoticed.
    return !error || error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

}  // namespace qrtplay
