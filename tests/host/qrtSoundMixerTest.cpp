#include "sound/qrtSoundMixer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <map>
#include <thread>

#include "host/qrtSoundClips.h"
#include "sound/qrtOpenSound.h"

namespace qrtplay {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Media `m` is heard at the level `m` + 1 on the left and at its negative on the right, for ever.
Outcome openLevel(size_t media, std::unique_ptr<SoundSource>& source) {
    source = std::make_unique<ComputedSound>(
        2, [media](int64, int c) { return static_cast<float>(media + 1) * (c == 0 ? 1.0f : -1.0f); });
    return Outcome();
}

SoundSpan spanOf(size_t media, int64 firstSample, int64 sampleCount, double gainFrom = 1, double gainTo = 1) {
    SoundSpan span;
    span.media = media;
    span.firstSample = firstSample;
    span.sampleCount = sampleCount;
    span.gainFrom = gainFrom;
    span.gainTo = gainTo;
    return span;
}

/// Answers the same spans, in full length, whatever is asked.
SoundMixer::SpansAt always(std::vector<SoundSpan> spans) {
    return [spans = std::move(spans)](int64, int64, int32) { return spans; };
}

std::vector<float> filled(SoundMixer& mixer, int64 first, int64 count) {
    std::vector<float> samples(static_cast<size_t>(count * 2), 99.0f);
    mixer.fill(first, count, samples.data());
    return samples;
}

TEST(SoundMixer, asksForWhatIsToBeFilled) {
    std::vector<int64> asked;
    SoundMixer mixer(
        studioRate, 2,
        [&](int64 first, int64 count, int32 sampleRate) {
            asked = {first, count, sampleRate};
            return std::vector<SoundSpan>();
        },
        openLevel);
    EXPECT_THAT(filled(mixer, 12, 34), Each(0.0f));
    EXPECT_THAT(asked, ElementsAre(12, 34, studioRate));
}

TEST(SoundMixer, addsUpSpansWithTheirGains) {
    SoundMixer mixer(studioRate, 2, always({spanOf(0, 0, 10, 0.5, 0.5), spanOf(2, 0, 10, 0.25, 0.25)}), openLevel);
    EXPECT_THAT(filled(mixer, 3, 2), ElementsAre(1.25f, -1.25f, 1.25f, -1.25f));
}

TEST(SoundMixer, doesNotClip) {
    SoundMixer mixer(studioRate, 2, always({spanOf(4, 0, 10), spanOf(5, 0, 10)}), openLevel);
    EXPECT_THAT(filled(mixer, 0, 1), ElementsAre(11.0f, -11.0f));
}

TEST(SoundMixer, isSilentBetweenSpans) {
    SoundMixer mixer(studioRate, 2, always({spanOf(0, 1, 1), spanOf(1, 4, 2)}), openLevel);
    EXPECT_THAT(filled(mixer, 0, 7), ElementsAre(0, 0, 1, -1, 0, 0, 0, 0, 2, -2, 2, -2, 0, 0));
}

TEST(SoundMixer, changesGainsLinearlyThroughoutASpan) {
    SoundMixer mixer(studioRate, 2, always({spanOf(0, 10, 4, 1, 0)}), openLevel);
    EXPECT_THAT(filled(mixer, 10, 4), ElementsAre(1, -1, 0.75, -0.75, 0.5, -0.5, 0.25, -0.25));
    EXPECT_THAT(filled(mixer, 12, 1), ElementsAre(0.5, -0.5));
}

TEST(SoundMixer, crossfadesFromOneMediaToAnother) {
    const int64 count = 20000;
    SoundMixer mixer(studioRate, 2, always({spanOf(0, 0, count, 1, 0), spanOf(1, 0, count, 0, 1)}), openLevel);
    const std::vector<float> samples = filled(mixer, 0, count);
    for (size_t i = 0; i < static_cast<size_t>(count); ++i)
        ASSERT_NEAR(samples[i * 2], 1 + static_cast<double>(i) / static_cast<double>(count), 1e-5) << i;
}

/// Two files over each other, one of them fading out, the other one backwards.
std::vector<SoundSpan> filesAt(int64 first, int64 count, int32) {
    const SoundSpan all[] = {spanOf(0, 5000, 90000, 1, 0), spanOf(1, 40000, 90000), spanOf(2, 20000, 60000)};
    std::vector<SoundSpan> spans;
    for (SoundSpan span : all) {
        if (span.media == 1) span.speed = {-1, 1};
        if (span.media == 2) span.speed = {3, 2};
        span.time = span.media == 1 ? ExactTime(5, 2) : ExactTime(1, 7);
        const int64 from = std::max(first, span.firstSample);
        const int64 until = std::min(first + count, span.firstSample + span.sampleCount);
        if (from >= until) continue;
        const auto gainAt = [&](int64 n) {
            return span.gainFrom + (span.gainTo - span.gainFrom) * static_cast<double>(n - span.firstSample) /
                                       static_cast<double>(span.sampleCount);
        };
        SoundSpan part = spanOf(span.media, from, until - from, gainAt(from), gainAt(until));
        part.speed = span.speed;
        part.time = span.time + ExactTime(from - span.firstSample, studioRate) * span.speed;
        spans.push_back(part);
    }
    return spans;
}

Outcome openFile(size_t media, std::unique_ptr<SoundSource>& source) {
    static const char* const names[] = {"plain.flac", "coarse.mkv", "plain.opus"};
    return openSound(soundClipPath(names[media]), ExactTime(), studioRate, 2, source);
}

TEST(SoundMixer, answersTheSameHoweverRequestsAreCut) {
    SoundMixer mixer(studioRate, 2, filesAt, openFile);
    const std::vector<float> whole = filled(mixer, 0, 140000);
    ASSERT_GT(std::abs(whole[peakOf(whole)]), 0.5f);
    std::vector<float> cut(whole.size());
    for (auto const& [first, count] : portions(0, 140000)) {
        const std::vector<float> portion = filled(mixer, first, count);
        std::copy(portion.begin(), portion.end(), cut.begin() + first * 2);
    }
    EXPECT_LE(differenceOf(whole, cut), 1e-6);
    EXPECT_THAT(mixer.takeFailures(), IsEmpty());
}

TEST(SoundMixer, playsAFileBackwards) {
    SoundSpan span = spanOf(0, 0, 144000);
    span.speed = {-1, 1};
    span.time = ExactTime(143999, studioRate);
    SoundMixer mixer(studioRate, 2, always({span}), openFile);
    const std::vector<float> expected = referenceSound("plain.flac.f32");
    const std::vector<float> samples = filled(mixer, 0, 144000);
    for (size_t i = 0; i < 144000; ++i) {
        ASSERT_EQ(samples[2 * i], expected[2 * (143999 - i)]) << i;
        ASSERT_EQ(samples[2 * i + 1], expected[2 * (143999 - i) + 1]) << i;
    }
}

TEST(SoundMixer, isSilentForMediaWithoutSound) {
    int opened = 0;
    SoundMixer mixer(studioRate, 2, always({spanOf(0, 0, 10)}), [&](size_t, std::unique_ptr<SoundSource>&) {
        ++opened;
        return Outcome();
    });
    EXPECT_THAT(filled(mixer, 0, 5), Each(0.0f));
    EXPECT_THAT(filled(mixer, 5, 5), Each(0.0f));
    EXPECT_EQ(opened, 1);
    EXPECT_THAT(mixer.takeFailures(), IsEmpty());
}

TEST(SoundMixer, tellsOnceThatMediaDoNotOpenAndPlaysTheOthers) {
    SoundMixer mixer(studioRate, 2, always({spanOf(0, 0, 10), spanOf(1, 0, 10)}),
                     [](size_t media, std::unique_ptr<SoundSource>& source) {
                         return media == 0 ? Outcome::failure("a.wav: no such file") : openLevel(media, source);
                     });
    EXPECT_THAT(filled(mixer, 0, 1), ElementsAre(2, -2));
    EXPECT_THAT(filled(mixer, 1, 1), ElementsAre(2, -2));
    EXPECT_THAT(mixer.takeFailures(), ElementsAre("a.wav: no such file"));
    filled(mixer, 2, 1);
    EXPECT_THAT(mixer.takeFailures(), IsEmpty());
}

class FailingSound final : public SoundSource {
public:
    Outcome read(int64, int64 count, float* samples) override {
        std::fill_n(samples, count * 2, 0.0f);
        return Outcome::failure("b.wav: its sound at 0.000 s cannot be decoded");
    }
};

TEST(SoundMixer, tellsOnceThatMediaCannotBeRead) {
    SoundMixer mixer(studioRate, 2, always({spanOf(0, 0, 10)}), [](size_t, std::unique_ptr<SoundSource>& source) {
        source = std::make_unique<FailingSound>();
        return Outcome();
    });
    filled(mixer, 0, 5);
    filled(mixer, 5, 5);
    EXPECT_THAT(mixer.takeFailures(), ElementsAre("b.wav: its sound at 0.000 s cannot be decoded"));
}

/// Counts how many of its kind there are.
class CountedSound final : public SoundSource {
public:
    explicit CountedSound(int& alive) : m_alive(alive) { ++m_alive; }
    ~CountedSound() override { --m_alive; }

