#pragma once

#include <QObject>
#include <QProcess>
#include <QTimer>
#include <chrono>

#include "viewer/export/qrtExportReport.h"

namespace qrtplay {

/// One run of `qrtplay render --json` in a process of its own.
///
/// Nothing here waits, except that the destructor ends a process that still runs.
/// Threading: the GUI thread.
class ExportProcess final : public QObject {
    Q_OBJECT

public:
    /// How long a cancelled process may take to finish the frames that it is writing.
    static constexpr std::chrono::milliseconds usualPatience{10000};

    explicit ExportProcess(QObject* parent = nullptr);
    ~ExportProcess() override;

    /// `ended` follows in every case, possibly at once.
    void start(QString const& program, QStringList const& arguments);
    /// Ends it between two frames; kills it when it has not ended after the time of patience.
    void cancel();
    void setPatience(std::chrono::milliseconds patience) noexcept { m_patience = patience; }

    [[nodiscard]] bool isRunning() const noexcept { return m_isRunning; }
    [[nodiscard]] bool isCancelled() const noexcept { return m_end.wasCancelled; }
    [[nodiscard]] ExportReport const& report() const noexcept { return m_report; }
    [[nodiscard]] ExportEnd const& end() const noexcept { return m_end; }

signals:
    void progressed();
    void ended();

private:
    void readOutput();
    void readErrors();
    void noteError(QProcess::ProcessError error);
    void noteEnd(int status, QProcess::ExitStatus how);
    void finish();

    QProcess m_process;
    QTimer m_killTimer;
    std::chrono::milliseconds m_patience = usualPatience;
    ExportReport m_report;
    ExportEnd m_end;
    QByteArray m_errors;
    bool m_isRunning = false;
    bool m_isKilled = false;
};

}  // namespace qrtplay
