#include "viewer/export/qrtExportProcess.h"

namespace qrtplay {

namespace {

/// What the process says to people is for a message, which needs no more than its end.
constexpr int mostErrorBytes = 8192;
constexpr int mostErrorLines = 3;

QString lastLines(QByteArray const& bytes) {
    QStringList lines = QString::fromLocal8Bit(bytes).split('\n', Qt::SkipEmptyParts);
    lines = lines.mid(qMax(0, lines.size() - mostErrorLines));
    for (QString& line : lines) {
        const QString speaker = "qrtplay: ";
        if (line.startsWith(speaker)) line.remove(0, speaker.size());
    }
    return lines.join("; ");
}

/// The engine's own messages would bury what the program says to people.
QProcessEnvironment quietEnvironment() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QRT_DEBUG_PLAYER");
    environment.remove("QT_LOGGING_RULES");
    return environment;
}

}  // namespace

ExportProcess::ExportProcess(QObject* parent) : QObject(parent) {
    m_killTimer.setSingleShot(true);
    m_process.setProcessEnvironment(quietEnvironment());
    m_process.setStandardInputFile(QProcess::nullDevice());
    connect(&m_killTimer, &QTimer::timeout, this, [this] {
        m_isKilled = true;
        m_process.kill();
    });
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &ExportProcess::readOutput);
    connect(&m_process, &QProcess::readyReadStandardError, this, &ExportProcess::readErrors);
    connect(&m_process, &QProcess::errorOccurred, this, &ExportProcess::noteError);
    connect(&m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this, &ExportProcess::noteEnd);
}

ExportProcess::~ExportProcess() {
    m_process.disconnect(this);
    if (m_process.state() == QProcess::NotRunning) return;
    // Time to take an unfinished file away; not so much that the user thinks the program hangs.
    constexpr int shortWaitMs = 2000;
    m_process.terminate();
    if (m_process.waitForFinished(shortWaitMs)) return;
    m_process.kill();
    m_process.waitForFinished(shortWaitMs);
}

void ExportProcess::start(QString const& program, QStringList const& arguments) {
    Q_ASSERT(!m_isRunning);
    m_report = ExportReport();
    m_end = ExportEnd();
    m_errors.clear();
    m_isKilled = false;
    m_isRunning = true;
    m_process.start(program, arguments);
}

void ExportProcess::cancel() {
    // A second signal would end it in the middle of a frame.
    if (!m_isRunning || m_end.wasCancelled) return;
    m_end.wasCancelled = true;
    m_killTimer.start(m_patience);
    // Not the signal of Ctrl-C: a program that a shell has put into the background hands that on as ignored.
    m_process.terminate();
}

void ExportProcess::readOutput() {
    m_process.setReadChannel(QProcess::StandardOutput);
    while (m_process.canReadLine())
        m_report.read(m_process.readLine());
    emit progressed();
}

void ExportProcess::readErrors() {
    m_errors = (m_errors + m_process.readAllStandardError()).right(mostErrorBytes);
}

void ExportProcess::noteError(QProcess::ProcessError error) {
    if (error != QProcess::FailedToStart) return;  // all others end the process, which is told by itself
    m_end.how = ExportEnd::How::not_started;
    m_end.errorText =
        QString("The export could not begin: the program %1 is missing or may not be run.").arg(m_process.program());
    finish();
}

void ExportProcess::noteEnd(int status, QProcess::ExitStatus how) {
    readErrors();
    readOutput();
    m_end.how = m_isKilled                   ? ExportEnd::How::killed
                : how == QProcess::CrashExit ? ExportEnd::How::crashed
                                             : ExportEnd::How::by_itself;
    m_end.status = status;
    m_end.errorText = lastLines(m_errors);
    finish();
}

void ExportProcess::finish() {
    m_killTimer.stop();
    m_isRunning = false;
    emit ended();
}

}  // namespace qrtplay
