#include "render/qrtRenderJob.h"

#include <utility>

#include "encode/qrtMovieSettings.h"
#include "render/qrtMemoryUse.h"

namespace qrtplay {

ExitStatus RenderJob::run(std::vector<FrameRange> const& ranges, bool withSound, int64 loops) {
    for (int64 loop = 1; loop <= loops && goesOn(); ++loop) {
        for (FrameRange const& range : ranges) {
            if (!goesOn()) break;
            if (Outcome outcome = play(range, withSound); outcome.failed()) {
                m_report.error(outcome.message());
                m_isBroken = true;
            }
        }
        if (loops == 1) continue;
        m_memory.loops = loop;
        m_memory.end = residentBytes();
        if (loop == 1) m_memory.firstLoop = m_memory.end;
        m_report.loopEnded(loop, m_memory.end);
    }
    return finish();
}

Outcome RenderJob::play(FrameRange const& range, bool withSound) {
    if (Outcome outcome = m_source.start(range); outcome.failed()) return outcome;
    m_sound.begin(range.first);
    for (int64 position = 0; position < range.count() && goesOn(); ++position) {
        playFrame(range.frame(position), withSound);
        tellResults();
    }
    m_source.stop();
    return Outcome();
}

void RenderJob::playFrame(int64 frame, bool withSound) {
    PixelBlock block;
    const Outcome outcome = m_source.fetch(frame, block);
    std::vector<float> sound;
    if (withSound) sound = soundOfNextFrame();
    if (outcome.success()) {
        m_sink.write(frame, std::move(block), std::move(sound));
        return;
    }
    m_report.failed(frame, outcome.message());
    m_sink.writeMissing(frame, std::move(sound));
}

std::vector<float> RenderJob::soundOfNextFrame() {
    const SoundCutter::Part part = m_sound.next();
    std::vector<float> samples;
    const Outcome outcome = m_source.readSound(part.firstSample, part.count, samples);
    // Said once: a sound file that cannot be read would bury the user in lines.
    if (outcome.failed() && !std::exchange(m_soundHasFailed, true))
        m_report.warn(outcome.message() + "; silence takes its place");
    samples.resize(static_cast<size_t>(part.count) * movieChannels);
    return samples;
}

void RenderJob::tellResults() {
    for (std::string const& warning : m_source.takeWarnings())
        m_report.warn(warning);
    for (WriteResult const& result : m_sink.takeResults()) {
        if (result.failed())
            m_report.failed(result.frame, "frame " + std::to_string(result.frame) + ": " + result.failure);
        else
            m_report.wrote(result.frame, result.path);
    }
}

ExitStatus RenderJob::finish() {
    const bool isInterrupted = m_isInterrupted();
    if (isInterrupted && m_sink.isLostWhenUnfinished()) {
        tellResults();
        m_report.dropWritten();
        return exit_interrupted;
    }
    const Outcome finished = m_sink.finish();
    tellResults();
    if (finished.failed()) {
        m_report.error(finished.message());
        m_report.dropWritten();
        return exit_failed;
    }
    if (isInterrupted) return exit_interrupted;
    if (m_isBroken) return exit_failed;
    if (m_report.failures() == 0) return exit_done;
    if (const std::string note = m_sink.noteOnMissing(); !note.empty()) m_report.warn(note);
    return exit_frames_failed;
}

}  // namespace qrtplay
