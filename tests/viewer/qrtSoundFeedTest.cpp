#include "playback/qrtSoundFeed.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <fstream>
#include <thread>
#include <vector>

#include "playback/qrtPreparedInput.h"
#include "playback/qrtTimelinePlayer.h"
#include "viewer/qrtSoundArithmetic.h"
#include "viewer/qrtViewerApplication.h"

namespace qrtplay {
namespace {

constexpr int64 soundLength = 10 * sampleRate;
constexpr int longEnoughMs = 60'000;

// Sample n carries n + 1, so that seams show and the first one is not silent; the right channel with the other sign.
constexpr float unit = 1.0f / (1 << 20);

template <typename Number>
void append(std::string& bytes, Number number) {
    std::array<char, sizeof(Number)> raw{};
    std::memcpy(raw.data(), &number, sizeof(Number));
    bytes.append(raw.data(), raw.size());
}

void writeCountingSound(std::string const& path) {
    constexpr std::uint32_t sampleSize = SoundFeed::channels * sizeof(float);
    constexpr std::uint32_t dataSize = soundLength * sampleSize;
    std::string bytes = "RIFF";
    append<std::uint32_t>(bytes, 36 + dataSize);
    bytes += "WAVEfmt ";
    append<std::uint32_t>(bytes, 16);
    append<std::uint16_t>(bytes, 3);  // floats
    append<std::uint16_t>(bytes, SoundFeed::channels);
    append<std::uint32_t>(bytes, sampleRate);
    append<std::uint32_t>(bytes, sampleRate * sampleSize);
    append<std::uint16_t>(bytes, sampleSize);
    append<std::uint16_t>(bytes, 8 * sizeof(float));
    bytes += "data";
    append(bytes, dataSize);
    for (int64 n = 0; n < soundLength; ++n) {
        append(bytes, static_cast<float>(n + 1) * unit);
        append(bytes, static_cast<float>(n + 1) * -unit);
    }
    std::ofstream(path, std::ios::binary) << bytes;
}

/// A timeline that is one file of such sound, in a player.
class SoundFeedTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        s_folder = new QTemporaryDir;
        writeCountingSound(soundPath());
    }
    static void TearDownTestSuite() {
        delete s_folder;
        s_folder = nullptr;
    }
    static std::string soundPath() { return s_folder->filePath("counting.wav").toStdString(); }

    void SetUp() override {
        PlayInput input;
        input.files = {soundPath()};
        PlaySettings settings;
        settings.resolution = QSize(32, 18);
        PreparedInput prepared;
        NativeContext native;
        OpenFailure why{};
        Outcome outcome = prepareInput(input, settings, prepared, why);
        if (outcome.success()) outcome = sharedContext(native);
        if (outcome.success()) outcome = TimelinePlayer::open(prepared, settings, native, m_player, why);
        ASSERT_TRUE(outcome.success()) << outcome.message();
    }

    [[nodiscard]] TimelinePlayer& player() const { return *m_player; }
    [[nodiscard]] SharedPtr<PlayParams> order(int64 first, int64 last, int64 current, int step = 1,
                                              PlayParams::PlayMode mode = PlayParams::single) const {
        return m_player->parameters(first, last, current, step, mode);
    }

private:
    static QTemporaryDir* s_folder;
    std::unique_ptr<TimelinePlayer> m_player;
};
QTemporaryDir* SoundFeedTest::s_folder = nullptr;

/// The number of the timeline's sample that a sample of the feed carries, or `silent`.
int64 numberIn(float const* sample) {
    EXPECT_EQ(sample[1], -sample[0]);
    return std::lround(sample[0] / unit) - 1;
}

std::vector<int64> readNow(SoundFeed& feed, int64 count) {
    constexpr float untouched = 99;
    std::vector<float> samples(static_cast<size_t>(count) * SoundFeed::channels, untouched);
    feed.read(samples.data(), count);
    std::vector<int64> numbers;
    for (size_t i = 0; i < samples.size(); i += SoundFeed::channels)
        numbers.push_back(numberIn(samples.data() + i));
    return numbers;
}

