#include "timeline/qrtOtioReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "host/qrtOtioTools.h"
#include "timeline/qrtOtioTime.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string folder = QRT_OTIO_FOLDER;

std::shared_ptr<Timeline const> readCommitted(std::string const& name, OtioOptions const& options = {}) {
    return readFile(folder + "/" + name, options);
}

/// The paths of a timeline's media, relative to the folder of the test files.
std::vector<std::string> mediaTexts(Timeline const& timeline) {
    std::vector<std::string> texts;
    for (MediaReference const& media : timeline.media()) {
        std::string text = media.text();
        if (text.starts_with(folder + "/")) text.erase(0, folder.size() + 1);
        texts.push_back(std::move(text));
    }
    return texts;
}

std::vector<std::string> itemNames(TrackView const& track) {
    std::vector<std::string> names;
    for (TrackItem const& item : track.items)
        names.push_back(item.name);
    return names;
}

TEST(OtioReader, readsBothVersionsOfClips) {
    const auto clips = readCommitted("clips.otio");
    EXPECT_EQ(clips->name(), "clips");
    EXPECT_THAT(clips->warnings(), IsEmpty());
    EXPECT_THAT(mediaTexts(*clips), ElementsAre("media/a.mov", "media/full.mov", "not_found_yet", "without_any"));
    EXPECT_EQ(clips->frameCount(), 10 + 10 + 240 + 5 + 5);
    EXPECT_EQ(clips->pictureAt(0, film), picture(0, ExactTime(5, 24)));
    EXPECT_EQ(clips->pictureAt(10, film), picture(1, ExactTime(2, 24))) << "the active reference counts";
    EXPECT_EQ(clips->pictureAt(20, film), picture(0, ExactTime())) << "the same file is one media";
    EXPECT_EQ(clips->media()[2].kind, MediaReference::Kind::missing);
}

TEST(OtioReader, resolvesFileAddressesAndLeavesOthersAlone) {
    const auto addresses = readCommitted("addresses.otio");
    const std::string above = folder + "/../f.mov";
    EXPECT_THAT(mediaTexts(*addresses),
                ElementsAre("/media/with space.mov", "/media/b.mov", "/media/c.mov", "/media/d%20.mov", "e.mov",
                            "../f.mov", "file://server/g.mov", "http://example.com/h.mov", "concat:i.mov|j.mov",
                            "s3://bucket/k.mov", "file:///zero%00byte.mov"));
    for (size_t i = 0; i < addresses->media().size(); ++i)
        EXPECT_EQ(addresses->media()[i].kind == MediaReference::Kind::missing, i >= 6) << i;
    ASSERT_EQ(addresses->warnings().size(), 5U);
    EXPECT_EQ(addresses->warnings()[1], folder +
                                            "/addresses.otio: tracks/children[0]/children[7]/media_references/"
                                            "DEFAULT_MEDIA \"c\": 'http://example.com/h.mov' is no file: 'http' is "
                                            "not opened");
}

TEST(OtioReader, takesAPercentSignInAPathForItselfUnlessOnlyTheDecodedFileIsThere) {
    const TestFolder files;
    files.write("a b.mov", "");
    files.write("c%20d.mov", "");
    const auto read =
        readFile(files.write("cut.otio", otio::timeline({otio::track({otio::clip("a%20b", otio::range(0, 1, 24)),
                                                                      otio::clip("c%20d", otio::range(0, 1, 24))})})));
    EXPECT_EQ(read->media()[0].path, files.path() + "/a b.mov");
    EXPECT_EQ(read->media()[1].path, files.path() + "/c%20d.mov");
}

TEST(OtioReader, showsGapsAndDisabledClipsAsNothing) {
    const auto gaps = readCommitted("gaps.otio");
    EXPECT_EQ(gaps->frameCount(), 10 + 10 + 5 + 0 + 10 + 10);
    EXPECT_EQ(gaps->media().size(), 2U) << "a disabled clip's media is not asked for";
    for (int64 frame = 10; frame < 35; ++frame)
        ASSERT_EQ(gaps->pictureAt(frame, film), FrameNode()) << frame;
    EXPECT_EQ(gaps->pictureAt(35, film), picture(1, ExactTime()));
}

