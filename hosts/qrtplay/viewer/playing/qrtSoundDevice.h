#pragma once

#include <QAudioFormat>
#include <string>
#if QT_VERSION_MAJOR == 5
#include <QAudioDeviceInfo>
#include <QAudioOutput>
#else
#include <QAudioDevice>
#include <QAudioSink>
#endif

#include "sound/qrtHostAudioFormat.h"

namespace qrtplay {

// What Qt 5 and Qt 6 have different words for: each has a source of its own, and a build has one of them.

#if QT_VERSION_MAJOR == 5
using SoundDevice = QAudioDeviceInfo;
using SoundSink = QAudioOutput;
#else
using SoundDevice = QAudioDevice;
using SoundSink = QAudioSink;
#endif

/// The default device, or one that there is; null when there is none.
[[nodiscard]] SoundDevice usualSoundDevice();

/// As its users know it.
[[nodiscard]] std::string nameOf(SoundDevice const& device);

/// Of samples in this machine's byte order.
[[nodiscard]] QAudioFormat soundFormat(int rate, int channels, SampleKind kind);

/// Microseconds from one report of a sink that plays to its next; 0 when Qt does not tell.
[[nodiscard]] qint64 periodOf(SoundSink const& sink);

}  // namespace qrtplay
