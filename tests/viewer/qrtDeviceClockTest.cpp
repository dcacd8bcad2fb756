#include "viewer/playing/qrtDeviceClock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace qrtplay {
namespace {

constexpr int64 millisecond = 1'000'000;
constexpr int64 second = 1000 * millisecond;
constexpr int64 interval = 30 * millisecond;

/// A device that counts what it has played in steps of 20 ms and is asked for it every 10 ms, roughly.
class SteppingDevice {
public:
    explicit SteppingDevice(double speed) : m_speed(speed) {}

    /// What the device has truly played by `now`.
    [[nodiscard]] int64 truth(int64 now) const {
        return std::max<int64>(0, std::llround(static_cast<double>(now - start) * m_speed));
    }
    /// To be called for every millisecond.
    void reportTo(DeviceClock& clock, int64 now) {
        if (now < m_nextReport) return;
        clock.report(truth(now) / step * step, now);
        m_nextReport = now + (8 + static_cast<int64>(m_random() % 5)) * millisecond;
    }

    static constexpr int64 start = 137 * millisecond;
    static constexpr int64 step = 20 * millisecond;

private:
    const double m_speed;
    int64 m_nextReport = 0;
    std::mt19937 m_random{2024};
};

class DeviceClockAtSpeed : public ::testing::TestWithParam<double> {};

TEST_P(DeviceClockAtSpeed, staysEvenAndRightThroughALongRun) {
    DeviceClock clock(interval, 0);
    SteppingDevice device(GetParam());
    int64 previous = 0;
    for (int64 now = 0; now < 300 * second; now += millisecond) {
        device.reportTo(clock, now);
        const int64 played = clock.playedBy(now);
        ASSERT_GE(played, previous) << now;
        if (now > second) {
            // Far better than the steps of the device and the times at which it is asked.
            ASSERT_NEAR(static_cast<double>(played), static_cast<double>(device.truth(now)), 8.0 * millisecond) << now;
            ASSERT_LT(played - previous, 4 * millisecond) << now;
        }
        previous = played;
    }
}
INSTANTIATE_TEST_SUITE_P(Speeds, DeviceClockAtSpeed, ::testing::Values(1.0, 0.9997, 1.0003), [](const auto& caseInfo) {
    return caseInfo.param < 1 ? "slow" : caseInfo.param > 1 ? "fast" : "exact";
});

TEST(DeviceClock, standsAtZeroUntilTheDeviceHasBegun) {
    DeviceClock clock(interval, 0);
    for (int64 now = 0; now < second; now += 10 * millisecond) {
        clock.report(0, now);
        EXPECT_EQ(clock.playedBy(now + 5 * millisecond), 0);
    }
}

TEST(DeviceClock, goesOnBetweenReportsWithTheMachinesClock) {
    DeviceClock clock(interval, 0);
    clock.report(100 * millisecond, second);
    EXPECT_EQ(clock.playedBy(second), 100 * millisecond);
    EXPECT_EQ(clock.playedBy(second + 1), 100 * millisecond + 1);
    EXPECT_EQ(clock.playedBy(second + 29 * millisecond), 129 * millisecond);
}

TEST(DeviceClock, isNeverMoreThanOneIntervalAheadOfTheDevice) {
    DeviceClock clock(interval, 0);
    clock.report(100 * millisecond, second);
    EXPECT_EQ(clock.playedBy(second + 31 * millisecond), 100 * millisecond + interval);
    EXPECT_EQ(clock.playedBy(second * 2), 100 * millisecond + interval);
}

TEST(DeviceClock, neverGoesBackWhateverTheDeviceReports) {
    DeviceClock clock(interval, 0);
    std::mt19937 random(81);
    int64 previous = 0;
    for (int64 now = 0; now < 20 * second; now += 7 * millisecond) {
        clock.report(now + static_cast<int64>(random() % 400) * millisecond - 200 * millisecond, now);
        const int64 played = clock.playedBy(now + 3 * millisecond);
        ASSERT_GE(played, previous);
        previous = played;
    }
}

TEST(DeviceClock, waitsForADeviceThatHasRunDryAndIsRightAgainAtOnce) {
    DeviceClock clock(interval, 0);
    for (int64 now = 0; now <= second; now += 10 * millisecond)
        clock.report(now, now);
    for (int64 now = second; now <= second + 500 * millisecond; now += 10 * millisecond) {
        clock.report(second, now);
        EXPECT_LE(clock.playedBy(now), second + interval);
    }
    const int64 lost = 500 * millisecond;
    for (int64 now = second + lost; now <= 2 * second; now += 10 * millisecond)
        clock.report(now - lost, now);
    EXPECT_EQ(clock.playedBy(2 * second + millisecond), 2 * second - lost + millisecond);
}

TEST(DeviceClock, learnsThatReportsComeSeldom) {
    DeviceClock clock(interval, 0);
    for (int64 now = 0; now <= second; now += 50 * millisecond)
        clock.report(now, now);
    EXPECT_EQ(clock.playedBy(second + 49 * millisecond), second + 49 * millisecond);
    EXPECT_EQ(clock.playedBy(second + 60 * millisecond), second + 50 * millisecond);
}

TEST(DeviceClock, knowsADeviceThatDoesNotGoOn) {
    DeviceClock clock(interval, 0);
    clock.report(millisecond, millisecond);
    clock.report(millisecond, millisecond + DeviceClock::patience);
    EXPECT_FALSE(clock.isStalled());
    clock.report(millisecond, millisecond + DeviceClock::patience + 1);
    EXPECT_TRUE(clock.isStalled());
    clock.report(2 * millisecond, 3 * second);
    EXPECT_FALSE(clock.isStalled());
}

TEST(DeviceClock, knowsADeviceThatNeverBegins) {
    DeviceClock clock(interval, 5 * second);
    clock.report(0, 5 * second + DeviceClock::patience + 1);
    EXPECT_TRUE(clock.isStalled());
}

}  // namespace
}  // namespace qrtplay
