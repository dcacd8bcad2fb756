// Reads any bytes as a pattern of an image sequence, the first line, and the files that lie in its folder, the others:
// nothing may crash or leak, what is found is there, and what a name stands for is not missed.
#include <stdlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "qrtFuzzRequire.h"
#include "timeline/qrtImageSequencePattern.h"

namespace {

using namespace qrtplay;

/// A folder of empty files; goes with it.
class Folder final {
public:
    Folder() {
        // In memory where that can be had: a disk that is busy for seconds looks like a hang.
        std::error_code error;
        m_path = std::filesystem::is_directory("/dev/shm", error) ? "/dev/shm" : "/tmp";
        m_path += "/qrtImageSequenceFuzz.XXXXXX";
        require(mkdtemp(m_path.data()) != nullptr, "there is a folder for files");
    }
    ~Folder() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }
    Folder(Folder const&) = delete;
    Folder& operator=(Folder const&) = delete;

    std::string const& path() const { return m_path; }
    bool has(std::string const& path) const { return m_files.count(path) != 0; }
    std::set<std::string> const& files() const { return m_files; }

    void fill(std::istream& names) {
        constexpr size_t mostFiles = 8;
        std::string name;
        while (m_files.size() < mostFiles && std::getline(names, name)) {
            if (name.empty() || name.find_first_of(std::string("/\0", 2)) != std::string::npos) continue;
            const std::string path = m_path + "/" + name;
            if (std::ofstream(path).is_open()) m_files.insert(path);
        }
    }
    void clear() {
        for (std::string const& path : m_files)
            std::remove(path.c_str());
        m_files.clear();
    }

private:
    std::string m_path;
    std::set<std::string> m_files;
};

void checkName(std::string const& pattern, ImageSequenceName const& images) {
    require(isImageSequencePattern(pattern), "what has been read is a pattern");
    require(images.digits > 0, "a place has digits");
    ImageSequenceName again;
    require(parseImageSequencePattern(images.text(), again).success(), "what people write can be read");
    require(again == images, "and means the same");
}

void checkFound(Folder const& folder, ImageSequenceName const& images) {
    require(images.firstNumber <= images.lastNumber, "the first number is not behind the last");
    require(folder.has(images.pathOf(0)), "the first file is there");
    require(folder.has(images.pathOf(images.frameCount() - 1)), "the last file is there");
}

/// No number close to those that were found belongs to a file that was left out.
void checkNoneIsMissed(Folder const& folder, ImageSequenceName const& images) {
    constexpr int64 around = 64;
    constexpr int64 largest = 1'000'000'000'000;  // numbers beyond it are none of a sequence
    const auto check = [&](int64 number, int64 position, char const* what) {
        if (number >= -largest && number <= largest) require(!folder.has(images.pathOf(position)), what);
    };
    const int64 last = images.frameCount() - 1;
    for (int64 distance = 1; distance <= around; ++distance) {
        check(images.firstNumber - distance, -distance, "no file lies before the first");
        check(images.lastNumber + distance, last + distance, "no file lies behind the last");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static Folder folder;
    std::istringstream lines(std::string(reinterpret_cast<char const*>(data), size));
    std::string pattern;
    std::getline(lines, pattern);

    ImageSequenceName images;
    const Outcome outcome = parseImageSequencePattern(pattern, images);
    require(outcome.success() || images == ImageSequenceName(), "a failure changes nothing");
    require(outcome.message().find('\n') == std::string::npos, "a failure is one line");
    if (outcome.failed()) return 0;
    checkName(pattern, images);

    folder.fill(lines);
    images.folder = folder.path();
    const Outcome found = findNumbers(images);
    require(found.message().find('\n') == std::string::npos, "a failure is one line");
    if (found.success()) {
        checkFound(folder, images);
        checkNoneIsMissed(folder, images);
    } else {
        images.firstNumber = 0;
        checkNoneIsMissed(folder, images);
    }
    folder.clear();
    return 0;
}
