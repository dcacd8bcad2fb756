#include <QSysInfo>

#include "viewer/playing/qrtSoundDevice.h"

namespace qrtplay {

SoundDevice usualSoundDevice() {
    const QAudioDeviceInfo info = QAudioDeviceInfo::defaultOutputDevice();
    if (!info.isNull()) return info;
    // Without a sound server Qt knows of no default, though the machine may well have a device.
    for (QAudioDeviceInfo const& other : QAudioDeviceInfo::availableDevices(QAudio::AudioOutput)) {
        if (!other.isNull() && !other.deviceName().isEmpty()) return other;
    }
    return info;
}

std::string nameOf(SoundDevice const& device) {
    return device.deviceName().toStdString();
}

QAudioFormat soundFormat(int rate, int channels, SampleKind kind) {
    const bool isFloat = kind == SampleKind::float32;
    QAudioFormat format;
    format.setCodec("audio/pcm");
    format.setSampleRate(rate);
    format.setChannelCount(channels);
    format.setByteOrder(static_cast<QAudioFormat::Endian>(QSysInfo::ByteOrder));
    format.setSampleType(isFloat ? QAudioFormat::Float : QAudioFormat::SignedInt);
    format.setSampleSize(isFloat ? 32 : 16);
    return format;
}

qint64 periodOf(SoundSink const& sink) {
    return sink.format().durationForBytes(sink.periodSize());
}

}  // namespace qrtplay
