#include "render/qrtDryRun.h"

#include <iostream>
#include <optional>

#include "base/qrtPrintable.h"
#include "playback/qrtTimecode.h"
#include "render/qrtJsonText.h"
#include "render/qrtOpenInput.h"
#include "render/qrtRenderPlan.h"

namespace qrtplay {

namespace {

/// One dry run.
class DryRun {
public:
    explicit DryRun(RenderOptions const& options) : m_options(options), m_isMovie(isMovie(options.format.kind)) {}

    int run() {
        ExitStatus status = exit_failed;
        if (Outcome outcome = describeInput(m_options.input, m_options.play, m_facts, status); outcome.failed())
            return fail(outcome, status);
        RenderPlan plan;
        if (Outcome outcome = planRender(m_options, m_facts.frameCount, plan); outcome.failed())
            return fail(Outcome::failure(m_options.input.files.front() + ": " + outcome.message()), exit_usage);
        m_total = totalFrames(plan.asked);
        for (std::string const& warning : m_facts.warnings)
            printError("warning: " + warning);
        if (m_isMovie)
            tellFile(m_options.output.text(), std::nullopt, plan.isWholeMovieThere);
        else
            tellImages(plan);
        tellSummary();
        return exit_done;
    }

private:
    int fail(Outcome const& outcome, ExitStatus status) {
        printError(outcome.message());
        if (!m_options.isJson) return status;
        JsonText error;
        error.beginObject().add("event", "error").add("message", outcome.message()).endObject();
        JsonText summary;
        summary.beginObject()
            .add("event", "summary")
            .add("exit", static_cast<int>(status))
            .add("dry_run", true)
            .endObject();
        std::cout << error.text() << '\n' << summary.text() << std::endl;
        return status;
    }

    void tellImages(RenderPlan const& plan) {
        for (RenderPlan::Skipped const& skipped : plan.skipped)
            tellFile(skipped.path, skipped.frame, true);
        for (FrameRange const& range : plan.frames) {
            for (int64 position = 0; position < range.count(); ++position) {
                const int64 frame = range.frame(position);
                tellFile(m_options.output.pathOf(frame), frame, false);
            }
        }
    }

    void tellFile(std::string const& path, std::optional<int64> frame, bool isSkipped) {
        const bool replaces = !isSkipped && isWritten(path);
        int64& count = isSkipped ? m_toSkip : replaces ? m_toReplace : m_toWrite;
        ++count;
        std::string const action = isSkipped ? "skip" : replaces ? "replace" : "write";
        if (!m_options.isJson) {
            constexpr size_t column = 9;
            std::cout << action << std::string(column - action.size(), ' ') << printable(path) << '\n';
            return;
        }
        JsonText json;
        json.beginObject().add("event", "plan").add("action", action).add("path", path);
        if (frame)
            json.add("frame", *frame);
        else
            json.addNull("frame");
        std::cout << json.endObject().text() << '\n';
    }

    [[nodiscard]] bool hasSound() const { return m_isMovie && m_options.withSound && m_facts.hasSound; }

    void tellSummary() const {
        if (!m_options.isJson) {
            std::cout << "dry run: " << m_total << " frames of " << m_facts.resolution.width() << " x "
                      << m_facts.resolution.height() << ", " << rateText(m_facts.rate) << " frames/s, "
                      << nameOf(m_options.format.depth) << " bits";
            if (m_isMovie)
                std::cout << ", " << nameOf(m_options.format.codec) << (hasSound() ? " with sound" : ", no sound");
            std::cout << "; files: " << m_toWrite << " to write, " << m_toReplace << " to replace, " << m_toSkip
                      << " to skip" << std::endl;
            return;
        }
        JsonText json;
        json.beginObject().add("event", "summary").add("exit", static_cast<int>(exit_done)).add("dry_run", true);
        json.add("total", m_total).add("to_write", m_toWrite).add("to_replace", m_toReplace).add("to_skip", m_toSkip);
        json.add("output", m_options.output.text());
        if (m_isMovie)
            json.add("codec", nameOf(m_options.format.codec));
        else
            json.addNull("codec");
        json.add("depth", nameOf(m_options.format.depth)).add("width", m_facts.resolution.width());
        json.add("height", m_facts.resolution.height())
            .add("rate", fractionText(m_facts.rate))
            .add("sound", hasSound());
        std::cout << json.endObject().text() << std::endl;
    }

    RenderOptions const& m_options;
    const bool m_isMovie;
    InputFacts m_facts;
    int64 m_total = 0;
    int64 m_toWrite = 0;
    int64 m_toReplace = 0;
    int64 m_toSkip = 0;
};

}  // namespace

int runDryRun(RenderOptions const& options) {
    return DryRun(options).run();
}

}  // namespace qrtplay
