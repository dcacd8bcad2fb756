#include "render/qrtRenderPlan.h"

#include <QFileInfo>
#include <optional>

namespace qrtplay {

namespace {

/// The parts of `range` whose files are missing; the others go to `plan.skipped`.
void addMissing(FrameRange const& range, OutputPattern const& output, RenderPlan& plan) {
    std::optional<FrameRange> part;
    for (int64 position = 0; position < range.count(); ++position) {
        const int64 frame = range.frame(position);
        if (const std::string path = output.pathOf(frame); isWritten(path)) {
            plan.skipped.push_back({frame, path});
            if (part) plan.frames.push_back(*part);
            part.reset();
        } else if (part) {
            part->last = frame;
        } else {
            part = FrameRange{frame, frame, range.step};
        }
    }
    if (part) plan.frames.push_back(*part);
}

}  // namespace

bool isWritten(std::string const& path) {
    const QFileInfo file(QString::fromStdString(path));
    return file.isFile() && file.size() > 0;
}

Outcome planRender(RenderOptions const& options, int64 frameCount, RenderPlan& plan) {
    RenderPlan planned;
    planned.asked = options.frames;
    if (Outcome outcome = fitFrameRanges(planned.asked, frameCount); outcome.failed()) return outcome;
    const bool isMovieOutput = options.hasOutput && isMovie(options.format.kind);
    if (options.hasOutput && !isMovieOutput && !options.output.hasNumber() && totalFrames(planned.asked) > 1)
        return Outcome::failure("output '" + options.output.text() +
                                "': has no place for the number of more than one frame; add '####'");
    planned.isWholeMovieThere = isMovieOutput && options.skipExisting && isWritten(options.output.text());
    if (options.skipExisting && options.hasOutput && !isMovieOutput) {
        for (FrameRange const& range : planned.asked)
            addMissing(range, options.output, planned);
    } else if (!planned.isWholeMovieThere) {
        planned.frames = planned.asked;
    }
    plan = std::move(planned);
    return Outcome();
}

}  // namespace qrtplay
