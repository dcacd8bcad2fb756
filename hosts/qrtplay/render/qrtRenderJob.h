#pragma once

#include <functional>
#include <vector>

#include "base/qrtKit.h"
#include "render/qrtConsole.h"
#include "render/qrtFrameSink.h"
#include "render/qrtFrameSource.h"
#include "render/qrtRenderReport.h"
#include "render/qrtSoundCutter.h"

namespace qrtplay {

/// Takes frames from a source to a sink and reports what becomes of them.
///
/// Threading: one thread.
class RenderJob final {
public:
    /// Asked between frames: whether the user has had enough.
    using IsInterrupted = std::function<bool()>;

    RenderJob(FrameSource& source, FrameSink& sink, RenderReport& report, IsInterrupted isInterrupted)
        : m_source(source),
          m_sink(sink),
          m_report(report),
          m_isInterrupted(std::move(isInterrupted)),
          m_sound(source.rate()) {}

    /// `loops`: how many times the ranges are played.
    /// The result is `exit_done`, `exit_frames_failed`, `exit_failed` or `exit_interrupted`.
    ExitStatus run(std::vector<FrameRange> const& ranges, bool withSound, int64 loops);
    [[nodiscard]] LoopMemory const& memory() const noexcept { return m_memory; }

private:
    [[nodiscard]] bool goesOn() const { return !m_isBroken && !m_sink.isBroken() && !m_isInterrupted(); }
    Outcome play(FrameRange const& range, bool withSound);
    void playFrame(int64 frame, bool withSound);
    [[nodiscard]] std::vector<float> soundOfNextFrame();
    void tellResults();
    ExitStatus finish();

    FrameSource& m_source;
    FrameSink& m_sink;
    RenderReport& m_report;
    const IsInterrupted m_isInterrupted;
    SoundCutter m_sound;
    LoopMemory m_memory;
    bool m_isBroken = false;
    bool m_soundHasFailed = false;
};

}  // namespace qrtplay
