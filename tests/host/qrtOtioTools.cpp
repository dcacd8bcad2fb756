#include "host/qrtOtioTools.h"

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>
#include <locale.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace qrtplay {

namespace otio {

namespace {

std::string numberText(double value) {
    std::ostringstream text;
    text.precision(17);
    text << value;
    return text.str();
}

std::string joined(std::vector<std::string> const& parts) {
    std::string text;
    for (std::string const& part : parts)
        text += (text.empty() ? "" : ", ") + part;
    return text;
}

std::string trackOf(char const* kind, std::vector<std::string> const& children, std::string const& more) {
    return R"({"OTIO_SCHEMA": "Track.1", "kind": ")" + std::string(kind) + R"(", "children": [)" + joined(children) +
           "]" + more + "}";
}

}  // namespace

std::string time(double value, double rate) {
    return R"({"OTIO_SCHEMA": "RationalTime.1", "rate": )" + numberText(rate) + R"(, "value": )" + numberText(value) +
           "}";
}

std::string range(double start, double duration, double rate) {
    return R"({"OTIO_SCHEMA": "TimeRange.1", "start_time": )" + time(start, rate) + R"(, "duration": )" +
           time(duration, rate) + "}";
}

std::string clip(std::string const& name, std::string const& sourceRange, std::string const& more) {
    return clipOf(file(name + ".mov"), sourceRange, R"(, "name": ")" + name + '"' + more);
}

std::string clipOf(std::string const& reference, std::string const& sourceRange, std::string const& more) {
    return R"({"OTIO_SCHEMA": "Clip.1", "media_reference": )" + reference + R"(, "source_range": )" + sourceRange +
           more + "}";
}

std::string file(std::string const& url, std::string const& more) {
    return R"({"OTIO_SCHEMA": "ExternalReference.1", "target_url": ")" + url + '"' + more + "}";
}

std::string gap(double duration, double rate) {
    return R"({"OTIO_SCHEMA": "Gap.1", "source_range": )" + range(0, duration, rate) + "}";
}

std::string dissolve(double in, double out, double rate) {
    return R"({"OTIO_SCHEMA": "Transition.1", "transition_type": "SMPTE_Dissolve", "in_offset": )" + time(in, rate) +
           R"(, "out_offset": )" + time(out, rate) + "}";
}

std::string warp(double factor) {
    return R"(, "effects": [{"OTIO_SCHEMA": "LinearTimeWarp.1", "time_scalar": )" + numberText(factor) + "}]";
}

std::string track(std::vector<std::string> const& children, std::string const& more) {
    return trackOf("Video", children, more);
}

std::string soundTrack(std::vector<std::string> const& children, std::string const& more) {
    return trackOf("Audio", children, more);
}

std::string stack(std::vector<std::string> const& children, std::string const& more) {
    return R"({"OTIO_SCHEMA": "Stack.1", "children": [)" + joined(children) + "]" + more + "}";
}

std::string timeline(std::vector<std::string> const& tracks, std::string const& more) {
    return R"({"OTIO_SCHEMA": "Timeline.1", "tracks": )" + stack(tracks) + more + "}";
}

}  // namespace otio

namespace {

std::shared_ptr<Timeline const> checked(Outcome const& outcome, std::shared_ptr<Timeline const> timeline) {
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return timeline ? timeline : std::make_shared<Timeline const>(Timeline::Content());
}

}  // namespace

std::shared_ptr<Timeline const> readText(std::string const& text, OtioOptions const& options) {
    std::shared_ptr<Timeline const> timeline;
    const Outcome outcome = readOtioText(text, "test.otio", "/media", options, timeline);
    return checked(outcome, timeline);
}

std::shared_ptr<Timeline const> readFile(std::string const& path, OtioOptions const& options) {
    std::shared_ptr<Timeline const> timeline;
    const Outcome outcome = readOtio(path, options, timeline);
    return checked(outcome, timeline);
}

std::string failureOf(std::string const& text, OtioOptions const& options) {
    std::shared_ptr<Timeline const> timeline;
    const Outcome outcome = readOtioText(text, "test.otio", "/media", options, timeline);
    EXPECT_TRUE(outcome.failed());
    EXPECT_EQ(timeline, nullptr);
    EXPECT_EQ(outcome.message().find('\n'), std::string::npos);
    return outcome.message();
}

FrameNode picture(size_t media, ExactTime const& time) {
    FrameNode node;
    node.kind = FrameNode::Kind::media;
    node.source = media;
    node.time = time;
    return node;
}

FrameNode stackOf(std::vector<FrameNode> children) {
    FrameNode node;
    node.kind = FrameNode::Kind::stack;
    node.children = std::move(children);
    return node;
}

TestFolder::TestFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "qrt-test-XXXXXX").string();
    if (!mkdtemp(path.data())) throw std::runtime_error("no folder for test files");
    m_path = path;
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TestFolder::write(std::string const& name, std::string const& bytes) const {
    const std::filesystem::path path = std::filesystem::path(m_path) / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path.string();
}

std::string TestFolder::writeZip(std::string const& name,
                                 std::vector<std::pair<std::string, std::string>> const& entries) const {
    const std::string path = m_path + "/" + name;
    // Names are flagged as UTF-8, as other programs do; libarchive does that only in such a locale.
    const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t());
    const locale_t before = uselocale(utf8);
    archive* const zip = archive_write_new();
    archive_write_set_format_zip(zip);
    EXPECT_EQ(archive_write_open_filename(zip, path.c_str()), ARCHIVE_OK);
    for (auto const& [entryName, bytes] : entries) {
        archive_entry* const entry = archive_entry_new();
        archive_entry_set_pathname(entry, entryName.c_str());
        const bool isFolder = entryName.ends_with('/');
        archive_entry_set_filetype(entry, isFolder ? AE_IFDIR : AE_IFREG);
        archive_entry_set_perm(entry, isFolder ? 0755 : 0644);
        archive_entry_set_size(entry, static_cast<la_int64_t>(bytes.size()));
        EXPECT_EQ(archive_write_header(zip, entry), ARCHIVE_OK);
        EXPECT_EQ(archive_write_data(zip, bytes.data(), bytes.size()), static_cast<la_ssize_t>(bytes.size()));
        archive_entry_free(entry);
    }
    archive_write_free(zip);
    uselocale(before);
    freelocale(utf8);
    return path;
}

}  // namespace qrtplay
