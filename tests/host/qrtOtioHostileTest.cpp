#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "host/qrtOtioTools.h"
#include "timeline/qrtOtioBundle.h"
#include "timeline/qrtOtioJson.h"
#include "timeline/qrtOtioReader.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

const std::string hostileFolder = QRT_OTIO_FOLDER "/hostile/";

std::string failureOfFile(std::string const& path) {
    std::shared_ptr<Timeline const> timeline;
    const Outcome outcome = readOtio(path, {}, timeline);
    EXPECT_TRUE(outcome.failed()) << path;
    EXPECT_EQ(timeline, nullptr);
    EXPECT_EQ(outcome.message().find_first_of("\n\r\x1b"), std::string::npos) << "one line for people";
    return outcome.message();
}

struct HostileCase {
    const char* file;     // without ending
    const char* message;  // behind the file's name and ": "
};
class HostileOtio : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileOtio, endsInOneLineThatNamesTheObject) {
    const std::string path = hostileFolder + GetParam().file + ".otio";
    EXPECT_EQ(failureOfFile(path), path + ": " + GetParam().message);
}
INSTANTIATE_TEST_SUITE_P(
    Files, HostileOtio,
    ::testing::Values(
        HostileCase{"active_key",
                    "tracks/children[0]/children[1] \"shot_040\": active_media_reference_key 'proxy' is none of "
                    "media_references"},
        HostileCase{"child_null", "tracks/children[0]/children[1] \"V1\": is no object"},
        HostileCase{"child_number", "tracks/children[0]/children[1] \"V1\": is no object"},
        HostileCase{"child_without_schema", "tracks/children[0]/children[1] \"shot_040\": OTIO_SCHEMA is missing"},
        HostileCase{"children_text", "tracks/children[0] \"V1\": children is no list"},
        HostileCase{"control_characters",
                    "tracks/children[0]/children[1]/source_range \"shot?040?[31m\": duration is negative"},
        HostileCase{"deep_json", "is nested more than 1000 deep (line 1)"},
        HostileCase{"deep_metadata", "is nested more than 1000 deep (line 1)"},
        HostileCase{"duplicate_member", "tracks/children[0]/children[0] \"V1\": name is there twice"},
        HostileCase{"empty", "is no JSON: line 1: The document is empty."},
        HostileCase{"empty_collection", "holds no timeline"},
        HostileCase{"enabled_text", "tracks/children[0]/children[1] \"shot_040\": enabled is neither true nor false"},
        HostileCase{"endless", "tracks/children[0]/children[1] \"shot_040\": ends after more than 30000 years"},
        HostileCase{"list", "holds no object"},
        HostileCase{"marker_without_range",
                    "tracks/children[0]/children[1]/markers[0] \"here\": marked_range is missing"},
        HostileCase{"name_number", "tracks/children[0]/children[1] \"V1\": name is no text"},
        HostileCase{"negative_duration",
                    "tracks/children[0]/children[1]/source_range \"shot_040\": duration is negative"},
        HostileCase{"no_schema", "is no OTIO: OTIO_SCHEMA is missing"}, HostileCase{"no_tracks", "tracks is missing"},
        HostileCase{"not_a_timeline", "is a Clip, not a timeline"},
        HostileCase{"not_json", "is no JSON: line 1: Invalid value."},
        HostileCase{"offset_negative", "tracks/children[0]/children[1] \"soft\": in_offset is negative"},
        HostileCase{"padding_huge",
                    "tracks/children[0]/children[1]/media_references/DEFAULT_MEDIA \"shot_040\": frame_zero_padding is "
                    "not between 0 and 20"},
        HostileCase{"range_of_wrong_schema",
                    "tracks/children[0]/children[1]/source_range \"shot_040\": is a RationalTime, not a TimeRange"},
        HostileCase{"range_text", "tracks/children[0]/children[1] \"shot_040\": source_range is no object"},
        HostileCase{"range_without_duration",
                    "tracks/children[0]/children[1]/source_range \"shot_040\": duration is missing"},
        HostileCase{"rate_huge",
                    "tracks/children[0]/children[1]/source_range/start_time \"shot_040\": rate is not between 0.01 and "
                    "1000000"},
        HostileCase{"rate_infinite",
                    "tracks/children[0]/children[1]/source_range/start_time \"shot_040\": rate is no finite number"},
        HostileCase{"rate_negative",
                    "tracks/children[0]/children[1]/source_range/start_time \"shot_040\": rate is not between 0.01 and "
                    "1000000"},
        HostileCase{"rate_zero",
                    "tracks/children[0]/children[1]/source_range/start_time \"shot_040\": rate is not between 0.01 and "
                    "1000000"},
        HostileCase{"sequence_without_rate",
                    "tracks/children[0]/children[1]/media_references/DEFAULT_MEDIA \"shot_040\": rate is missing"},
        HostileCase{"speed_huge",
                    "tracks/children[0]/children[1]/effects[0] \"shot_040\": time_scalar is beyond a million"},
        HostileCase{"speed_text", "tracks/children[0]/children[1]/effects[0] \"shot_040\": time_scalar is no number"},
        HostileCase{"step_fraction",
                    "tracks/children[0]/children[1]/media_references/DEFAULT_MEDIA \"shot_040\": frame_step is no "
                    "whole number"},
        HostileCase{"step_zero",
                    "tracks/children[0]/children[1]/media_references/DEFAULT_MEDIA \"shot_040\": frame_step is not "
                    "between 1 and 100000"},
        HostileCase{"tracks_clip", "tracks \"x\": is a Clip, not a Stack"},
        HostileCase{"tracks_list", "tracks is no object"},
        HostileCase{"truncated", "is no JSON: line 35: Invalid value."},
        HostileCase{
            "url_missing",
            "tracks/children[0]/children[1]/media_references/DEFAULT_MEDIA \"shot_040\": target_url is missing"},
        HostileCase{
            "url_number",
            "tracks/children[0]/children[1]/media_references/DEFAULT_MEDIA \"shot_040\": target_url is no text"},
        HostileCase{
            "value_huge",
            "tracks/children[0]/children[1]/source_range/duration \"shot_040\": value is beyond a million millions"},
        HostileCase{"value_nan",
                    "tracks/children[0]/children[1]/source_range/duration \"shot_040\": value is no finite number"},
        HostileCase{"value_text",
                    "tracks/children[0]/children[1]/source_range/duration \"shot_040\": value is no number"},
        HostileCase{"value_too_big", "is no JSON: line 1: Number too big to be stored in double."}),
    [](const auto& caseInfo) { return caseInfo.param.file; });

