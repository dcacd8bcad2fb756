#pragma once

#include <memory>

#include "playback/qrtSoundOutput.h"

namespace qrtplay {

/// The machine's default device, through Qt Multimedia.
///
/// The device is served on a thread of its own, so that sound goes on while the caller is busy.
///
/// Threading: one thread, which needs no event loop.
class QtSoundOutput final : public SoundOutput {
public:
    QtSoundOutput();
    ~QtSoundOutput() override;

    /// Takes the device that is the default one now. What plays already is stopped first.
    Outcome start(SoundFeed& feed) override;
    /// Returns when the feed is no longer read. What the device had taken already is not heard any more.
    void stop() override;
    /// Also of what plays already; kept for the next start.
    void setVolume(double volume) override;
    [[nodiscard]] std::optional<int64> heard() const override;

private:
    class DeviceThread;

    double m_volume = 1;
    std::unique_ptr<DeviceThread> m_device;  // from start to stop
};

}  // namespace qrtplay
