#include "render/qrtRenderCommand.h"

#include <iostream>
#include <memory>

#include "encode/qrtOutputFolder.h"
#include "options/qrtShellWords.h"
#include "playback/qrtTimecode.h"
#include "render/qrtInterrupt.h"
#include "render/qrtOpenInput.h"
#include "render/qrtRenderJob.h"
#include "render/qrtRenderPlan.h"

namespace qrtplay {

namespace {

/// One run of the command.
class Rendering {
public:
    explicit Rendering(RenderOptions const& options)
        : m_options(options),
          m_isMovie(options.hasOutput && isMovie(options.format.kind)),
          m_report({std::cout, std::cerr, standardErrorIsTerminal()}, options.isJson) {}

    int run() {
        ExitStatus status = exit_failed;
        if (Outcome outcome = openFrameSource(m_options.input, m_options.play, m_source, status); outcome.failed())
            return fail(outcome, status);
        if (Outcome outcome = planRender(m_options, m_source->frameCount(), m_plan); outcome.failed())
            return fail(Outcome::failure(m_options.input.files.front() + ": " + outcome.message()), exit_usage);
        if (m_options.hasOutput) {
            Outcome outcome = prepareFolder(m_options.output.folder());
            if (outcome.failed()) return fail(outcome, exit_failed);
        }
        m_report.start(factsOfRun());
        for (std::string const& warning : m_source->takeWarnings())
            m_report.warn(warning);
        for (RenderPlan::Skipped const& skipped : m_plan.skipped)
            m_report.skipped(skipped.frame, skipped.path);
        if (m_plan.isWholeMovieThere) return keepMovie();
        std::unique_ptr<FrameSink> sink;
        if (Outcome outcome = openSink(sink); outcome.failed()) return fail(outcome, exit_failed);
        return play(*sink);
    }

private:
    int fail(Outcome const& outcome, ExitStatus status) {
        m_report.error(outcome.message());
        return m_report.finish(status, {}, {});
    }

    /// The movie is one file, and so counts as all of its frames.
    int keepMovie() {
        for (FrameRange const& range : m_plan.asked)
            for (int64 position = 0; position < range.count(); ++position)
                m_report.skipped(range.frame(position), m_options.output.text());
        return m_report.finish(exit_done, {}, {});
    }

    [[nodiscard]] bool hasSound() const {
        return m_isMovie && m_options.withSound && m_source->hasSound() && SoundCutter::canFollow(m_plan.asked);
    }

    [[nodiscard]] RunFacts factsOfRun() const {
        RunFacts facts;
        facts.inputs = m_options.input.files;
        if (m_options.hasOutput) facts.output = m_options.output.text();
        if (m_isMovie) facts.codec = nameOf(m_options.format.codec);
        facts.depth = nameOf(m_options.format.depth);
        facts.size = m_source->resolution();
        facts.rate = m_source->rate();
        facts.frames = totalFrames(m_plan.frames) * m_options.loops;
        facts.hasSound = hasSound();
        return facts;
    }

    [[nodiscard]] MovieSettings settingsOfMovie() const {
        MovieSettings settings;
        settings.format = m_options.format;
        settings.width = m_source->resolution().width();
        settings.height = m_source->resolution().height();
        settings.rate = m_source->rate();
        settings.hasSound = hasSound();
        const int64 clock = m_source->clockStart().nearestFrame(settings.rate);
        settings.timecode = timecode(clock + m_plan.frames.front().first, settings.rate);
        return settings;
    }

    Outcome openSink(std::unique_ptr<FrameSink>& sink) {
        if (!m_options.hasOutput) {
            sink = makeNullSink();
            return Outcome();
        }
        if (!m_isMovie) {
            sink = makeImageSink(m_options.output, m_options.format.quality);
            return Outcome();
        }
        if (m_options.withSound && m_source->hasSound() && !hasSound())
            m_report.warn("the movie has no sound: its frames do not follow each other");
        return makeMovieSink(m_options.output.text(), settingsOfMovie(), sink);
    }

    int play(FrameSink& sink) {
        RenderJob job(*m_source, sink, m_report, &Interrupt::isRequested);
        const ExitStatus status = job.run(m_plan.frames, hasSound(), m_options.loops);
        if (status == exit_interrupted) m_report.interrupted(resumeCommand());
        return m_report.finish(status, m_source->counts(), job.memory());
    }

    /// A movie begins anew, images go on where they are missing.
    [[nodiscard]] std::string resumeCommand() const {
        std::vector<std::string> words = m_options.words;
        const bool isImages = m_options.hasOutput && !m_isMovie;
        // Before "--", which ends the options.
        if (isImages && !m_options.skipExisting) words.insert(words.begin() + 2, "--skip-existing");
        return shellCommand(words);
    }

    RenderOptions const& m_options;
    const bool m_isMovie;
    RenderReport m_report;
    std::unique_ptr<FrameSource> m_source;
    RenderPlan m_plan;
};

}  // namespace

int runRender(RenderOptions const& options) {
    const Interrupt interrupt;
    return Rendering(options).run();
}

int reportNoOpenGl(RenderOptions const& options, std::string const& why) {
    RenderReport report({std::cout, std::cerr, standardErrorIsTerminal()}, options.isJson);
    report.error(why);
    return report.finish(exit_no_opengl, {}, {});
}

}  // namespace qrtplay
