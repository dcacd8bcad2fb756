#include <QMediaDevices>

#include "viewer/playing/qrtSoundDevice.h"

namespace qrtplay {

SoundDevice usualSoundDevice() {
    return QMediaDevices::defaultAudioOutput();
}

std::string nameOf(SoundDevice const& device) {
    return device.description().toStdString();
}

QAudioFormat soundFormat(int rate, int channels, SampleKind kind) {
    QAudioFormat format;
    format.setSampleRate(rate);
    format.setChannelCount(channels);
    format.setSampleFormat(kind == SampleKind::float32 ? QAudioFormat::Float : QAudioFormat::Int16);
    return format;
}

qint64 periodOf(SoundSink const& /*sink*/) {
    return 0;
}

}  // namespace qrtplay