TEST(OtioReader, appliesTimeEffectsAndNamesTheOthersOnce) {
    const auto effects = readCommitted("effects.otio");
    EXPECT_EQ(effects->frameCount(), 60) << "effects leave lengths alone";
    EXPECT_EQ(effects->pictureAt(3, film), picture(0, ExactTime(16, 24)));
    EXPECT_EQ(effects->pictureAt(19, film), picture(0, ExactTime(10, 24))) << "factors are multiplied";
    EXPECT_EQ(effects->pictureAt(10, film), picture(0, ExactTime(29, 48)));
    EXPECT_EQ(effects->pictureAt(29, film), picture(0, ExactTime(10, 24)));
    EXPECT_EQ(effects->pictureAt(33, film), picture(0, ExactTime(13, 24)));
    EXPECT_EQ(effects->pictureAt(53, film), picture(0, ExactTime(13, 24))) << "a disabled effect has none";
    ASSERT_EQ(effects->warnings().size(), 2U);
    EXPECT_THAT(effects->warnings()[0], HasSubstr("children[3]/effects[0] \"soft\": effect 'Blur' is not known"));
    EXPECT_THAT(effects->warnings()[1],
                HasSubstr("children[4]/effects[1] \"blurred_again\": effect 'Ramp' is not known"));
}

TEST(OtioReader, readsDissolves) {
    const auto dissolves = readCommitted("dissolves.otio");
    EXPECT_EQ(dissolves->frameCount(), 120);
    EXPECT_EQ(dissolves->pictureAt(0, film).kind, FrameNode::Kind::dissolve);
    EXPECT_EQ(dissolves->pictureAt(42, film).kind, FrameNode::Kind::dissolve);
    EXPECT_EQ(dissolves->pictureAt(96, film).kind, FrameNode::Kind::media);
    EXPECT_EQ(dissolves->pictureAt(112, film).kind, FrameNode::Kind::dissolve);
    EXPECT_THAT(dissolves->warnings(), ElementsAre(HasSubstr("transition 'Wipe' is not known")));
}

TEST(OtioReader, readsGeneratorsWithTheirParameters) {
    const auto generators = readCommitted("generators.otio");
    std::vector<Generator> const& all = generators->generators();
    ASSERT_EQ(all.size(), 6U);
    EXPECT_EQ(all[0].kind, Generator::Kind::solid_colour);
    EXPECT_EQ(all[0].id, "generator-1");
    EXPECT_EQ(all[0].name, "red");
    EXPECT_THAT(all[0].colour, ElementsAre(1, 0, 0, 1));
    EXPECT_THAT(all[1].colour, ElementsAre(0, 128 / 255.0, 1, 64 / 255.0));
    EXPECT_EQ(all[2].kind, Generator::Kind::smpte_bars);
    EXPECT_EQ(all[3].kind, Generator::Kind::counting_leader);
    EXPECT_EQ(all[3].frameCount, 192);
    EXPECT_EQ(all[4].kind, Generator::Kind::title);
    EXPECT_EQ(all[4].text, "The End");
    EXPECT_EQ(all[4].rate, Rational(25, 1));
    EXPECT_EQ(all[4].frameCount, 36) << "up to the end of what is shown";
    EXPECT_THAT(all[5].colour, ElementsAre(0, 0, 0, 1));
    EXPECT_EQ(all[5].id, "generator-6");
    EXPECT_THAT(generators->warnings(), ElementsAre(HasSubstr("generator 'PerlinNoise' is not known: a gap"),
                                                    HasSubstr("\"odd_colour\": the colour is neither")));
    FrameNode bars;
    bars.kind = FrameNode::Kind::generator;
    bars.source = 2;
    bars.time = ExactTime(1, 24);
    EXPECT_EQ(generators->pictureAt(49, film), bars);
    EXPECT_EQ(generators->pictureAt(288, film), FrameNode()) << "the unknown one";
}

