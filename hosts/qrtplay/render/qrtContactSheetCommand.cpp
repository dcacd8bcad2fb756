#include "render/qrtContactSheetCommand.h"

#include <QFileInfo>
#include <algorithm>
#include <iostream>
#include <memory>

#include "base/qrtPrintable.h"
#include "encode/qrtBlockImage.h"
#include "encode/qrtOutputFolder.h"
#include "encode/qrtStillWriter.h"
#include "playback/qrtTimecode.h"
#include "render/qrtConsole.h"
#include "render/qrtContactSheet.h"
#include "render/qrtFailureReport.h"
#include "render/qrtInterrupt.h"
#include "render/qrtOpenInput.h"
#include "render/qrtProgress.h"

namespace qrtplay {

namespace {

constexpr int sheetQuality = 90;  // of a JPEG

/// Frames from all over a clip, one from the middle of each part.
FrameRange spreadFrames(int64 frameCount, int64 tiles) {
    const int64 step = std::max<int64>(1, frameCount / tiles);
    const int64 shown = std::min(tiles, frameCount);
    FrameRange range;
    range.first = (frameCount - (shown - 1) * step - 1) / 2;
    range.step = static_cast<int32>(std::min<int64>(step, INT32_MAX));
    range.last = range.first + (shown - 1) * range.step;
    return range;
}

QString details(FrameSource const& source) {
    const double seconds = static_cast<double>(source.frameCount()) / source.rate().getValue();
    return QString("%1 x %2, %3 frames/s, %4 frames, %5")
        .arg(QString::number(source.resolution().width()), QString::number(source.resolution().height()),
             QString::fromStdString(rateText(source.rate())), QString::number(source.frameCount()),
             QString::fromStdString(durationText(seconds)));
}

int failWith(std::string const& message, ExitStatus status = exit_failed) {
    printError(message);
    return status;
}

/// Fetches the frames and draws them; false when some failed or the user has had enough.
bool drawFrames(FrameSource& source, FrameRange const& range, ContactSheet& sheet) {
    const bool isTerminal = standardErrorIsTerminal();
    const int64 clock = source.clockStart().nearestFrame(source.rate());
    Progress progress(std::cerr, isTerminal, range.count());
    FailureReport failures([&progress](std::string const& line) {
        progress.clear();
        printError(line);
    });
    for (int64 position = 0; position < range.count() && !Interrupt::isRequested(); ++position) {
        const int64 frame = range.frame(position);
        const QString number = QString::number(frame);
        const QString time = QString::fromStdString(timecode(clock + frame, source.rate()));
        PixelBlock block;
        if (Outcome outcome = source.fetch(frame, block); outcome.failed()) {
            failures.add(frame, outcome.message());
            sheet.drawMissing(static_cast<int>(position), number, time);
        } else {
            sheet.drawFrame(static_cast<int>(position), imageOf(block), number, time);
        }
        if (isTerminal) progress.update(position + 1);  // too short a job to fill a log with
    }
    failures.flush();
    progress.clear();
    return failures.count() == 0 && !Interrupt::isRequested();
}

}  // namespace

int runContactSheet(ContactSheetOptions const& options) {
    const Interrupt interrupt;
    std::string const& path = options.input.files.front();
    std::unique_ptr<FrameSource> source;
    ExitStatus status = exit_failed;
    if (Outcome outcome = openFrameSource(options.input, options.play, source, status); outcome.failed())
        return failWith(outcome.message(), status);
    OutputPattern output;
    if (Outcome outcome = OutputPattern::parse(options.output, output); outcome.failed())
        return failWith(outcome.message());
    if (Outcome outcome = prepareFolder(output.folder()); outcome.failed()) return failWith(outcome.message());

    const int64 frameCount = source->frameCount();
    const FrameRange range = spreadFrames(frameCount, int64{options.columns} * options.rows);
    const int columns = static_cast<int>(std::min<int64>(options.columns, range.count()));
    const int rows = static_cast<int>((range.count() + columns - 1) / columns);
    ContactSheet sheet(options.width, columns, rows, source->resolution());
    sheet.drawTitle(QFileInfo(QString::fromStdString(printable(path))).fileName(), details(*source));

    if (Outcome outcome = source->start(range); outcome.failed()) return failWith(outcome.message());
    const bool complete = drawFrames(*source, range, sheet);
    source->stop();
    for (std::string const& warning : source->takeWarnings())
        printError("warning: " + warning);
    if (Interrupt::isRequested()) {
        printError("interrupted");
        return exit_interrupted;
    }
    Outcome written = writeStill(options.output, blockOf(sheet.finish()), sheetQuality);
    if (written.failed()) return failWith(written.message());
    std::cout << range.count() << " of " << frameCount << " frames on " << printable(options.output) << std::endl;
    return complete ? exit_done : exit_frames_failed;
}

}  // namespace qrtplay