/// What a patient device would hear, which takes portions of changing length.
std::vector<int64> readAll(SoundFeed& feed, int64 count) {
    std::vector<int64> numbers;
    for (int64 portion = 480; static_cast<int64>(numbers.size()) < count; portion = portion * 7 % 5003 + 1) {
        const int64 wanted = std::min(portion, count - static_cast<int64>(numbers.size()));
        EXPECT_TRUE(feed.waitFor(wanted, longEnoughMs));
        const std::vector<int64> portionRead = readNow(feed, wanted);
        numbers.insert(numbers.end(), portionRead.begin(), portionRead.end());
    }
    EXPECT_EQ(feed.missedSamples(), 0);
    EXPECT_EQ(feed.failure(), "");
    return numbers;
}

class SoundFeedAtRate : public SoundFeedTest, public ::testing::WithParamInterface<Rational> {};

TEST_P(SoundFeedAtRate, isHeardSampleBySampleToTheEndAndThenSilent) {
    const Rational rate = GetParam();
    SoundFeed feed(player(), *order(4, 90, 10), rate);
    const int64 end = sampleOf(81, rate);
    const std::vector<int64> numbers = readAll(feed, end + 30'000);
    for (int64 i = 0; i < end + 30'000; ++i)
        ASSERT_EQ(numbers[static_cast<size_t>(i)], i < end ? sampleOf(10, rate) + i : silent) << i;
}

TEST_P(SoundFeedAtRate, jumpsBackInALoopAtTheFirstSampleOfTheTick) {
    const Rational rate = GetParam();
    SoundFeed feed(player(), *order(7, 23, 12, 1, PlayParams::loop), rate);
    const std::vector<int64> numbers = readAll(feed, sampleOf(100, rate));
    int64 runTick = 0;
    int64 runFrame = 12;
    for (int64 tick = 0; tick < 100; ++tick) {
        if (tick >= 12 && (tick - 12) % 17 == 0) {
            runTick = tick;
            runFrame = 7;
        }
        for (int64 i = sampleOf(tick, rate); i < sampleOf(tick + 1, rate); ++i)
            ASSERT_EQ(numbers[static_cast<size_t>(i)], sampleOf(runFrame, rate) + i - sampleOf(runTick, rate)) << tick;
    }
}

TEST_P(SoundFeedAtRate, isSilentWhileAPingPongRunsBack) {
    const Rational rate = GetParam();
    SoundFeed feed(player(), *order(40, 49, 40, 1, PlayParams::ping_pong), rate);
    const std::vector<int64> numbers = readAll(feed, sampleOf(60, rate));
    // There frames 40 to 49, then nine back and nine there again: each end is shown once.
    for (int64 tick = 0; tick < 60; ++tick) {
        const int64 run = tick < 10 ? 0 : (tick - 1) / 9;
        const int64 begin = run == 0 ? sampleOf(40, rate) : sampleOf(41, rate);
        const int64 runTick = run == 0 ? 0 : run * 9 + 1;
        for (int64 i = sampleOf(tick, rate); i < sampleOf(tick + 1, rate); ++i) {
            const int64 expected = run % 2 == 0 ? begin + i - sampleOf(runTick, rate) : silent;
            ASSERT_EQ(numbers[static_cast<size_t>(i)], expected) << tick;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, SoundFeedAtRate,
                         ::testing::Values(Rational(24, 1), Rational(25, 1), Rational(24000, 1001),
                                           Rational(30000, 1001)),
                         [](const auto& caseInfo) {
                             return std::to_string(caseInfo.param.getNumerator()) + "_" +
                                    std::to_string(caseInfo.param.getDenominator());
                         });

TEST_F(SoundFeedTest, isSilentBackwardsAndFast) {
    for (const int step : {-1, 2}) {
        SoundFeed feed(player(), *order(0, 200, 100, step), Rational(24, 1));
        for (const int64 number : readAll(feed, 60'000))
            ASSERT_EQ(number, silent);
    }
}

TEST_F(SoundFeedTest, isSilentWhereTheTimelineHasEnded) {
    SoundFeed feed(player(), *order(0, 1000, 239), Rational(24, 1));
    const std::vector<int64> numbers = readAll(feed, 4000);
    for (int64 i = 0; i < 4000; ++i)
        ASSERT_EQ(numbers[static_cast<size_t>(i)], i < 2000 ? 239 * 2000 + i : silent);
}

TEST_F(SoundFeedTest, leavesOutWhatItMissedAndStaysInStep) {
    SoundFeed feed(player(), *order(0, 239, 0), Rational(24, 1));
    ASSERT_TRUE(feed.waitFor(SoundFeed::samplesAhead, longEnoughMs));
    constexpr int64 count = 100'000;
    const std::vector<int64> numbers = readNow(feed, count);
    const int64 missed = feed.missedSamples();
    ASSERT_GT(missed, 0);
    ASSERT_LE(missed, count - SoundFeed::samplesAhead);
    for (int64 i = 0; i < count; ++i)
        ASSERT_EQ(numbers[static_cast<size_t>(i)], i < count - missed ? i : silent);
    ASSERT_EQ(feed.position(), count);
    ASSERT_TRUE(feed.waitFor(3000, longEnoughMs));
    EXPECT_EQ(readNow(feed, 3000).front(), count);
    EXPECT_EQ(readNow(feed, 1).front(), count + 3000);
    EXPECT_EQ(feed.missedSamples(), missed);
}

TEST_F(SoundFeedTest, waitsForNoMoreThanIsEverReadAhead) {
    SoundFeed feed(player(), *order(0, 239, 0), Rational(24, 1));
    EXPECT_TRUE(feed.waitFor(10 * SoundFeed::samplesAhead, longEnoughMs));
}

TEST_F(SoundFeedTest, tellsItsFirstFailureAndIsSilent) {
    ASSERT_TRUE(player().player().uninitialize().success());
    SoundFeed feed(player(), *order(0, 239, 24), Rational(24, 1));
    ASSERT_TRUE(feed.waitFor(SoundFeed::samplesAhead, longEnoughMs));
    for (const int64 number : readNow(feed, SoundFeed::samplesAhead))
        ASSERT_EQ(number, silent);
    EXPECT_EQ(feed.missedSamples(), 0);
    EXPECT_THAT(feed.failure(), ::testing::StartsWith(soundPath() + ": sound from sample 48000 on: "));
}

TEST_F(SoundFeedTest, endsAtAnyTime) {
    for (int64 round = 0; round < 60; ++round) {
        SoundFeed feed(player(), *order(0, 239, round, 1, PlayParams::loop), Rational(25, 1));
        if (round % 3 == 1) (void)readNow(feed, 500 * round);
        if (round % 3 == 2) (void)feed.waitFor(400 * round, longEnoughMs);
    }
}

TEST_F(SoundFeedTest, isInStepWheneverItIsReadOnAnotherThread) {
    SoundFeed feed(player(), *order(0, 239, 0), Rational(24, 1));
    std::vector<int64> numbers;
    std::atomic<bool> isOver = false;
    std::thread device([&] {
        for (int64 i = 0; i < 400; ++i) {
            if (i % 50 == 0) (void)feed.waitFor(10'000, longEnoughMs);  // or nothing at all might be heard
            for (const int64 number : readNow(feed, 480))
                numbers.push_back(number);
        }
        isOver = true;
    });
    int64 seen = 0;
    while (!isOver) {
        EXPECT_GE(feed.missedSamples(), seen);
        seen = feed.missedSamples();
        EXPECT_EQ(feed.failure(), "");
        (void)feed.waitFor(1000, 1);
    }
    device.join();
    int64 missed = 0;
    for (int64 i = 0; i < 400 * 480; ++i) {
        if (numbers[static_cast<size_t>(i)] == silent)
            ++missed;
        else
            ASSERT_EQ(numbers[static_cast<size_t>(i)], i);
    }
    EXPECT_EQ(missed, feed.missedSamples());
    EXPECT_LE(missed, 8 * 40 * 480);
}

}  // namespace
}  // namespace qrtplay