TEST(OtioReader, countsAGeneratorsFramesAtTheTimelinesRateWhenItHasNone) {
    const std::string leader = R"({"OTIO_SCHEMA": "GeneratorReference.1", "generator_kind": "counting_leader"})";
    const auto read = readText(otio::timeline(
        {otio::track({otio::clipOf(leader, otio::range(0, 48000, 48000)), otio::clip("a", otio::range(0, 25, 25))})}));
    EXPECT_EQ(read->generators()[0].rate, Rational(25, 1));
    EXPECT_EQ(read->generators()[0].frameCount, 25);
}

TEST(OtioReader, readsImageSequences) {
    const auto sequences = readCommitted("image_sequences.otio");
    EXPECT_THAT(mediaTexts(*sequences),
                ElementsAre("/plates/plate.####.exr", "/plates/plate.####.exr", "frames/sub/x_#.png"));
    ImageSequenceName const& plate = sequences->media()[0].images;
    EXPECT_EQ(plate.pathOf(0), "/plates/plate.0101.exr");
    EXPECT_EQ(plate.lastNumber, 200);
    EXPECT_EQ(plate.rate, film);
    ImageSequenceName const& stepped = sequences->media()[1].images;
    EXPECT_EQ(stepped.step, 2);
    EXPECT_EQ(stepped.rate.getValue(), 12) << "each picture stays for two frames";
    EXPECT_EQ(stepped.lastNumber, 111);
    EXPECT_EQ(stepped.pathOf(5), "/plates/plate.0111.exr");
    ImageSequenceName const& relative = sequences->media()[2].images;
    EXPECT_EQ(relative.rate, Rational(24000, 1001));
    EXPECT_EQ(relative.lastNumber, 7) << "as many as are wanted, when nobody says how many there are";
    EXPECT_EQ(sequences->pictureAt(0, film), picture(0, ExactTime(10, 24)));
}

TEST(OtioReader, looksForTheImagesOfASequenceOfUnknownLength) {
    const TestFolder files;
    for (const char* const number : {"0010", "0011", "0014"})
        files.write("x." + std::string(number) + ".png", "");
    const std::string images =
        R"({"OTIO_SCHEMA": "ImageSequenceReference.1", "name_prefix": "x.", "name_suffix": ".png", "start_frame": 10,
            "frame_zero_padding": 4, "rate": 25})";
    const auto read = readFile(files.write("cut.otio", otio::timeline({otio::track({otio::clipOf(images, "null")})})));
    EXPECT_EQ(read->rate(), Rational(25, 1));
    EXPECT_EQ(read->frameCount(), 5);
    EXPECT_EQ(read->media()[0].images.lastNumber, 14);
}

TEST(OtioReader, putsMarkersOntoTheTimelinesTime) {
    const auto markers = readCommitted("markers.otio");
    std::vector<std::string> told;
    for (Marker const& marker : markers->markers())
        told.push_back(marker.name + " " + std::to_string(marker.start.nearestFrame(Rational(48, 1))) + " " +
                       std::to_string(marker.duration.nearestFrame(Rational(48, 1))) + " " + marker.colour);
    // In frames of 48: the clip begins at 20 and is twice as fast, so that its frame 105 is on at 20 + 5.
    EXPECT_THAT(told, ElementsAre("on clip 25 2 GREEN", "inside 66 2 ", "on track 10 0 BLUE", "on timeline 2 6 RED"));
    EXPECT_EQ(markers->clockStart(), ExactTime(3600, 1));
}

