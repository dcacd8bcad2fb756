#include "info/qrtInfoText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "timeline/qrtOtioReader.h"

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

constexpr char hostileTimeline[] = R"({"OTIO_SCHEMA": "Timeline.1", "name": "na\u001b]0;title\u0007me\nfake line",
"tracks": {"OTIO_SCHEMA": "Stack.1", "children": [{"OTIO_SCHEMA": "Track.1", "kind": "Video", "name": "V\u001b[1m",
"markers": [{"OTIO_SCHEMA": "Marker.2", "name": "m\u009b2J", "color": "RED\n", "marked_range":
  {"OTIO_SCHEMA": "TimeRange.1", "start_time": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 0},
   "duration": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 1}}}],
"children": [{"OTIO_SCHEMA": "Clip.1", "name": "c\u001b[2J", "source_range":
  {"OTIO_SCHEMA": "TimeRange.1", "start_time": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 0},
   "duration": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 10}},
  "media_reference": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "a\u001bc\n.mov"}}]}]}})";

void expectPlainLines(std::string const& text) {
    for (const char sign : text)
        EXPECT_TRUE(sign == '\n' || (sign >= ' ' && sign < '\x7f')) << static_cast<int>(sign);
}

TEST(InfoText, ofAMediaKeepsToItsLinesWhateverTheFileHolds) {
    MediaInfo info;
    info.container = "a\x1b[2J";
    info.timecode = "01:00:00:00\nsound         none";
    info.video.emplace();
    info.video->codecName =
        "\x1b"
        "c";
    info.sounds.push_back({"so\nund", 2, 48000, "ste\x9breo"});
    const std::string plain = mediaTable("plain.mov", info);
    const std::string table = mediaTable("a\nduration      1.mov", info);
    expectPlainLines(table);
    EXPECT_THAT(table, HasSubstr("timecode      01:00:00:00?sound         none\n"));
    EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 11);
    EXPECT_EQ(std::count(plain.begin(), plain.end(), '\n'), 11);
}

TEST(InfoText, ofATimelineKeepsToItsLinesWhateverTheFileHolds) {
    OtioOptions options;
    options.probe = [](MediaReference const&, MediaLength&) { return Outcome(); };
    std::shared_ptr<Timeline const> timeline;
    const Outcome outcome = readOtioText(hostileTimeline, "cut.otio", "/media", options, timeline);
    ASSERT_TRUE(outcome.success()) << outcome.message();
    const std::string table = timelineTable("cu\x1bt.otio", *timeline, {"no\nsuch\x1b[2J file"});
    expectPlainLines(table);
    EXPECT_THAT(table, HasSubstr("timeline      cu?t.otio\nname          na?]0;title?me?fake line\nrate"));
    EXPECT_THAT(table, HasSubstr("\nvideo track V?[1m\n"));
    EXPECT_THAT(table, HasSubstr("  clip c?[2J  <- /media/a?c?.mov\n"));
    EXPECT_THAT(table, HasSubstr("  m?2J (RED?)\n"));
    EXPECT_THAT(table, HasSubstr("  /media/a?c?.mov  PROBLEM: no?such?[2J file\n"));
}

}  // namespace
}  // namespace qrtplay
