#include "render/qrtProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace qrtplay {
namespace {

using ::testing::HasSubstr;

/// Progress with a clock that the test sets.
struct Watched {
    explicit Watched(bool isTerminal, int64 total) : progress(text, isTerminal, total, [this] { return now; }) {}

    std::string taken() {
        const std::string taken = text.str();
        text.str("");
        return taken;
    }

    double now = 100;
    std::ostringstream text;
    Progress progress;
};

TEST(Progress, writesALineAboutEveryTenthWithoutATerminal) {
    Watched watched(false, 100);
    int lines = 0;
    for (int64 done = 1; done <= 100; ++done) {
        watched.now += 0.5;
        watched.progress.update(done);
        lines += watched.taken().empty() ? 0 : 1;
    }
    EXPECT_EQ(lines, 10);
}

TEST(Progress, tellsSpeedAndTimeLeft) {
    Watched watched(false, 100);
    watched.now += 5;
    watched.progress.update(10);
    EXPECT_EQ(watched.taken(), "qrtplay: 10 of 100 frames, 2.0 frames/s, 45.0 s left\n");
    watched.now += 45;
    watched.progress.update(100);
    EXPECT_EQ(watched.taken(), "qrtplay: 100 of 100 frames, 2.0 frames/s\n");
}

TEST(Progress, drawsABarOverItselfOnATerminal) {
    Watched watched(true, 4);
    watched.now += 1;
    watched.progress.update(2);
    EXPECT_EQ(watched.taken(), "\r\033[K[###############...............] 2/4  2.0 frames/s, 1.0 s left");
}

TEST(Progress, redrawsTheBarAtMostTenTimesASecondButAtTheEnd) {
    Watched watched(true, 100);
    watched.progress.update(1);
    EXPECT_FALSE(watched.taken().empty());
    watched.now += 0.05;
    watched.progress.update(2);
    EXPECT_EQ(watched.taken(), "");
    watched.now += 0.06;
    watched.progress.update(3);
    EXPECT_THAT(watched.taken(), HasSubstr(" 3/100"));
    watched.progress.update(100);
    EXPECT_THAT(watched.taken(), HasSubstr(" 100/100"));
}

TEST(Progress, wipesTheBarForALineOnceAndDrawsItAgain) {
    Watched watched(true, 100);
    watched.progress.clear();
    EXPECT_EQ(watched.taken(), "");
    watched.progress.update(1);
    (void)watched.taken();
    watched.progress.clear();
    EXPECT_EQ(watched.taken(), "\r\033[K");
    watched.progress.update(2);
    EXPECT_THAT(watched.taken(), HasSubstr(" 2/100"));
}

}  // namespace
}  // namespace qrtplay
