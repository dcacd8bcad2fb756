#include "render/qrtRenderCommand.h"

#include <QString>
#include <iostream>
#include <memory>

#include "render/qrtConsole.h"
#include "render/qrtFailureReport.h"
#include "render/qrtImageWriter.h"
#include "render/qrtInterrupt.h"
#include "render/qrtProgress.h"

namespace qrtplay {

namespace {

/// One run of the command.
class Rendering {
public:
    Rendering(RenderOptions const& options, PlaySession& session, std::vector<FrameRange> frames)
        : m_options(options), m_session(session), m_frames(std::move(frames)), m_total(totalFrames(m_frames)),
          m_progress(std::cerr, standardErrorIsTerminal(), m_total), m_failures([this](std::string const& line) {
              m_progress.clear();
              printError(line);
          }) {}

    int run() {
        for (FrameRange const& range : m_frames) {
            if (Outcome outcome = play(range); outcome.failed()) {
                m_progress.clear();
                printError(outcome.message());
                m_aborted = true;
            }
            if (m_aborted || Interrupt::isRequested()) break;
        }
        m_writer.finish();
        noteWritingFailures();
        m_failures.flush();
        m_progress.clear();
        return report();
    }

private:
    Outcome play(FrameRange const& range) {
        if (Outcome outcome = m_session.start(range); outcome.failed()) return outcome;
        for (int64 position = 0; position < range.count() && !Interrupt::isRequested(); ++position) {
            const int64 frame = range.frame(position);
            QImage image;
            if (Outcome outcome = m_session.fetch(frame, image); outcome.failed())
                m_failures.add(frame, outcome.message());
            else
                m_writer.write(frame, m_options.output.pathOf(frame), std::move(image));
            noteWritingFailures();
            m_progress.update(++m_done);
        }
        m_session.stop();
        return Outcome();
    }

    void noteWritingFailures() {
        for (ImageWriter::Failure const& failure : m_writer.takeFailures()) m_failures.add(failure.frame, failure.message);
    }

    int report() const {
        PlaySession::Counts const& counts = m_session.counts();
        const double seconds = m_progress.elapsedSeconds();
        const double perSecond = seconds > 0 ? static_cast<double>(counts.delivered) / seconds : 0;
        const int64 written = m_done - m_failures.count();
        const QString line = QString("%1 of %2 frames written to %3: %4 frames/s, %5 produced on demand, %6 cache hits")
                                 .arg(QString::number(written), QString::number(m_total),
                                      QString::fromStdString(m_options.output.text()),
                                      QString::number(perSecond, 'f', 1), QString::number(counts.onDemand),
                                      QString::number(counts.cacheHits));
        std::cout << line.toStdString() << std::endl;
        if (Interrupt::isRequested()) {
            printError("interrupted");
            return exit_interrupted;
        }
        return written == m_total ? exit_done : exit_failed;
    }

    RenderOptions const& m_options;
    PlaySession& m_session;
    const std::vector<FrameRange> m_frames;
    const int64 m_total;
    Progress m_progress;
    FailureReport m_failures;
    ImageWriter m_writer;
    int64 m_done = 0;
    bool m_aborted = false;
};

int failWith(Outcome const& outcome) {
    printError(outcome.message());
    return exit_failed;
}

}  // namespace

int runRender(RenderOptions const& options) {
    const Interrupt interrupt;
    std::unique_ptr<PlaySession> session;
    if (Outcome outcome = PlaySession::open(options.clip, options.play, session); outcome.failed())
        return failWith(outcome);

    std::vector<FrameRange> frames = options.frames;
    if (frames.empty()) frames.push_back({0, session->facts().frameCount - 1, 1});
    if (Outcome outcome = checkFrameRanges(frames, session->facts().frameCount); outcome.failed())
        return failWith(Outcome::failure(options.clip + ": " + outcome.message()));
    if (!options.output.hasNumber() && totalFrames(frames) > 1)
        return failWith(Outcome::failure("output '" + options.output.text() +
                                         "': has no place for the number of more than one frame; add '####'"));
    if (Outcome outcome = prepareFolder(options.output.folder()); outcome.failed()) return failWith(outcome);
    return Rendering(options, *session, std::move(frames)).run();
}

}  // namespace qrtplay
