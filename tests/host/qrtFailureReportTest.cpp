#include "render/qrtFailureReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace qrtplay {
namespace {

using ::testing::ElementsAre;

class FailureLines : public ::testing::Test {
protected:
    void add(int64 frame, std::string const& why) {
        report.add(frame, "clip.mp4: frame " + std::to_string(frame) + ": " + why);
    }

    std::vector<std::string> lines;
    FailureReport report{[this](std::string const& line) { lines.push_back(line); }};
};

TEST_F(FailureLines, nameAFrame) {
    add(7, "lost");
    EXPECT_TRUE(lines.empty());
    report.flush();
    EXPECT_THAT(lines, ElementsAre("clip.mp4: frame 7: lost"));
    report.flush();
    EXPECT_EQ(lines.size(), 1u);
}

TEST_F(FailureLines, nameFramesThatFollowEachOtherTogether) {
    for (const int64 frame : {3, 4, 5, 9, 10})
        add(frame, "lost");
    report.flush();
    EXPECT_THAT(lines, ElementsAre("clip.mp4: frames 3-5: lost", "clip.mp4: frames 9-10: lost"));
    EXPECT_EQ(report.count(), 5);
}

TEST_F(FailureLines, followTheStepOfPlaying) {
    for (const int64 frame : {20, 15, 10, 5})
        add(frame, "lost");
    for (const int64 frame : {3, 2, 1})
        add(frame, "lost");
    report.flush();
    EXPECT_THAT(lines, ElementsAre("clip.mp4: frames 20-5x-5: lost", "clip.mp4: frames 3-1: lost"));
}

TEST_F(FailureLines, keepDifferentReasonsApart) {
    add(3, "lost");
    add(4, "damaged");
    add(5, "damaged");
    report.flush();
    EXPECT_THAT(lines, ElementsAre("clip.mp4: frame 3: lost", "clip.mp4: frames 4-5: damaged"));
}

TEST_F(FailureLines, nameTheFrameWhereTheTextDoesNot) {
    report.add(3, "the disk is full");
    report.flush();
    EXPECT_THAT(lines, ElementsAre("frame 3: the disk is full"));
}

}  // namespace
}  // namespace qrtplay
