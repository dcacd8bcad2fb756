#pragma once

#include <memory>
#include <string>
#include <vector>

#include "timeline/qrtOtioReader.h"
#include "timeline/qrtTimeline.h"

namespace qrtplay {

/// Texts of OTIO objects. `more`: further members, each with a comma before it.
namespace otio {

std::string time(double value, double rate);
std::string range(double start, double duration, double rate);
std::string clip(std::string const& name, std::string const& sourceRange, std::string const& more = "");
std::string clipOf(std::string const& reference, std::string const& sourceRange, std::string const& more = "");
std::string file(std::string const& url, std::string const& more = "");
std::string gap(double duration, double rate);
std::string dissolve(double in, double out, double rate);
std::string warp(double factor);  ///< a member, with its comma
std::string track(std::vector<std::string> const& children, std::string const& more = "");
std::string soundTrack(std::vector<std::string> const& children, std::string const& more = "");
std::string stack(std::vector<std::string> const& children, std::string const& more = "");
std::string timeline(std::vector<std::string> const& tracks, std::string const& more = "");

}  // namespace otio

inline const Rational film(24, 1);

/// A timeline that has to be readable; never null.
std::shared_ptr<Timeline const> readText(std::string const& text, OtioOptions const& options = {});
std::shared_ptr<Timeline const> readFile(std::string const& path, OtioOptions const& options = {});
/// What is said about a text that must not be readable.
std::string failureOf(std::string const& text, OtioOptions const& options = {});

/// What `pictureAt` answers, in a form that can be compared with one line.
FrameNode picture(size_t media, ExactTime const& time);
FrameNode stackOf(std::vector<FrameNode> children);

/// A new folder for files of one test; goes with it.
class TestFolder final {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(TestFolder const&) = delete;
    TestFolder& operator=(TestFolder const&) = delete;

    [[nodiscard]] std::string const& path() const noexcept { return m_path; }
    /// Makes a file, and the folders that it needs; answers its path.
    std::string write(std::string const& name, std::string const& bytes) const;
    /// Makes a zip archive of entries, each a path and its bytes; one that ends with a slash is a folder.
    std::string writeZip(std::string const& name,
                         std::vector<std::pair<std::string, std::string>> const& entries) const;

private:
    std::string m_path;
};

}  // namespace qrtplay
