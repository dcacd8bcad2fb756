#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>
#include <memory>
#include <string>
#include <vector>

#include "host/qrtTestClips.h"
#include "playback/qrtTimelinePlayer.h"
#include "viewer/qrtViewerApplication.h"

namespace qrtplay {

/// A player on clips of make-test-clips.sh, one after the other, in small frames in memory. A failure is a failure of
/// the test, and nothing is then returned.
inline std::unique_ptr<TimelinePlayer> openTestPlayer(std::vector<std::string> const& clips) {
    PlayInput input;
    for (std::string const& clip : clips)
        input.files.push_back(clipPath(clip));
    PlaySettings settings;
    settings.resolution = QSize(64, 36);
    settings.ramOutputs = true;
    NativeContext native;
    PreparedInput prepared;
    OpenFailure why{};
    std::unique_ptr<TimelinePlayer> player;
    Outcome outcome = sharedContext(native);
    if (outcome.success()) outcome = prepareInput(input, settings, prepared, why);
    if (outcome.success()) outcome = TimelinePlayer::open(prepared, settings, native, player, why);
    EXPECT_TRUE(outcome.success()) << outcome.message();
    return player;
}

/// The bytes of a frame; empty without one.
inline std::string bytesOf(SharedPtr<VideoBuffer> const& buffer) {
    void* data = nullptr;
    if (!buffer || buffer->getData(data).failure() || !data) return {};
    return {static_cast<char const*>(data), static_cast<size_t>(buffer->getResolution().getBufferSize())};
}

/// What the player itself delivers for that number.
inline std::string bytesOf(TimelinePlayer const& player, int64 frame) {
    SharedPtr<VideoBuffer> buffer;
    EXPECT_TRUE(player.player().getVideoBuffer(frame, buffer).success()) << frame;
    return bytesOf(buffer);
}

/// Handles events until the condition holds; false when it does not for very long.
template <class Condition>
bool processUntil(Condition const& condition) {
    constexpr int patienceInMs = 60'000;
    constexpr int pollInMs = 20;  // for what no event tells of
    const QDeadlineTimer deadline(patienceInMs);
    QTimer poll;
    poll.start(pollInMs);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

}  // namespace qrtplay
