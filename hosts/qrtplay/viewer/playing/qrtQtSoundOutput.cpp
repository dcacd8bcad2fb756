#include "viewer/playing/qrtQtSoundOutput.h"

#include <QIODevice>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <future>
#include <mutex>
#include <vector>

#include "playback/qrtMediaClock.h"
#include "playback/qrtSoundFeed.h"
#include "playback/qrtTimelinePlayer.h"
#include "viewer/playing/qrtAlsaMessages.h"
#include "viewer/playing/qrtDeviceClock.h"
#include "viewer/playing/qrtSoundDevice.h"

namespace qrtplay {

namespace {

constexpr int64 nanosecondsPerMicrosecond = 1000;
constexpr int bufferInMicroseconds = 100'000;  // long enough for a busy machine, short enough for a quick start
constexpr int reportMs = 10;

/// What a device pulls its samples from, in the device's own format.
class FeedReader final : public QIODevice {
public:
    FeedReader(SoundFeed& feed, SampleKind kind)
        : m_feed(feed), m_format(TimelinePlayer::soundRate, SoundFeed::channels, kind) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return true; }
    /// How much of the feed the device has taken. Any thread.
    [[nodiscard]] int64 takenMicroseconds() const { return m_taken * 1'000'000 / TimelinePlayer::soundRate; }

protected:
    qint64 readData(char* bytes, qint64 most) override {
        const auto sampleSize = static_cast<qint64>(m_format.getSizeInBytes(1));
        const qint64 count = most / sampleSize;
        for (qint64 done = 0; done < count;) {
            const qint64 portion = std::min(count - done, portionLength);
            m_feed.read(m_samples.data(), portion);
            convertSamples(m_samples.data(), static_cast<size_t>(portion), m_format, bytes + done * sampleSize);
            done += portion;
            m_taken += portion;
        }
        return count * sampleSize;
    }
    qint64 writeData(char const* /*bytes*/, qint64 /*count*/) override { return -1; }

private:
    static constexpr qint64 portionLength = 4096;

    SoundFeed& m_feed;
    const HostAudioFormat m_format;
    std::atomic<int64> m_taken = 0;  // samples of each channel
    std::vector<float> m_samples = std::vector<float>(portionLength * SoundFeed::channels);
};

QAudioFormat deviceFormat(SampleKind kind) {
    return soundFormat(TimelinePlayer::soundRate, SoundFeed::channels, kind);
}

/// A device and what it pulls from, which has to last longer.
struct PlayingDevice {
    PlayingDevice(SoundDevice const& info, SoundFeed& feed, SampleKind kind)
        : reader(feed, kind), output(info, deviceFormat(kind)) {
        output.setBufferSize(output.format().bytesForDuration(bufferInMicroseconds));
    }

    FeedReader reader;
    SoundSink output;
};

/// Nanoseconds of the feed that the device has let out since it was started. What Qt itself calls processed has left
/// the device with some systems, and only been taken by it with others.
int64 playedBy(PlayingDevice const& device) {
    SoundSink const& output = device.output;
    const auto waiting = static_cast<int>(std::max<qint64>(0, output.bufferSize() - output.bytesFree()));
    const qint64 microseconds = device.reader.takenMicroseconds() - output.format().durationForBytes(waiting);
    return std::max<int64>(0, microseconds) * nanosecondsPerMicrosecond;
}

}  // namespace

/// Serves one device from its start to its end. What is to be done meanwhile is left where the thread finds it with its
/// next report.
class QtSoundOutput::DeviceThread final : public QThread {
public:
    DeviceThread(SoundDevice const& info, SoundFeed& feed, double volume)
        : m_info(info), m_feed(feed), m_volume(volume) {}
    ~DeviceThread() override {
        if (!m_hasBegun) return;
        quit();
        m_ended.get_future().wait();  // seen by ThreadSanitizer, to which Qt's own waiting is hidden
        wait();
    }

