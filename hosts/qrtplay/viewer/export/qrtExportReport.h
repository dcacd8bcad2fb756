#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

#include "base/qrtKit.h"
#include "viewer/export/qrtExportJob.h"

namespace qrtplay {

/// What a run of `qrtplay render --json` has told so far, line by line.
class ExportReport final {
public:
    /// So many failed frames are kept in words; the others only count.
    static constexpr int mostFailures = 1000;

    /// Lines that are none of the report's are passed over.
    void read(QByteArray const& line);

    [[nodiscard]] bool hasBegun() const noexcept { return m_hasBegun; }
    [[nodiscard]] int64 total() const noexcept { return m_total; }  ///< frames to be rendered
    [[nodiscard]] int64 done() const noexcept { return m_written + m_failed; }
    [[nodiscard]] int64 written() const noexcept { return m_written; }  ///< the file of a movie is not whole yet
    [[nodiscard]] int64 skipped() const noexcept { return m_skipped; }  ///< their files were there
    [[nodiscard]] int64 failed() const noexcept { return m_failed; }
    [[nodiscard]] QStringList const& failures() const noexcept { return m_failures; }  ///< "Frame 7: why"
    [[nodiscard]] QStringList const& warnings() const noexcept { return m_warnings; }
    [[nodiscard]] QString error() const { return m_error; }  ///< why the run ended; empty when it went well
    /// The exit status as the last line tells it.
    [[nodiscard]] std::optional<int> exitStatus() const noexcept { return m_exitStatus; }
    [[nodiscard]] double seconds() const noexcept { return m_seconds; }
    /// None before the first frame, whose time tells nothing yet.
    [[nodiscard]] std::optional<double> secondsLeft() const;

private:
    bool m_hasBegun = false;
    int64 m_total = 0;
    int64 m_written = 0;
    int64 m_skipped = 0;
    int64 m_failed = 0;
    double m_seconds = 0;
    QStringList m_failures;
    QStringList m_warnings;
    QString m_error;
    std::optional<int> m_exitStatus;
};

/// How the process has ended.
struct ExportEnd {
    enum class How { by_itself, crashed, killed, not_started };

    How how = How::by_itself;
    int status = 0;  ///< of a process that ended by itself
    bool wasCancelled = false;
    QString errorText;  ///< the last that it said to people
};

/// What became of an export, for its user.
struct ExportSummary {
    bool success = false;     ///< all is there
    bool hasWritten = false;  ///< something is there
    bool canGoOn = false;     ///< another run with `onlyMissing` does the rest
    QString text;
};

[[nodiscard]] ExportSummary summaryOf(ExportReport const& report, ExportEnd const& end, ExportTarget const& target);

/// "1 frame", "48 frames"
[[nodiscard]] QString framesText(int64 count);

}  // namespace qrtplay
