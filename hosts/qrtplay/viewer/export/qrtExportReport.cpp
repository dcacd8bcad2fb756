#include "viewer/export/qrtExportReport.h"

#include <rapidjson/document.h>

#include "playback/qrtTimecode.h"
#include "render/qrtConsole.h"

namespace qrtplay {

namespace {

using JsonLine = rapidjson::Document;

QString textIn(JsonLine const& line, char const* key) {
    const auto member = line.FindMember(key);
    if (member == line.MemberEnd() || !member->value.IsString()) return {};
    return QString::fromUtf8(member->value.GetString(), static_cast<int>(member->value.GetStringLength()));
}

int64 numberIn(JsonLine const& line, char const* key, int64 otherwise) {
    const auto member = line.FindMember(key);
    return member != line.MemberEnd() && member->value.IsInt64() ? member->value.GetInt64() : otherwise;
}

double secondsIn(JsonLine const& line, double otherwise) {
    const auto member = line.FindMember("seconds");
    return member != line.MemberEnd() && member->value.IsNumber() ? member->value.GetDouble() : otherwise;
}

QString whatFailed(int status) {
    switch (status) {
        case exit_usage: return "This cannot be exported";
        case exit_input_missing: return "Something to export from is missing";
        case exit_refused: return "A file cannot be used";
        case exit_no_opengl: return "There is no OpenGL to export with";
        default: return "The export failed";
    }
}

/// One run's outcome in words.
class SummaryWriter {
public:
    SummaryWriter(ExportReport const& report, ExportEnd const& end, ExportTarget const& target)
        : m_report(report), m_end(end), m_target(target) {}

    ExportSummary write() {
        // A process that is ended on its way out has told what became of it.
        const bool isEndKnown = m_end.how == ExportEnd::How::by_itself || m_report.exitStatus();
        const int status = m_end.how == ExportEnd::How::by_itself ? m_end.status : m_report.exitStatus().value_or(0);
        if (m_end.how == ExportEnd::How::not_started)
            m_summary.text = m_end.errorText;
        else if (isEndKnown && status == exit_done)
            tellSuccess();
        else if (isEndKnown && status == exit_frames_failed)
            tellFailedFrames();
        else if (m_end.wasCancelled || (isEndKnown && status == exit_interrupted))
            tellCancelled();
        else
            tellFailure(isEndKnown ? std::optional(status) : std::nullopt);
        return m_summary;
    }

private:
    void tellSuccess() {
        m_summary.success = true;
        m_summary.hasWritten = true;
        if (m_report.written() == 0 && m_report.skipped() > 0) {
            m_summary.text =
                "All is there already: " + framesText(m_report.skipped()) + ". Nothing had to be exported.";
            return;
        }
        m_summary.text = QString("%1 exported to %2 in %3.")
                             .arg(framesText(m_report.written()), m_target.output,
                                  QString::fromStdString(durationText(m_report.seconds())));
        if (m_report.skipped() > 0) m_summary.text += " " + framesText(m_report.skipped()) + " had been there already.";
    }

    void tellFailedFrames() {
        m_summary.hasWritten = m_target.isMovie() || m_report.written() > 0;
        if (m_target.isMovie())
            m_summary.text = QString(
                                 "The movie %1 is exported, but %2 of %3 could not be had. Each of them repeats "
                                 "the frame before it.")
                                 .arg(m_target.output)
                                 .arg(m_report.failed())
                                 .arg(framesText(m_report.total()));
        else
            m_summary.text = QString("%1 exported to %2. %3 could not be had.")
                                 .arg(framesText(m_report.written()), m_target.output, framesText(m_report.failed()));
    }

    void tellCancelled() {
        m_summary.text = m_end.wasCancelled ? "Cancelled." : "The export was interrupted.";
        if (m_end.how == ExportEnd::How::killed) {
            m_summary.text =
                "Cancelled. The export did not answer and was stopped. It may have left a file behind "
                "that has six random letters after its name; that can be deleted.";
        }
        tellWhatIsThere();
    }

    void tellFailure(std::optional<int> status) {
        const QString said = m_report.error().isEmpty() ? m_end.errorText : m_report.error();
        m_summary.text = status ? whatFailed(*status) : QString("The export broke off unexpectedly");
        m_summary.text += said.isEmpty() ? QString(".") : ": " + said;
        if (m_report.hasBegun()) tellWhatIsThere();
    }

    void tellWhatIsThere() {
        if (m_target.isMovie()) {
            m_summary.text += " No movie was written; it has to be exported from its start again.";
            return;
        }
        const int64 there = m_report.written() + m_report.skipped();
        m_summary.hasWritten = there > 0;
        m_summary.canGoOn = there > 0;
        if (there == 0)
            m_summary.text += " No frame was written.";
        else
            m_summary.text += QString(
                                  " %1 of %2 %3 there, each of them whole. Export with \"Only missing frames\" to "
                                  "do the others.")
                                  .arg(there)
                                  .arg(framesText(m_report.total() + m_report.skipped()), there == 1 ? "is" : "are");
    }

    ExportReport const& m_report;
    ExportEnd const& m_end;
    ExportTarget const& m_target;
    ExportSummary m_summary;
};

}  // namespace

void ExportReport::read(QByteArray const& line) {
    JsonLine json;
    if (json.Parse(line.constData(), static_cast<size_t>(line.size())).HasParseError() || !json.IsObject()) return;
    const QString event = textIn(json, "event");
    if (event == "start") {
        m_hasBegun = true;
        m_total = numberIn(json, "frames", 0);
    } else if (event == "frame") {
        ++m_written;
        m_seconds = secondsIn(json, m_seconds);
    } else if (event == "skipped") {
        ++m_skipped;
    } else if (event == "failed") {
        ++m_failed;
        if (m_failures.size() < mostFailures)
            m_failures << QString("Frame %1: %2").arg(numberIn(json, "frame", 0)).arg(textIn(json, "message"));
    } else if (event == "warning") {
        m_warnings << textIn(json, "message");
    } else if (event == "error") {
        m_error = textIn(json, "message");
    } else if (event == "summary") {
        m_exitStatus = static_cast<int>(numberIn(json, "exit", exit_done));
        m_seconds = secondsIn(json, m_seconds);
    }
}

std::optional<double> ExportReport::secondsLeft() const {
    if (m_written < 2 || m_seconds <= 0) return std::nullopt;
    return m_seconds / static_cast<double>(done()) * static_cast<double>(m_total - done());
}

ExportSummary summaryOf(ExportReport const& report, ExportEnd const& end, ExportTarget const& target) {
    return SummaryWriter(report, end, target).write();
}

QString framesText(int64 count) {
    return QString::number(count) + (count == 1 ? " frame" : " frames");
}

}  // namespace qrtplay