    /// False when the device cannot be opened.
    [[nodiscard]] bool begin() {
        m_hasBegun = true;
        start(QThread::TimeCriticalPriority);
        return m_started.get_future().get();
    }
    void setVolume(double volume) { m_volume = volume; }
    [[nodiscard]] std::optional<int64> heard() {
        const std::lock_guard lock(m_mutex);
        if (!m_clock) return std::nullopt;
        return m_startedAt + m_clock->playedBy(m_wallClock.nanoseconds());
    }

protected:
    void run() override {
        serve();
        m_ended.set_value();
    }

private:
    void serve();
    std::unique_ptr<PlayingDevice> startDevice();
    void report(PlayingDevice& device);

    const SoundDevice m_info;
    SoundFeed& m_feed;
    std::atomic<double> m_volume;
    bool m_hasBegun = false;  // the owner's thread only
    std::promise<bool> m_started;
    std::promise<void> m_ended;
    const WallClock m_wallClock;

    std::mutex m_mutex;
    // Under m_mutex.
    std::optional<DeviceClock> m_clock;  // while the device plays
    int64 m_startedAt = 0;               // nanoseconds of the feed
};

void QtSoundOutput::DeviceThread::serve() {
    const auto device = startDevice();
    m_started.set_value(device != nullptr);
    if (!device) return;
    QTimer reports;
    reports.setTimerType(Qt::PreciseTimer);
    connect(&reports, &QTimer::timeout, &device->output, [this, &device] { report(*device); });
    reports.start(reportMs);
    exec();
}

/// In the best format that the device takes; null when it takes none.
std::unique_ptr<PlayingDevice> QtSoundOutput::DeviceThread::startDevice() {
    for (const SampleKind kind : {SampleKind::float32, SampleKind::int16}) {
        if (!m_info.isFormatSupported(deviceFormat(kind))) continue;
        auto device = std::make_unique<PlayingDevice>(m_info, m_feed, kind);
        SoundSink& output = device->output;
        const int64 startedAt = m_feed.position() * nanosecondsPerSecond / TimelinePlayer::soundRate;
        output.setVolume(m_volume);
        output.start(&device->reader);
        if (output.state() == QAudio::StoppedState || output.error() == QAudio::OpenError) continue;
        const int64 period = periodOf(output) * nanosecondsPerMicrosecond;
        constexpr int64 noticedAfter = int64{reportMs} * 1'000'000;
        const std::lock_guard lock(m_mutex);
        m_startedAt = startedAt;
        m_clock.emplace(std::max(period, noticedAfter) + noticedAfter, m_wallClock.nanoseconds());
        return device;
    }
    return nullptr;
}

void QtSoundOutput::DeviceThread::report(PlayingDevice& device) {
    SoundSink& output = device.output;
    if (output.volume() != m_volume) output.setVolume(m_volume);
    // Idle it waits for samples, which is no loss; nobody here has stopped it.
    const bool isLost = output.state() == QAudio::StoppedState || output.error() == QAudio::FatalError;
    const int64 played = playedBy(device);
    const std::lock_guard lock(m_mutex);
    if (!m_clock) return;
    m_clock->report(played, m_wallClock.nanoseconds());
    if (isLost || m_clock->isStalled()) m_clock.reset();
}

QtSoundOutput::QtSoundOutput() = default;

QtSoundOutput::~QtSoundOutput() = default;

Outcome QtSoundOutput::start(SoundFeed& feed) {
    stop();
    silenceAlsa();
    // Asked here and not on the device's thread: what Qt keeps of the machine's sound system outlives that.
    const SoundDevice info = usualSoundDevice();
    if (info.isNull()) return Outcome::failure("There is no sound device on this machine.");
    auto device = std::make_unique<DeviceThread>(info, feed, m_volume);
    if (!device->begin())
        return Outcome::failure("The sound device \"" + nameOf(info) + "\" cannot be opened for stereo at 48000 Hz.");
    m_device = std::move(device);
    return Outcome();
}

void QtSoundOutput::stop() {
    m_device.reset();
}

void QtSoundOutput::setVolume(double volume) {
    m_volume = volume > 0 ? std::min(volume, 1.0) : 0;  // also of what is no number
    if (m_device) m_device->setVolume(m_volume);
}

std::optional<int64> QtSoundOutput::heard() const {
    return m_device ? m_device->heard() : std::nullopt;
}

}  // namespace qrtplay
