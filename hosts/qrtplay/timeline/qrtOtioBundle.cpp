#include "timeline/qrtOtioBundle.h"

#include <archive.h>
#include <archive_entry.h>
#include <locale.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <system_error>
#include <vector>

#include "timeline/qrtOtioObject.h"

namespace qrtplay {

namespace {

namespace fs = std::filesystem;

struct ArchiveCloser {
    void operator()(archive* opened) const noexcept { archive_read_free(opened); }
};

/// While it lives, this thread takes file names for UTF-8, whatever the user's locale: in one of plain ASCII libarchive
/// has no name for an entry with other characters.
class Utf8Locale final {
public:
    Utf8Locale()
        : m_own(newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t())), m_before(m_own ? uselocale(m_own) : locale_t()) {}
    ~Utf8Locale() {
        if (!m_own) return;
        uselocale(m_before);
        freelocale(m_own);
    }
    Utf8Locale(Utf8Locale const&) = delete;
    Utf8Locale& operator=(Utf8Locale const&) = delete;

private:
    const locale_t m_own;
    const locale_t m_before;
};

class Unpacker final {
public:
    Unpacker(std::string const& path, std::string const& folder, size_t mostEntries)
        : m_path(path),
          m_folder(folder),
          m_mostEntries(mostEntries),
          m_archive(archive_read_new()),
          m_buffer(size_t{64} * 1024) {}

    Outcome run() {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(m_path, error);
        if (error) return failure("cannot be read: " + error.message());
        m_room = maxBundleBytes + maxBundleFactor * static_cast<int64>(size);
        archive_read_support_format_zip(m_archive.get());
        if (archive_read_open_filename(m_archive.get(), m_path.c_str(), m_buffer.size()) != ARCHIVE_OK)
            return archiveFailure();
        archive_entry* entry = nullptr;
        for (bool isEmpty = true;; isEmpty = false) {
            const int result = archive_read_next_header(m_archive.get(), &entry);
            if (result == ARCHIVE_EOF) return isEmpty ? failure("is no zip archive, or an empty one") : Outcome();
            if (result != ARCHIVE_OK && result != ARCHIVE_WARN) return archiveFailure();
            if (Outcome outcome = unpack(entry); outcome.failed()) return outcome;
            if (Outcome outcome = countOne(m_entries, "entries"); outcome.failed()) return outcome;
        }
    }

private:
    Outcome failure(std::string const& what) const { return Outcome::failure(oneLine(m_path) + ": " + what); }

    Outcome archiveFailure() const {
        char const* const text = archive_error_string(m_archive.get());
        return failure(std::string("cannot be unpacked: ") + (text ? oneLine(text) : "it is damaged"));
    }

    Outcome unpack(archive_entry* entry) {
        char const* const name = archive_entry_pathname(entry);
        if (!name || !*name) return failure("has an entry without a name");
        const std::string about = "entry '" + oneLine(name) + "' ";
        const fs::path path(name);
        if (Outcome outcome = checkPath(path, about); outcome.failed()) return outcome;
        const auto type = archive_entry_filetype(entry);
        if (type == AE_IFDIR) return makeFolders(path, about);
        if (type != AE_IFREG) return failure(about + "is neither a file nor a folder");
        if (archive_entry_is_encrypted(entry)) return failure(about + "is encrypted");
        std::error_code error;
        const fs::path target = m_folder / path;
        if (fs::exists(target, error)) return failure(about + "is there twice");
        if (Outcome outcome = makeFolders(path.parent_path(), about); outcome.failed()) return outcome;
        if (Outcome outcome = countMade(); outcome.failed()) return outcome;
        return writeData(target.string(), about);
    }

    Outcome checkPath(fs::path const& path, std::string const& about) const {
        const bool leadsOut = path.is_absolute() || std::find(path.begin(), path.end(), "..") != path.end();
        if (leadsOut) return failure(about + "leads out of the bundle");
        constexpr std::ptrdiff_t mostParts = 64;
        if (std::distance(path.begin(), path.end()) > mostParts)
            return failure(about + "has a path of more than " + std::to_string(mostParts) + " parts");
        return Outcome();
    }

    // One by one: a path of few bytes makes many folders, and each takes room on the disk.
    Outcome makeFolders(fs::path const& path, std::string const& about) {
        fs::path folder = m_folder;
        for (fs::path const& part : path) {
            folder /= part;
            std::error_code error;
            const bool isNew = fs::create_directory(folder, error);
            if (error) return failure(about + "cannot be unpacked: " + error.message());
            if (!isNew) continue;
            if (Outcome outcome = countMade(); outcome.failed()) return outcome;
        }
        return Outcome();
    }

    Outcome countMade() { return countOne(m_made, "files and folders"); }

    Outcome countOne(size_t& count, std::string const& what) const {
        if (count++ < m_mostEntries) return Outcome();
        return failure("has more than " + std::to_string(m_mostEntries) + " " + what);
    }

    Outcome writeData(std::string const& path, std::string const& about) {
        std::ofstream file(path, std::ios::binary);
        for (;;) {
            const auto count = archive_read_data(m_archive.get(), m_buffer.data(), m_buffer.size());
            if (count < 0) return archiveFailure();
            if (count == 0) break;
            // What is written counts, not what the archive says about itself.
            m_room -= count;
            if (m_room < 0) return failure(about + "is too large: no bundle unpacks to so much more than its size");
            file.write(m_buffer.data(), count);
            if (!file) break;
        }
        file.close();
        return file ? Outcome() : failure(about + "cannot be written to '" + path + "'");
    }

    std::string const& m_path;
    const fs::path m_folder;
    const size_t m_mostEntries;
    const std::unique_ptr<archive, ArchiveCloser> m_archive;
    std::vector<char> m_buffer;
    size_t m_entries = 0;  // which may repeat folders without end
    size_t m_made = 0;     // files and folders
    int64 m_room = 0;      // in bytes, for what they hold
};

}  // namespace

Outcome unpackOtioBundle(std::string const& archive, std::string const& folder, size_t mostEntries) {
    const Utf8Locale locale;
    return Unpacker(archive, folder, mostEntries).run();
}

}  // namespace qrtplay