TEST(OtioReader, describesTheOutermostTracks) {
    const auto tracks = readCommitted("tracks.otio");
    ASSERT_EQ(tracks->tracks().size(), 3U);
    EXPECT_EQ(tracks->tracks()[0].name, "V1");
    EXPECT_EQ(tracks->tracks()[2].name, "A1");
    EXPECT_EQ(tracks->tracks()[2].kind, TrackView::Kind::audio);
    EXPECT_THAT(itemNames(tracks->tracks()[0]), ElementsAre("a", "soft", "b"));
    TrackItem const& soft = tracks->tracks()[0].items[1];
    EXPECT_EQ(soft.kind, TrackItem::Kind::transition);
    EXPECT_EQ(soft.start, ExactTime(18, 24));
    EXPECT_EQ(soft.duration, ExactTime(12, 24));
    TrackItem const& second = tracks->tracks()[0].items[2];
    EXPECT_EQ(second.start, ExactTime(1, 1));
    ASSERT_TRUE(second.media.has_value());
    EXPECT_EQ(tracks->media()[*second.media].name, "b.mov");
    EXPECT_THAT(itemNames(tracks->tracks()[1]), ElementsAre("loose"));
    EXPECT_THAT(tracks->warnings(), ElementsAre(HasSubstr("tracks of kind 'Subtitle' are left out")));
    EXPECT_EQ(tracks->pictureAt(0, film).children.size(), 2U);
    EXPECT_EQ(tracks->soundAt(0, 48000, 48000).size(), 1U);
}

TEST(OtioReader, namesUnknownSchemasAndShowsGapsInTheirPlace) {
    const auto unknown = readCommitted("unknown.otio");
    EXPECT_EQ(unknown->frameCount(), 10 + 7 + 0 + 3 + 5 + 10);
    for (int64 frame = 10; frame < 25; ++frame)
        ASSERT_EQ(unknown->pictureAt(frame, film), FrameNode()) << frame;
    EXPECT_EQ(unknown->pictureAt(25, film), picture(1, ExactTime()));
    EXPECT_THAT(unknown->warnings(),
                ElementsAre(HasSubstr("children[1] \"h\": 'Hologram.1' is not known: a gap takes its place"),
                            HasSubstr("\"future\": 'Clip.9' is not known"),
                            HasSubstr("DEFAULT_MEDIA \"x\": 'HologramReference.3' is not known")));
}

TEST(OtioReader, readsTheFirstTimelineOfACollection) {
    const auto collection = readCommitted("collection.otio");
    EXPECT_EQ(collection->name(), "first");
    EXPECT_EQ(collection->frameCount(), 10);
    EXPECT_THAT(collection->warnings(), ElementsAre(HasSubstr("collection.otio: children[0] \"stray\": is left out"),
                                                    HasSubstr("collection.otio: children[2] \"second\": is left out")));
}

TEST(OtioReader, takesNumbersAsPythonWritesThemAndFractionsOfFrames) {
    const auto numbers = readCommitted("python_numbers.otio");
    EXPECT_EQ(numbers->duration(), ExactTime(41, 96));
    EXPECT_EQ(numbers->pictureAt(1, film), picture(0, ExactTime(3, 48)));
}

TEST(OtioReader, bringsInTimelinesThatClipsReferTo) {
    const auto nesting = readCommitted("nesting.otio");
    EXPECT_THAT(mediaTexts(*nesting), ElementsAre("a.mov", "b.mov", "s.wav", "nowhere.otio"));
    for (int64 frame = 0; frame < 13; ++frame) {
        const int64 at = frame - 5 + 4;
        const FrameNode expected = frame < 5 ? FrameNode()
                                   : at < 10 ? picture(0, ExactTime(at, 24))
                                             : picture(1, ExactTime(at - 10, 24));
        ASSERT_EQ(nesting->pictureAt(frame, film), expected) << frame;
    }
    const auto spans = nesting->soundAt(0, 96000, 48000);
    ASSERT_EQ(spans.size(), 3U);
    EXPECT_EQ(spans[0].media, 2U);
    EXPECT_EQ(spans[0].time, ExactTime(4, 24));
    EXPECT_EQ(spans[0].sampleCount, 16000);
    EXPECT_EQ(spans[1].firstSample, 16000);
    EXPECT_EQ(spans[1].sampleCount, 40000);
    EXPECT_EQ(spans[2].media, 3U);
    EXPECT_THAT(nesting->warnings(), ElementsAre(HasSubstr("nowhere.otio' is not there")));
}