TEST(HostileOtioFile, mayNotNestObjectsWithoutEnd) {
    const std::string message = failureOfFile(hostileFolder + "deep_stacks.otio");
    EXPECT_TRUE(message.ends_with("/children[0]/children[0] \"t1\": is nested more than 64 deep")) << message;
}

TEST(OtioCircle, namesBothEnds) {
    const std::string root = std::filesystem::canonical(hostileFolder).string() + "/";
    EXPECT_EQ(failureOfFile(hostileFolder + "itself.otio"),
              hostileFolder + "itself.otio: tracks/children[0]/children[0] \"mirror\": refers to itself: '" + root +
                  "itself.otio' > '" + root + "itself.otio'");
    EXPECT_EQ(failureOfFile(hostileFolder + "circle_a.otio"),
              hostileFolder + "circle_b.otio: tracks/children[0]/children[0] \"to_a\": refers to itself: '" + root +
                  "circle_a.otio' > '" + root + "circle_b.otio' > '" + root + "circle_a.otio'");
}

TEST(OtioCircle, isSeenThroughLinks) {
    const TestFolder files;
    const std::string path = files.write(
        "cut.otio", otio::timeline({otio::track({otio::clipOf(otio::file("again.otio"), otio::range(0, 1, 24))})}));
    std::filesystem::create_symlink(path, files.path() + "/again.otio");
    EXPECT_THAT(failureOfFile(path), HasSubstr("refers to itself"));
}

