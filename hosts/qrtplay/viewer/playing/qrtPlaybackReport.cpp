#include "viewer/playing/qrtPlaybackReport.h"

#include <algorithm>

#include "playback/qrtTimecode.h"

namespace qrtplay {

namespace {

QString milliseconds(int64 nanoseconds) {
    constexpr double perMillisecond = 1e6;
    return QString::number(static_cast<double>(nanoseconds) / perMillisecond, 'f', 1) + " ms";
}

QString formatText(SharedPtr<VideoBuffer> const& buffer) {
    if (!buffer) return "no frame";
    const VideoBufferResolution format = buffer->getResolution();
    const bool isMemory = buffer->getType() == VideoBuffer::memoryKind;
    return QString("%1 x %2, %3 x %4 bits%5, %6")
        .arg(format.getWidth())
        .arg(format.getHeight())
        .arg(format.getNumChannels())
        .arg(format.getBitsPerChannel())
        .arg(format.isFloat() ? " float" : "", isMemory ? "memory" : "texture");
}

/// A frame that was rendered ahead tells nothing of what reading it back took: it was there.
QString timesText(Playback const& playback, FetchedFrame const& shown) {
    const int64 render = playback.player()->composition().renderTime();
    const QString text = milliseconds(render) + " to render, ";
    if (shown.wasReady) return text + milliseconds(shown.nanoseconds) + " to fetch";
    return text + milliseconds(std::max<int64>(0, shown.nanoseconds - render)) + " to finish and read back";
}

QString rateWords(Playback const& playback) {
    const QString wanted = QString::fromStdString(rateText(playback.player()->rate()));
    const double real = playback.statistics().rate;
    return QString("%1 frames/s wanted, %2 shown")
        .arg(wanted, playback.isPlaying() ? QString::number(real, 'f', 1) : "-");
}

}  // namespace

QString modeText(PlayParams::PlayMode mode) {
    switch (mode) {
        case PlayParams::loop: return "Loop";
        case PlayParams::ping_pong: return "Ping-pong";
        default: return "Plays once";
    }
}

QString speedText(Playback const& playback) {
    if (!playback.isPlaying()) return {};
    QString text = QString::number(playback.step()) + "x";
    if (playback.mode() == PlayParams::loop) text += " loop";
    if (playback.mode() == PlayParams::ping_pong) text += " ping-pong";
    return text;
}

QStringList overlayLines(Playback const& playback, FrameNumbering const& numbering, FetchedFrame const& shown) {
    if (!playback.player()) return {};
    const auto statistics = playback.statistics();
    const int64 frame = shown.frame;
    QStringList lines;
    lines << "TC " + numbering.timecode(frame, false);
    if (numbering.hasDropFrame()) lines.last() += "   DF " + numbering.timecode(frame, true);
    lines << QString("frame %1 of %2").arg(frame).arg(playback.whole().last + 1);
    lines << rateWords(playback);
    lines << QString("%1 shown, %2 skipped, %3 late")
                 .arg(statistics.counts.shown)
                 .arg(statistics.counts.skipped)
                 .arg(statistics.counts.late);
    lines << QString("%1 rendered ahead, %2 on demand").arg(statistics.cacheHits).arg(statistics.onDemand);
    lines << timesText(playback, shown);
    lines << formatText(shown.buffer);
    lines << QString(playback.policy() == PacePolicy::real_time ? "real time" : "every frame") +
                 (playback.followsSound() ? ", follows the sound" : ", follows the clock");
    return lines;
}

QString statusText(Playback const& playback) {
    if (!playback.player()) return {};
    const auto counts = playback.statistics().counts;
    QStringList parts{modeText(playback.mode()),
                      playback.policy() == PacePolicy::real_time ? "real time" : "every frame"};
    if (playback.isPlaying()) parts << rateWords(playback);
    if (counts.skipped > 0) parts << QString("%1 skipped").arg(counts.skipped);
    if (counts.late > 0) parts << QString("%1 late").arg(counts.late);
    return parts.join("  |  ");
}

}  // namespace qrtplay