TEST(OtioReader, asksForLengthsThatTheFileDoesNotTell) {
    std::vector<std::string> asked;
    OtioOptions options;
    options.probe = [&](MediaReference const& media, MediaLength& length) {
        asked.push_back(media.name);
        if (media.name != "known.mov") return Outcome::failure("no such file");
        length = {ExactTime(50, 25), Rational(25, 1)};
        return Outcome();
    };
    const auto unmeasured = readCommitted("unmeasured.otio", options);
    EXPECT_THAT(asked, ElementsAre("known.mov", "unknown.mov"));
    EXPECT_EQ(unmeasured->rate(), Rational(25, 1));
    EXPECT_EQ(unmeasured->duration(), ExactTime(2 + 5 + 2 + 5, 1));
    ASSERT_EQ(unmeasured->media().size(), 3U);
    EXPECT_EQ(unmeasured->media()[1].kind, MediaReference::Kind::missing);
    EXPECT_EQ(unmeasured->media()[1].text(), folder + "/unknown.mov");
    EXPECT_THAT(unmeasured->warnings(),
                ElementsAre(HasSubstr("\"unknown\": is given 5 seconds for want of a length: no such file"),
                            HasSubstr("\"lost\": is given 5 seconds for want of a length: it is not known")));
}

TEST(OtioReader, takesTheRateFromTheGlobalStartOrTheFirstVideoClip) {
    using namespace otio;
    EXPECT_EQ(readCommitted("mixed_rates.otio")->rate(), Rational(25, 1));
    const auto rateOf = [](std::vector<std::string> const& tracks, std::string const& more = "") {
        return readText(timeline(tracks, more))->rate();
    };
    const std::string sound = soundTrack({clip("s", range(0, 48000, 48000))});
    const std::string ntsc = track({gap(5, 50), clip("n", range(0, 30, 29.97)), clip("p", range(0, 25, 25))});
    EXPECT_EQ(rateOf({sound, ntsc}), Rational(30000, 1001));
    EXPECT_EQ(rateOf({ntsc}, R"(, "global_start_time": )" + time(0, 48000)), Rational(30000, 1001));
    EXPECT_EQ(rateOf({ntsc}, R"(, "global_start_time": )" + time(0, 60)), Rational(60, 1));
    EXPECT_EQ(rateOf({sound}), film);
    EXPECT_EQ(rateOf({soundTrack({clip("s", range(0, 30, 30))})}), film);
    EXPECT_EQ(rateOf({sound}, R"(, "global_start_time": )" + time(0, 30)), Rational(30, 1));
    EXPECT_EQ(rateOf({track({clip("t", range(0, 90000, 90000)), clip("p", range(0, 50, 50))})}), Rational(50, 1));
}

TEST(OtioReader, givesMissingClipsTheirPlaceInMediaThatAreAllowed) {
    const TestFolder files;
    files.write("in/a.mov", "");
    files.write("in/plate.1.png", "");
    files.write("out/b.mov", "");
    std::filesystem::create_symlink(files.path() + "/out/b.mov", files.path() + "/in/link.mov");
    std::filesystem::create_symlink(files.path() + "/out/b.mov", files.path() + "/in/plate.2.png");
    using namespace otio;
    const auto images = [](std::string const& prefix) {
        return R"({"OTIO_SCHEMA": "ImageSequenceReference.1", "name_prefix": ")" + prefix +
               R"(", "name_suffix": ".png", "rate": 24})";
    };
    std::vector<std::string> children;
    for (const char* const url :
         {"in/a.mov", "in/link.mov", "out/b.mov", "in/../out/b.mov", "in2/c.mov", "in/gone.mov"})
        children.push_back(clipOf(file(url), range(0, 1, 24)));
    children.push_back(clipOf(images("in/plate."), range(0, 1, 24)));
    children.push_back(clipOf(images("in/other."), range(0, 1, 24)));
    const std::string path = files.write("cut.otio", timeline({track(children)}));
    OtioOptions options;
    options.allowPaths = {"/nowhere", files.path() + "/in/"};
    const auto read = readFile(path, options);
    std::vector<bool> allowed;
    for (MediaReference const& media : read->media())
        allowed.push_back(media.kind != MediaReference::Kind::missing);
    EXPECT_THAT(allowed, ElementsAre(true, false, false, false, false, true, false, true));
    ASSERT_EQ(read->warnings().size(), 5U);
    EXPECT_THAT(read->warnings()[0], HasSubstr("/in/link.mov' lies outside of the folders that --allow-path names"));
    EXPECT_THAT(readFile(path)->warnings(), IsEmpty());
}