TEST(HostileOtioFile, thatOtherFilesBringInIsNamed) {
    EXPECT_EQ(failureOfFile(hostileFolder + "broken_inside.otio"),
              hostileFolder +
                  "negative_duration.otio: tracks/children[0]/children[1]/source_range \"shot_040\": duration is "
                  "negative");
}

TEST(HostileOtioFile, mayNotReferToFilesWithoutEnd) {
    const TestFolder files;
    for (int i = 0; i < 9; ++i) {
        const std::string next = std::to_string(i + 1) + ".otio";
        files.write(std::to_string(i) + ".otio",
                    otio::timeline({otio::track({otio::clipOf(otio::file(next), otio::range(0, 1, 24))})}));
    }
    files.write("9.otio", otio::timeline({}));
    EXPECT_EQ(failureOfFile(files.path() + "/0.otio"),
              files.path() + "/7.otio: tracks/children[0]/children[0]: files refer to each other more than 8 deep");
    EXPECT_EQ(readFile(files.path() + "/2.otio")->frameCount(), 1);
}

TEST(HostileOtioFile, hasToBeAFile) {
    const TestFolder files;
    EXPECT_EQ(failureOfFile(files.path() + "/none.otio"), files.path() + "/none.otio: there is no such file");
    EXPECT_EQ(failureOfFile(files.path()), files.path() + "/content.otio: there is no such file");
    EXPECT_EQ(failureOfFile("/dev/zero"), "/dev/zero: is no file");
}

TEST(HostileOtioFile, mayNotBeLargerThanTheLimit) {
    const TestFolder files;
    const std::string path = files.write("cut.otio", "{}");
    std::filesystem::resize_file(path, (uintmax_t{256} << 20) + 1);  // a hole: takes no room
    EXPECT_EQ(failureOfFile(path), path + ": is too large: a timeline and what it refers to have at most 256 MiB");
}

std::string failureOfBundle(TestFolder const& files, std::vector<std::pair<std::string, std::string>> const& entries) {
    const std::string path = files.writeZip("cut.otioz", entries);
    const std::string message = failureOfFile(path);
    EXPECT_TRUE(message.starts_with(path + ": ")) << message;
    return message.substr(path.size() + 2);
}

TEST(HostileBundle, mayNotLeadOutOfItsFolder) {
    const TestFolder files;
    EXPECT_EQ(failureOfBundle(files, {{"content.otio", "{}"}, {"../x.mov", "x"}}),
              "entry '../x.mov' leads out of the bundle");
    EXPECT_EQ(failureOfBundle(files, {{"media/../../x.mov", "x"}}),
              "entry 'media/../../x.mov' leads out of the bundle");
    EXPECT_EQ(failureOfBundle(files, {{"/tmp/x.mov", "x"}}), "entry '/tmp/x.mov' leads out of the bundle");
}

TEST(HostileBundle, mayNotHoldAPathTwice) {
    EXPECT_EQ(failureOfBundle(TestFolder(), {{"content.otio", "{}"}, {"content.otio", "[]"}}),
              "entry 'content.otio' is there twice");
}

TEST(HostileBundle, mayNotUnpackToMuchMoreThanItsSize) {
    const std::string zeros((size_t{257} << 20) + (20 << 20), '\0');
    EXPECT_EQ(failureOfBundle(TestFolder(), {{"content.otio", "{}"}, {"media/bomb.mov", zeros}}),
              "entry 'media/bomb.mov' is too large: no bundle unpacks to so much more than its size");
}

TEST(HostileBundle, mayNotNestFoldersWithoutEnd) {
    const TestFolder files;
    std::string deepest;
    for (int i = 0; i < 63; ++i)
        deepest += "a/";
    EXPECT_EQ(failureOfBundle(files, {{"content.otio", "{}"}, {"a/" + deepest + "x", "x"}}),
              "entry 'a/" + deepest + "x' has a path of more than 64 parts");
    const std::string bundle = files.writeZip("cut.otioz", {{deepest + "x", "x"}});
    EXPECT_EQ(failureOfFile(bundle), bundle + "/content.otio: there is no such file") << "this depth is unpacked";
}

