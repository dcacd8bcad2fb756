#include "graph/qrtFrameCourse.h"

#include <gtest/gtest.h>

namespace qrtplay {
namespace {

void play(FrameCourse& course, int64 first, int64 last, int64 step = 1) {
    for (int64 frame = first; step > 0 ? frame <= last : frame >= last; frame += step)
        course.note(frame, step);
}

TEST(FrameCourse, goesOnInTheDirectionOfPlaying) {
    FrameCourse course;
    course.note(10, 3);
    EXPECT_EQ(course.next(10), 13);
    EXPECT_EQ(course.next(13), 16);
    course.note(13, -2);
    EXPECT_EQ(course.next(13), 11);
}

TEST(FrameCourse, looksFartherAheadGoingBackwards) {
    FrameCourse course;
    course.note(10, 1);
    const int64 forward = course.framesAhead();
    EXPECT_GT(forward, 1);
    course.note(9, -1);
    EXPECT_GT(course.framesAhead(), forward);
}

TEST(FrameCourse, expectsMoreStepsBackAfterOne) {
    FrameCourse course;
    play(course, 10, 20);
    course.note(19, 1);
    EXPECT_EQ(course.next(19), 18);
    course.note(18, 1);
    EXPECT_EQ(course.next(18), 17);
    course.note(19, 1);
    EXPECT_EQ(course.next(19), 20);
}

TEST(FrameCourse, expectsNothingAfterAJumpUntilPlayGoesOn) {
    FrameCourse course;
    play(course, 10, 20);
    const int64 ahead = course.framesAhead();
    for (const int64 frame : {200, 100, 400}) {
        course.note(frame, 1);
        EXPECT_EQ(course.framesAhead(), 1) << frame;
    }
    course.note(401, 1);
    EXPECT_EQ(course.framesAhead(), ahead);
}

TEST(FrameCourse, goesOnWithFramesLeftOut) {
    FrameCourse course;
    play(course, 10, 20);
    const int64 ahead = course.framesAhead();
    course.note(27, 1);
    EXPECT_EQ(course.framesAhead(), ahead);
}

TEST(FrameCourse, knowsFramesOfAnyNumber) {
    FrameCourse course;
    for (const int64 step : {1, -1}) {
        for (const int64 frame : {INT64_MAX, INT64_MIN, INT64_MAX, INT64_MIN, INT64_MAX, INT64_MIN}) {
            course.note(frame, step);
            EXPECT_GE(course.framesAhead(), 1);
        }
    }
}

TEST(FrameCourse, looksAheadAfterAJumpWhenPlayGoesBackwards) {
    FrameCourse course;
    course.note(10, -1);
    course.note(300, -1);
    EXPECT_GT(course.framesAhead(), 1);
}

TEST(FrameCourse, knowsALoopWhenPlayingHasGoneRoundTwice) {
    FrameCourse course;
    play(course, 20, 29);
    play(course, 20, 29);
    EXPECT_EQ(course.next(29), 30) << "one jump back may lead anywhere";
    play(course, 20, 25);
    EXPECT_EQ(course.next(28), 29);
    EXPECT_EQ(course.next(29), 20);
    EXPECT_EQ(course.framesAhead(), 10);
}

TEST(FrameCourse, knowsABackwardLoop) {
    FrameCourse course;
    for (int round = 0; round < 3; ++round)
        play(course, 9, 5, -1);
    EXPECT_EQ(course.next(5), 9);
    EXPECT_EQ(course.next(9), 8);
    EXPECT_EQ(course.framesAhead(), 5);
}

TEST(FrameCourse, forgetsALoopThatPlayingHasLeft) {
    FrameCourse course;
    for (int round = 0; round < 3; ++round)
        play(course, 20, 29);
    course.note(40, 1);
    EXPECT_EQ(course.next(29), 30);
    play(course, 20, 29, 1);
    course.note(22, 1);
    EXPECT_EQ(course.next(29), 30) << "another loop begins";
    course.note(23, -1);
    EXPECT_EQ(course.next(20), 19);
}

}  // namespace
}  // namespace qrtplay
