#include "timeline/qrtTimeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "host/qrtOtioTools.h"
#include "timeline/qrtMediaTimeline.h"

namespace qrtplay {
namespace {

using namespace otio;

const Rational pal(25, 1);
const Rational ntscFilm(24000, 1001);

/// The moment in the middle between two frames cannot be told wrong by rounding.
double mixOf(int64 frame, int64 dissolveBegin, int64 length) {
    return (static_cast<double>(frame - dissolveBegin) + 0.5) / static_cast<double>(length);
}

TEST(TimelinePicture, isTheSourcesFrameByFrameAcrossCuts) {
    const auto cut =
        readText(timeline({track({clip("a", range(100, 10, 24)), gap(3, 24), clip("b", range(7, 5, 24))})}));
    EXPECT_EQ(cut->frameCount(), 18);
    for (int64 frame = -2; frame < 20; ++frame) {
        FrameNode expected;
        if (frame >= 0 && frame < 10) expected = picture(0, ExactTime(100 + frame, 24));
        if (frame >= 13 && frame < 18) expected = picture(1, ExactTime(7 + frame - 13, 24));
        ASSERT_EQ(cut->pictureAt(frame, film), expected) << frame;
    }
}

TEST(TimelinePicture, countsFromWhereTheMediaBegins) {
    const std::string media = file("tape.mov", R"(, "available_range": )" + range(86400, 500, 24));
    const auto taped = readText(timeline({track({clipOf(media, range(86410, 20, 24))})}));
    EXPECT_EQ(taped->pictureAt(3, film), picture(0, ExactTime(13, 24)));
}

TEST(TimelinePicture, staysExactForTwoHoursOfNtscFilm) {
    constexpr int64 frames = 2 * 60 * 60 * 24;
    const auto cut =
        readText(timeline({track({clip("a", range(0, frames - 1, 23.976)), clip("b", range(5, 1, 23.976))})}));
    EXPECT_EQ(cut->rate(), ntscFilm);
    EXPECT_EQ(cut->frameCount(), frames);
    EXPECT_EQ(cut->pictureAt(frames - 2, ntscFilm), picture(0, ExactTime((frames - 2) * 1001, 24000)));
    EXPECT_EQ(cut->pictureAt(frames - 1, ntscFilm), picture(1, ExactTime(5 * 1001, 24000)));
    EXPECT_EQ(cut->pictureAt(frames, ntscFilm), FrameNode());
}

TEST(TimelinePicture, showsAnotherRatesFramesAtTheirTime) {
    const auto mixed = readText(timeline({track({clip("pal", range(50, 25, 25)), clip("film", range(48, 24, 24))})}));
    EXPECT_EQ(mixed->rate(), pal);
    EXPECT_EQ(mixed->frameCount(), 50);
    for (int64 frame = 0; frame < 25; ++frame) {
        ASSERT_EQ(mixed->pictureAt(frame, pal).time.frameAt(pal), 50 + frame);
        ASSERT_EQ(mixed->pictureAt(25 + frame, pal).time.frameAt(film), 48 + frame * 24 / 25);
    }
}

struct SpeedCase {
    const char* name;
    double factor;
    int64 numerator;  // of the speed
    int64 denominator;
};
class TimelineSpeed : public ::testing::TestWithParam<SpeedCase> {};

TEST_P(TimelineSpeed, decidesWhichPictureIsShown) {
    SpeedCase const& param = GetParam();
    constexpr int64 duration = 40;
    const auto warped =
        readText(timeline({track({gap(5, 24), clip("a", range(200, duration, 24), warp(param.factor))})}));
    for (int64 frame = 0; frame < duration; ++frame) {
        const int64 size = param.numerator < 0 ? -param.numerator : param.numerator;
        const int64 played = param.numerator < 0 ? duration - 1 - frame : frame;
        const ExactTime expected(200 * param.denominator + played * size, 24 * param.denominator);
        ASSERT_EQ(warped->pictureAt(5 + frame, film), picture(0, expected)) << frame;
    }
}
INSTANTIATE_TEST_SUITE_P(Factors, TimelineSpeed,
                         ::testing::Values(SpeedCase{"double", 2, 2, 1}, SpeedCase{"half", 0.5, 1, 2},
                                           SpeedCase{"third", 1.0 / 3, 1, 3}, SpeedCase{"reverse", -1, -1, 1},
                                           SpeedCase{"doubleReverse", -2, -2, 1}, SpeedCase{"halfReverse", -0.5, -1, 2},
                                           SpeedCase{"ntscToFilm", 1001.0 / 1000, 1001, 1000}),
                         [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(TimelinePicture, standsStillInAFreezeFrame) {
    const auto frozen = readText(timeline({track(
        {clip("a", range(12, 10, 24), R"(, "effects": [{"OTIO_SCHEMA": "FreezeFrame.1", "time_scalar": 0}])")})}));
    for (int64 frame = 0; frame < 10; ++frame)
        ASSERT_EQ(frozen->pictureAt(frame, film), picture(0, ExactTime(12, 24)));
}

TEST(TimelineDissolve, mixesWhatRunsOnWithWhatBeginsEarly) {
    const auto mixed =
        readText(timeline({track({clip("a", range(0, 20, 24)), dissolve(4, 6, 24), clip("b", range(100, 20, 24))})}));
    for (int64 frame = 0; frame < 40; ++frame) {
        const FrameNode a = picture(0, ExactTime(frame, 24));
        const FrameNode b = picture(1, ExactTime(100 + frame - 20, 24));
        const FrameNode shown = mixed->pictureAt(frame, film);
        if (frame < 16 || frame >= 26) {
            ASSERT_EQ(shown, frame < 16 ? a : b) << frame;
            continue;
        }
        ASSERT_EQ(shown.kind, FrameNode::Kind::dissolve) << frame;
        ASSERT_DOUBLE_EQ(shown.mix, mixOf(frame, 16, 10)) << frame;
        ASSERT_EQ(shown.children, (std::vector{a, b})) << frame;
    }
}

TEST(TimelineDissolve, comesFromAndGoesToNothingAtTheEndsAndBesideGaps) {
    const auto faded = readText(timeline({track({dissolve(0, 4, 24), clip("a", range(0, 20, 24)), dissolve(4, 2, 24),
                                                 gap(10, 24), clip("b", range(0, 10, 24)), dissolve(5, 0, 24)})}));
    EXPECT_THAT(faded->warnings(), ::testing::IsEmpty());
    FrameNode fadeIn = faded->pictureAt(1, film);
    EXPECT_EQ(fadeIn.mix, mixOf(1, 0, 4));
    EXPECT_EQ(fadeIn.children, (std::vector{FrameNode(), picture(0, ExactTime(1, 24))}));
    FrameNode besideGap = faded->pictureAt(21, film);
    EXPECT_EQ(besideGap.mix, mixOf(21, 16, 6));
    EXPECT_EQ(besideGap.children, (std::vector{picture(0, ExactTime(21, 24)), FrameNode()}));
    FrameNode fadeOut = faded->pictureAt(39, film);
    EXPECT_EQ(fadeOut.mix, mixOf(39, 35, 5));
    EXPECT_EQ(fadeOut.children, (std::vector{picture(1, ExactTime(9, 24)), FrameNode()}));
}

TEST(TimelineDissolve, isCutShortWhereItsNeighboursLeaveNoRoom) {
    const auto limited =
        readText(timeline({track({clip("a", range(0, 10, 24)), dissolve(2, 6, 24), clip("b", range(0, 10, 24)),
                                  dissolve(8, 30, 24), clip("c", range(0, 5, 24))})}));
    ASSERT_EQ(limited->warnings().size(), 1U);
    EXPECT_EQ(limited->warnings().front(),
              "test.otio: tracks/children[0]/children[3]: is longer than what it joins leaves, and cut short");
    EXPECT_EQ(limited->pictureAt(15, film).source, 0U) << "the first dissolve keeps its length";
    EXPECT_EQ(limited->pictureAt(16, film).mix, mixOf(16, 16, 9));
    EXPECT_EQ(limited->pictureAt(24, film).mix, mixOf(24, 16, 9));
    EXPECT_EQ(limited->frameCount(), 25);
}

TEST(TimelineDissolve, isAPlainCutWhenItsKindIsNotKnown) {
    std::string wipe = dissolve(4, 4, 24);
    wipe.replace(wipe.find("SMPTE_Dissolve"), 14, "Star_Wipe");
    const auto cut = readText(timeline(
        {track({clip("a", range(0, 10, 24)), wipe, clip("b", range(0, 10, 24)), wipe, clip("c", range(0, 10, 24))})}));
    EXPECT_THAT(cut->warnings(), ::testing::ElementsAre(
                                     "test.otio: tracks/children[0]/children[1]: transition 'Star_Wipe' is not known: "
                                     "a plain cut takes its place"));
    EXPECT_EQ(cut->pictureAt(9, film), picture(0, ExactTime(9, 24)));
    EXPECT_EQ(cut->pictureAt(10, film), picture(1, ExactTime()));
}

TEST(TimelineStack, putsTracksOverEachOtherWithoutThoseThatShowNothing) {
    const auto layered =
        readText(timeline({track({clip("low", range(0, 20, 24))}), track({gap(5, 24), clip("high", range(0, 5, 24))}),
                           track({clip("off", range(0, 20, 24))}, R"(, "enabled": false)"),
                           soundTrack({clip("heard", range(0, 30, 24))})}));
    EXPECT_EQ(layered->frameCount(), 30);
    EXPECT_EQ(layered->pictureAt(4, film), picture(0, ExactTime(4, 24)));
    EXPECT_EQ(layered->pictureAt(5, film), stackOf({picture(0, ExactTime(5, 24)), picture(1, ExactTime())}));
    EXPECT_EQ(layered->pictureAt(10, film), picture(0, ExactTime(10, 24)));
    EXPECT_EQ(layered->pictureAt(25, film), FrameNode());
}

TEST(TimelineStack, takesClipsThatAreOnNoTrack) {
    const auto loose = readText(timeline({clip("short", range(0, 5, 24)), clip("long", range(9, 10, 24))}));
    EXPECT_EQ(loose->frameCount(), 10);
    EXPECT_EQ(loose->pictureAt(4, film), stackOf({picture(0, ExactTime(4, 24)), picture(1, ExactTime(13, 24))}));
    EXPECT_EQ(loose->pictureAt(5, film), picture(1, ExactTime(14, 24)));
    EXPECT_TRUE(loose->soundAt(0, 48000, 48000).empty());
}

TEST(TimelineStack, trimsAndRetimesWhatIsNestedInIt) {
    // The inner timeline: a for 10 frames, b for 10; 12 frames of it from its frame 4 on, twice as fast.
    const std::string inner = track({clip("a", range(0, 10, 24)), clip("b", range(50, 10, 24))});
    const std::string nested = stack({inner}, R"(, "source_range": )" + range(4, 8, 24) + warp(2));
    const auto outer = readText(timeline({track({gap(3, 24), nested})}));
    EXPECT_EQ(outer->frameCount(), 11);
    for (int64 frame = 0; frame < 8; ++frame) {
        const int64 at = 4 + 2 * frame;
        const FrameNode expected = at < 10   ? picture(0, ExactTime(at, 24))
                                   : at < 20 ? picture(1, ExactTime(50 + at - 10, 24))
                                             : FrameNode();
        ASSERT_EQ(outer->pictureAt(3 + frame, film), expected) << frame;
    }
}

TEST(TimelineStack, showsNestedTracksInReverseOrderWithTheirDissolves) {
    const std::string inner =
        track({clip("a", range(0, 10, 24)), dissolve(3, 3, 24), clip("b", range(50, 10, 24))}, warp(-2));
    const auto forward = readText(
        timeline({track({clip("a", range(0, 10, 24)), dissolve(3, 3, 24), clip("b", range(50, 10, 24))}, warp(2))}));
    const auto backward = readText(timeline({inner}));
    ASSERT_EQ(backward->frameCount(), 20);
    for (int64 frame = 0; frame < 20; ++frame)
        ASSERT_EQ(backward->pictureAt(frame, film), forward->pictureAt(19 - frame, film)) << frame;
    EXPECT_EQ(forward->pictureAt(4, film).mix, (8 + 1 - 7) / 6.0) << "a frame lasts for two of the track's";
}

TEST(TimelineSound, beginsAtTheFirstSampleOfEachClip) {
    const auto sounding = readText(timeline({soundTrack({clip("a", range(10, 10, 24)), clip("b", range(0, 7, 24))})}));
    const auto spans = sounding->soundAt(0, 1'000'000, 44100);
    ASSERT_EQ(spans.size(), 2U);
    EXPECT_EQ(spans[0].firstSample, 0);
    EXPECT_EQ(spans[0].sampleCount, 18375);  // 10 frames of 1837.5 samples
    EXPECT_EQ(spans[0].time, ExactTime(10, 24));
    EXPECT_EQ(spans[0].gainFrom, 1);
    EXPECT_EQ(spans[1].media, 1U);
    EXPECT_EQ(spans[1].firstSample, 18375);
    EXPECT_EQ(spans[1].sampleCount, 12863);  // 12862.5 have begun: the one at 12862 is the last
    EXPECT_EQ(spans[1].time, ExactTime());
}

TEST(TimelineSound, tellsTheSourcesTimeOfTheVeryFirstSample) {
    const auto sounding = readText(timeline({soundTrack({gap(1, 24), clip("a", range(0, 24, 24))})}));
    const auto spans = sounding->soundAt(0, 48000, 44100);
    ASSERT_EQ(spans.size(), 1U);
    EXPECT_EQ(spans[0].firstSample, 1838);  // the clip begins at 1837.5
    EXPECT_EQ(spans[0].time, ExactTime(1, 2 * 44100));
}

TEST(TimelineSound, ofVideoTracksIsNotHeard) {
    const std::string both = stack({track({clip("a", range(0, 24, 24))}), soundTrack({clip("b", range(0, 24, 24))})});
    EXPECT_TRUE(readText(timeline({track({clip("a", range(0, 24, 24))})}))->soundAt(0, 48000, 48000).empty());
    EXPECT_TRUE(readText(timeline({track({both})}))->soundAt(0, 48000, 48000).empty());
    const auto nested = readText(timeline({soundTrack({both})}));
    EXPECT_EQ(nested->pictureAt(0, film), FrameNode());
    ASSERT_EQ(nested->soundAt(0, 48000, 48000).size(), 1U);
    EXPECT_EQ(nested->media()[nested->soundAt(0, 48000, 48000)[0].media].name, "b.mov");
    ASSERT_EQ(readText(timeline({both}))->soundAt(0, 48000, 48000).size(), 1U);
}

TEST(TimelineSound, runsAtTheSpeedOfTheClipAndWhatItIsIn) {
    const std::string inner = stack({soundTrack({clip("a", range(24, 24, 24), warp(0.5))})},
                                    R"(, "source_range": )" + range(6, 6, 24) + warp(3));
    const auto spans = readText(timeline({soundTrack({gap(24, 24), inner})}))->soundAt(0, 96000, 48000);
    ASSERT_EQ(spans.size(), 1U);
    EXPECT_EQ(spans[0].firstSample, 48000);
    EXPECT_EQ(spans[0].sampleCount, 12000);
    EXPECT_EQ(spans[0].speed, ExactTime(3, 2));
    EXPECT_EQ(spans[0].time, ExactTime(24 + 3, 24));
}

TEST(TimelineSound, playsTheSameSamplesInReverseOrder) {
    const auto spans =
        readText(timeline({soundTrack({clip("a", range(48, 24, 24), warp(-1))})}))->soundAt(0, 96000, 48000);
    ASSERT_EQ(spans.size(), 1U);
    EXPECT_EQ(spans[0].sampleCount, 48000);
    EXPECT_EQ(spans[0].speed, ExactTime(-1, 1));
    EXPECT_EQ(spans[0].time, ExactTime(2 * 48000 + 47999, 48000)) << "the last sample of the second";
}

TEST(TimelineSound, ofANestedTrackThatIsReversedComesLastClipFirst) {
    const auto spans =
        readText(timeline({soundTrack({clip("a", range(0, 24, 24)), clip("b", range(0, 12, 24))}, warp(-1))}))
            ->soundAt(0, 96000, 48000);
    ASSERT_EQ(spans.size(), 2U);
    EXPECT_EQ(spans[0].media, 0U);
    EXPECT_EQ(spans[0].firstSample, 24000);
    EXPECT_EQ(spans[0].sampleCount, 48000);
    EXPECT_EQ(spans[0].time, ExactTime(47999, 48000));
    EXPECT_EQ(spans[1].firstSample, 0);
    EXPECT_EQ(spans[1].sampleCount, 24000);
    EXPECT_EQ(spans[1].time, ExactTime(23999, 48000));
}

TEST(TimelineSound, isSilentInAFreezeFrameAndInDisabledClips) {
    const auto silent = readText(timeline(
        {soundTrack({clip("a", range(0, 24, 24), warp(0)), clip("b", range(0, 24, 24), R"(, "enabled": false)")})}));
    EXPECT_TRUE(silent->soundAt(0, 96000, 48000).empty());
}

TEST(TimelineSound, crossesOverEvenlyInADissolve) {
    const auto crossed = readText(
        timeline({soundTrack({clip("a", range(0, 24, 24)), dissolve(6, 6, 24), clip("b", range(48, 24, 24))})}));
    const auto spans = crossed->soundAt(0, 96000, 48000);
    ASSERT_EQ(spans.size(), 4U);
    EXPECT_EQ(spans[0].firstSample, 0);
    EXPECT_EQ(spans[0].sampleCount, 36000);
    EXPECT_EQ(spans[0].gainTo, 1);
    EXPECT_EQ(spans[1].media, 0U);
    EXPECT_EQ(spans[1].firstSample, 36000);
    EXPECT_EQ(spans[1].sampleCount, 24000);
    EXPECT_EQ(spans[1].time, ExactTime(3, 4)) << "runs on as if there was no cut";
    EXPECT_EQ(spans[1].gainFrom, 1);
    EXPECT_EQ(spans[1].gainTo, 0);
    EXPECT_EQ(spans[2].media, 1U);
    EXPECT_EQ(spans[2].firstSample, 36000);
    EXPECT_EQ(spans[2].sampleCount, 24000);
    EXPECT_EQ(spans[2].time, ExactTime(7, 4)) << "begins a quarter of a second early";
    EXPECT_EQ(spans[2].gainFrom, 0);
    EXPECT_EQ(spans[2].gainTo, 1);
    EXPECT_EQ(spans[3].firstSample, 60000);
}

/// What a mixer would do with a span: source time and gain of one output sample.
struct HeardSample {
    size_t media;
    ExactTime time;
    double gain;
};
std::vector<std::vector<HeardSample>> heard(Timeline const& timeline, int64 window, int64 end, int32 rate) {
    std::vector<std::vector<HeardSample>> samples(static_cast<size_t>(end));
    for (int64 first = 0; first < end; first += window) {
        for (SoundSpan const& span : timeline.soundAt(first, window, rate)) {
            EXPECT_GE(span.firstSample, first);
            EXPECT_LE(span.firstSample + span.sampleCount, first + window);
            EXPECT_GT(span.sampleCount, 0);
            for (int64 i = 0; i < span.sampleCount; ++i) {
                const double share = static_cast<double>(i) / static_cast<double>(span.sampleCount);
                samples.at(static_cast<size_t>(span.firstSample + i))
                    .push_back({span.media, span.time + ExactTime(i, rate) * span.speed,
                                span.gainFrom + (span.gainTo - span.gainFrom) * share});
            }
        }
    }
    return samples;
}

TEST(TimelineSound, isTheSameHoweverItIsAskedFor) {
    const std::string inner = stack({soundTrack(
        {clip("a", range(0, 10, 24)), dissolve(5, 5, 24), clip("b", range(20, 10, 24), warp(-0.5))}, warp(-1))});
    const auto sounding =
        readText(timeline({soundTrack({clip("c", range(0, 7, 24)), dissolve(6, 8, 24), inner, dissolve(12, 0, 24)}),
                           soundTrack({gap(2, 25), clip("d", range(3, 17, 30), warp(1.5))})}));
    constexpr int32 rate = 3000;
    const int64 end = sounding->duration().frameFrom(Rational(rate, 1));
    const auto whole = heard(*sounding, end, end, rate);
    for (const int64 window : {1, 7, 256, 1001}) {
        const auto parts = heard(*sounding, window, end + window, rate);
        for (size_t i = 0; i < whole.size(); ++i) {
            ASSERT_EQ(parts[i].size(), whole[i].size()) << "sample " << i << ", window " << window;
            for (size_t k = 0; k < whole[i].size(); ++k) {
                ASSERT_EQ(parts[i][k].media, whole[i][k].media) << i;
                ASSERT_EQ(parts[i][k].time, whole[i][k].time) << i;
                ASSERT_NEAR(parts[i][k].gain, whole[i][k].gain, 1e-9) << i;
                ASSERT_GE(whole[i][k].gain, -1e-9) << i;
                ASSERT_LE(whole[i][k].gain, 1 + 1e-9) << i;
            }
        }
    }
}

TEST(TimelineSound, outsideOfTheTimelineIsNone) {
    const auto sounding = readText(timeline({soundTrack({clip("a", range(0, 24, 24))})}));
    EXPECT_TRUE(sounding->soundAt(48000, 100, 48000).empty());
    EXPECT_TRUE(sounding->soundAt(-100, 100, 48000).empty());
    EXPECT_TRUE(sounding->soundAt(0, 0, 48000).empty());
    EXPECT_TRUE(sounding->soundAt(0, 100, 0).empty());
    const auto edges = sounding->soundAt(-10, std::numeric_limits<int64>::max(), 48000);
    ASSERT_EQ(edges.size(), 1U);
    EXPECT_EQ(edges[0].firstSample, 0);
    EXPECT_EQ(edges[0].sampleCount, 48000);
}

TEST(MediaTimeline, playsMediaOneAfterTheOther) {
    const auto media = [](char const* name, ExactTime length, Rational rate, bool hasVideo, bool hasSound) {
        MeasuredMedia measured;
        measured.reference.kind = MediaReference::Kind::file;
        measured.reference.name = name;
        measured.length = length;
        measured.rate = rate;
        measured.hasVideo = hasVideo;
        measured.hasSound = hasSound;
        return measured;
    };
    const auto sequence = makeMediaTimeline(
        "both", {media("music", ExactTime(1, 1), Rational(), false, true),
                 media("film", ExactTime(2, 1), pal, true, true), media("mute", ExactTime(1, 1), film, true, false)});
    EXPECT_EQ(sequence->name(), "both");
    EXPECT_EQ(sequence->rate(), pal);
    EXPECT_EQ(sequence->frameCount(), 100);
    EXPECT_EQ(sequence->pictureAt(24, pal), FrameNode());
    EXPECT_EQ(sequence->pictureAt(25, pal), picture(1, ExactTime()));
    EXPECT_EQ(sequence->pictureAt(99, pal), picture(2, ExactTime(24, 25)));
    const auto spans = sequence->soundAt(0, 4 * 48000, 48000);
    ASSERT_EQ(spans.size(), 2U);
    EXPECT_EQ(spans[0].media, 0U);
    EXPECT_EQ(spans[1].media, 1U);
    EXPECT_EQ(spans[1].firstSample, 48000);
    EXPECT_EQ(spans[1].sampleCount, 96000);
    ASSERT_EQ(sequence->tracks().size(), 2U);
    EXPECT_EQ(sequence->tracks()[0].items[1].name, "film");
    EXPECT_EQ(sequence->tracks()[1].items[2].kind, TrackItem::Kind::gap);
}

TEST(MediaTimeline, ofNothingIsEmpty) {
    const auto nothing = makeMediaTimeline("nothing", {});
    EXPECT_EQ(nothing->frameCount(), 0);
    EXPECT_EQ(nothing->rate(), film);
    EXPECT_EQ(nothing->pictureAt(0, film), FrameNode());
}

}  // namespace
}  // namespace qrtplay
