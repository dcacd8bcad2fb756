#include "render/qrtContactSheetCommand.h"

#include <QFileInfo>
#include <algorithm>
#include <iostream>
#include <memory>

#include "render/qrtConsole.h"
#include "render/qrtContactSheet.h"
#include "render/qrtFailureReport.h"
#include "render/qrtImageWriter.h"
#include "render/qrtInterrupt.h"
#include "render/qrtProgress.h"
#include "render/qrtTimecode.h"

namespace qrtplay {

namespace {

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

QString details(PlaySession const& session) {
    VideoFacts const& facts = session.facts();
    const double seconds = static_cast<double>(facts.frameCount) / facts.frameRate.getValue();
    return QString("%1 x %2, %3 frames/s, %4 frames, %5")
        .arg(QString::number(facts.width), QString::number(facts.height),
             QString::fromStdString(rateText(facts.frameRate)), QString::number(facts.frameCount),
             QString::fromStdString(durationText(seconds)));
}

int failWith(std::string const& message) {
    printError(message);
    return exit_failed;
}

/// Fetches the frames and draws them; false when some failed or the user has had enough.
bool drawFrames(PlaySession& session, FrameRange const& range, ContactSheet& sheet) {
    const bool isTerminal = standardErrorIsTerminal();
    Progress progress(std::cerr, isTerminal, range.count());
    FailureReport failures([&progress](std::string const& line) {
        progress.clear();
        printError(line);
    });
    for (int64 position = 0; position < range.count() && !Interrupt::isRequested(); ++position) {
        const int64 frame = range.frame(position);
        const QString number = QString::number(frame);
        const QString time = QString::fromStdString(timecode(frame, session.facts().frameRate));
        QImage image;
        if (Outcome outcome = session.fetch(frame, image); outcome.failed()) {
            failures.add(frame, outcome.message());
            sheet.drawMissing(static_cast<int>(position), number, time);
        } else {
            sheet.drawFrame(static_cast<int>(position), image, number, time);
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
    std::unique_ptr<PlaySession> session;
    if (Outcome outcome = PlaySession::open(options.clip, {}, session); outcome.failed()) return failWith(outcome.message());
    OutputPattern output;
    if (Outcome outcome = OutputPattern::parse(options.output, output); outcome.failed())
        return failWith(outcome.message());
    if (Outcome outcome = prepareFolder(output.folder()); outcome.failed()) return failWith(outcome.message());

    const int64 frameCount = session->facts().frameCount;
    const FrameRange range = spreadFrames(frameCount, int64{options.columns} * options.rows);
    const int columns = static_cast<int>(std::min<int64>(options.columns, range.count()));
    const int rows = static_cast<int>((range.count() + columns - 1) / columns);
    ContactSheet sheet(options.width, columns, rows, session->resolution());
    sheet.drawTitle(QFileInfo(QString::fromStdString(options.clip)).fileName(), details(*session));

    if (Outcome outcome = session->start(range); outcome.failed()) return failWith(outcome.message());
    const bool complete = drawFrames(*session, range, sheet);
    session->stop();
    if (Interrupt::isRequested()) {
        printError("interrupted");
        return exit_interrupted;
    }
    if (Outcome outcome = writePng(options.output, sheet.finish()); outcome.failed()) return failWith(outcome.message());
    std::cout << range.count() << " of " << frameCount << " frames on " << options.output << std::endl;
    return complete ? exit_done : exit_failed;
}

}  // namespace qrtplay