TEST(OtioReader, readsFoldersWithTheirMedia) {
    const TestFolder files;
    files.write("cut.otiod/content.otio",
                otio::timeline({otio::track({otio::clip("media/a", otio::range(0, 5, 24))})}));
    const auto read = readFile(files.path() + "/cut.otiod");
    EXPECT_EQ(read->media()[0].path, files.path() + "/cut.otiod/media/a.mov");
    EXPECT_EQ(read->name(), "cut");
}

TEST(OtioReader, unpacksBundlesForAsLongAsTheTimelineLives) {
    const TestFolder files;
    const std::string content = otio::timeline({otio::track({otio::clip("media/\u00fc", otio::range(0, 5, 24))})});
    const std::string bundle = files.writeZip(
        "cut.otioz", {{"content.otio", content}, {"version.txt", "1.0"}, {"media/\u00fc.mov", "moving"}});
    OtioOptions options;
    options.allowPaths = {"/nowhere"};
    auto read = readFile(bundle, options);
    ASSERT_EQ(read->media().size(), 1U);
    const std::string path = read->media()[0].path;
    EXPECT_EQ(read->media()[0].kind, MediaReference::Kind::file) << "what is in the bundle is always allowed";
    EXPECT_EQ(std::filesystem::file_size(path), 6U);
    read.reset();
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(path).parent_path().parent_path()));
}

TEST(OtioReader, keepsOnlyAsManyWarningsAsAPersonWouldRead) {
    std::vector<std::string> children;
    for (int i = 0; i < 300; ++i)
        children.push_back(otio::clipOf(otio::file("http://x/" + std::to_string(i)), otio::range(0, 1, 24)));
    const auto read = readText(otio::timeline({otio::track(children)}));
    EXPECT_EQ(read->media().size(), 300U);
    ASSERT_EQ(read->warnings().size(), 201U);
    EXPECT_EQ(read->warnings().back(), "further warnings: 100");
}

struct RateCase {
    const char* name;
    double written;
    Rational meant;
};
class OtioRate : public ::testing::TestWithParam<RateCase> {};

TEST_P(OtioRate, isWhatPeopleMeanByTheNumber) {
    EXPECT_EQ(otioRate(GetParam().written), GetParam().meant);
}
INSTANTIATE_TEST_SUITE_P(
    Numbers, OtioRate,
    ::testing::Values(RateCase{"film", 24, {24, 1}}, RateCase{"ntscFilm", 23.976, {24000, 1001}},
                      RateCase{"ntscFilmLong", 23.976023976023978, {24000, 1001}},
                      RateCase{"ntscFilmShort", 23.98, {24000, 1001}}, RateCase{"ntsc", 29.97, {30000, 1001}},
                      RateCase{"ntscDouble", 59.94, {60000, 1001}}, RateCase{"ntsc48", 47.952, {48000, 1001}},
                      RateCase{"ntsc120", 119.88, {120000, 1001}}, RateCase{"sound", 44100, {44100, 1}},
                      RateCase{"half", 12.5, {25, 2}}, RateCase{"third", 1.0 / 3, {1, 3}},
                      RateCase{"slowest", 0.01, {1, 100}}, RateCase{"fastest", 1e6, {1000000, 1}}),
    [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(OtioRates, outsideOfTheLimitsAreNone) {
    for (const double rate : {0.0, -24.0, 0.0099, 1'000'000.1})
        EXPECT_FALSE(otioRate(rate)) << rate;
}

}  // namespace
}  // namespace qrtplay