    Outcome read(int64, int64 count, float* samples) override {
        std::fill_n(samples, count * 2, 1.0f);
        return Outcome();
    }

private:
    int& m_alive;
};

TEST(SoundMixer, closesTheMediaNotHeardForTheLongestTime) {
    int alive = 0;
    std::map<size_t, int> opened;
    SoundMixer mixer(
        studioRate, 2,
        [](int64 first, int64, int32) { return std::vector{spanOf(static_cast<size_t>(first), first, 1)}; },
        [&](size_t media, std::unique_ptr<SoundSource>& source) {
            ++opened[media];
            source = std::make_unique<CountedSound>(alive);
            return Outcome();
        });
    for (int64 media = 0; media < 16; ++media)
        filled(mixer, media, 1);
    EXPECT_EQ(alive, 16);
    filled(mixer, 0, 1);  // number 1 is now the one not heard for the longest time
    filled(mixer, 16, 1);
    EXPECT_EQ(alive, 16);
    filled(mixer, 0, 1);
    EXPECT_EQ(opened[0], 1);
    EXPECT_THAT(filled(mixer, 1, 1), Each(1.0f));
    EXPECT_EQ(opened[1], 2);
}

TEST(SoundMixer, servesSeveralThreads) {
    SoundMixer mixer(studioRate, 2, filesAt, openFile);
    const std::vector<float> expected = filled(mixer, 0, 60000);
    std::latch start(2);
    std::vector<float> answers[2];
    std::vector<std::thread> threads;
    for (auto& answer : answers) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            answer = filled(mixer, 0, 60000);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (auto const& answer : answers)
        EXPECT_EQ(differenceOf(answer, expected), 0);
}

}  // namespace
}  // namespace qrtplay
