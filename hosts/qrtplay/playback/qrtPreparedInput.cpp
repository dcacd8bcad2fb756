#include "playback/qrtPreparedInput.h"

#include <QtGlobal>
#include <cmath>
#include <utility>

#include "base/qrtLimits.h"
#include "graph/qrtColourManagement.h"
#include "media/qrtOpenPictures.h"

namespace qrtplay {

namespace {

bool isWanted(OcioSettings const& ocio) {
    return !ocio.config.empty() || !ocio.display.empty() || !ocio.view.empty() || !qEnvironmentVariableIsEmpty("OCIO");
}

TimelineComposition::Files openedFiles(OpenedInput const& input) {
    TimelineComposition::Files files;
    for (MediaReference const& reference : input.timeline->media())
        files.push_back(input.probe.pictures(reference.path));
    return files;
}

}  // namespace

QSize squarePixelSize(VideoFacts const& facts) {
    const double aspect = facts.sampleAspect.getValue();
    QSize size(facts.width, facts.height);
    const double width = aspect > 1 ? facts.width * aspect : facts.width;
    const double height = aspect > 0 && aspect < 1 ? facts.height / aspect : facts.height;
    // A header may claim any shape of a pixel; one that nobody can show is taken for a square.
    const bool isPlayable = width <= maxPictureSide && height <= maxPictureSide && width * height <= maxPicturePixels;
    if (isPlayable) size = QSize(static_cast<int>(std::lround(width)), static_cast<int>(std::lround(height)));
    return facts.clockwiseQuarterTurns % 2 == 0 ? size : size.transposed();
}

QSize ownSize(OpenedInput const& input) {
    for (MediaReference const& reference : input.timeline->media()) {
        if (const auto file = input.probe.pictures(reference.path)) return squarePixelSize(file->facts());
        std::unique_ptr<PictureSource> source;
        if (openPictures(reference, source).success() && source) return squarePixelSize(source->facts());
    }
    return {1920, 1080};
}

Outcome makePresentation(PlaySettings const& settings, Presentation& presentation) {
    presentation.scaling = settings.scaling;
    presentation.rate = settings.outputRate;
    OcioSettings const& ocio = settings.ocio;
    if (!isWanted(ocio)) return Outcome();
    return ColourManagement::create(ocio.config, ocio.display, ocio.view, presentation.colours);
}

Outcome prepareInput(PlayInput const& input, PlaySettings const& settings, PreparedInput& prepared, OpenFailure& why) {
    OpenedInput opened;
    InputFailure failure = InputFailure::refused;
    if (Outcome outcome = openInput(input, opened, failure); outcome.failed()) {
        why = failure == InputFailure::missing ? OpenFailure::input_missing : OpenFailure::refused;
        return outcome;
    }
    Presentation presentation;
    why = OpenFailure::failed;
    if (Outcome outcome = makePresentation(settings, presentation); outcome.failed()) return outcome;
    prepared.name = input.files.front();
    prepared.ownResolution = ownSize(opened);
    prepared.composition = TimelineComposition::create(opened.timeline, openedFiles(opened), std::move(presentation));
    for (std::string const& warning : opened.timeline->warnings())
        prepared.composition->noteWarning(warning);
    return Outcome();
}

}  // namespace qrtplay