TEST(HostileBundle, mayNotHoldMoreFilesAndFoldersThanTheLimit) {
    const TestFolder files;
    const std::string bundle = files.writeZip("cut.otioz", {{"content.otio", "{}"}, {"a/b/x", "x"}, {"a/c/x", "x"}});
    const auto unpack = [&](size_t mostEntries) {
        const TestFolder folder;
        return unpackOtioBundle(bundle, folder.path(), mostEntries).message();
    };
    EXPECT_EQ(unpack(6), "") << "three files and three folders";
    EXPECT_EQ(unpack(5), bundle + ": has more than 5 files and folders");
    EXPECT_EQ(unpack(2), bundle + ": has more than 2 files and folders");
}

TEST(HostileBundle, mayNameItsFoldersOnceMore) {
    const TestFolder files;
    const std::string bundle = files.writeZip("cut.otioz", {{"a/", ""}, {"a/b/x", "x"}, {"a/b/", ""}, {"a/", ""}});
    const auto unpack = [&](size_t mostEntries) {
        const TestFolder folder;
        return unpackOtioBundle(bundle, folder.path(), mostEntries).message();
    };
    EXPECT_EQ(unpack(4), "") << "two folders and a file, in four entries";
    EXPECT_EQ(unpack(3), bundle + ": has more than 3 entries");
    EXPECT_EQ(unpack(2), bundle + ": has more than 2 files and folders");
}

TEST(HostileText, mayNotHoldMoreValuesThanTheLimit) {
    rapidjson::Document document;
    EXPECT_EQ(readOtioJson("[1, [2, {\"a\": 3}]]", document, 6).message(), "");
    EXPECT_EQ(readOtioJson("[1,\n[2, {\"a\": 3}]]", document, 5).message(), "holds more than 5 values (line 2)");
}

TEST(HostileBundle, hasToBeAZipArchiveWithATimeline) {
    const TestFolder files;
    const std::string path = files.write("cut.otioz", "This is no archive.");
    EXPECT_THAT(failureOfFile(path), HasSubstr("cut.otioz: "));
    const std::string empty = files.writeZip("empty.otioz", {{"media/a.mov", "x"}});
    EXPECT_EQ(failureOfFile(empty), empty + "/content.otio: there is no such file");
    EXPECT_THAT(failureOfBundle(files, {{"content.otio", "{"}}), HasSubstr("is no JSON: line 1: "));
}

TEST(HostileBundle, leavesNothingBehind) {
    const TestFolder files;
    const auto countFolders = [&] {
        const std::filesystem::directory_iterator all(files.path());
        return std::count_if(begin(all), end(all), [](auto const& entry) { return entry.is_directory(); });
    };
    const char* const before = std::getenv("TMPDIR");
    const std::string kept = before ? before : "";
    setenv("TMPDIR", files.path().c_str(), 1);
    failureOfBundle(files, {{"content.otio", "{}"}, {"../x.mov", "x"}});
    before ? setenv("TMPDIR", kept.c_str(), 1) : unsetenv("TMPDIR");
    EXPECT_EQ(countFolders(), 0);
}

TEST(HostileText, isReadWithoutHarmWhereverItEnds) {
    const std::string whole = otio::timeline({otio::track(
        {otio::clip("a", otio::range(0, 10, 24)), otio::dissolve(2, 2, 24), otio::clip("b", otio::range(0, 5, 24))})});
    for (size_t length = 0; length < whole.size(); ++length) {
        const std::string message = failureOf(whole.substr(0, length));
        ASSERT_TRUE(message.starts_with("test.otio: is no JSON: line 1: ")) << message;
    }
}

TEST(HostileText, mayNotHaveMoreItemsThanTheLimit) {
    std::string many;
    constexpr int count = 2'000'001;
    many.reserve(size_t{count} * 32);
    for (int i = 0; i < count; ++i)
        many += i == 0 ? R"({"OTIO_SCHEMA":"Gap.1"})" : R"(,{"OTIO_SCHEMA":"Gap.1"})";
    EXPECT_EQ(failureOf(otio::timeline({otio::track({many})})),
              "test.otio: tracks/children[0]/children[1999998]: is one item too many: a timeline has at most 2000000");
}

}  // namespace
}  // namespace qrtplay
