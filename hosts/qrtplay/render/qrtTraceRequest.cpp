#include "render/qrtTraceRequest.h"

#include <sys/file.h>

#include <QFile>
#include <QFileInfo>
#include <cerrno>

namespace qrtplay {

namespace {

/// The engine opens the file later, when what is wrong could only be said in the log.
Outcome tryToWrite(QString const& path) {
    QFile file(path);
    const bool isNew = !file.exists();
    if (!isNew && !QFileInfo(path).isFile()) return Outcome::failure("is no file");  // opening a pipe would wait
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return Outcome::failure("cannot be written: " + file.errorString().toStdString());
    if (flock(file.handle(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
        return Outcome::failure("another process is writing to it");
    if (isNew) file.remove();
    return Outcome();
}

}  // namespace

Outcome requestTrace(std::string const& file) {
    if (file.empty()) return Outcome();
    const QString path = QFileInfo(QString::fromStdString(file)).absoluteFilePath();
    if (Outcome outcome = tryToWrite(path); outcome.failed())
        return Outcome::failure("--trace '" + file + "': " + outcome.message());
    qputenv("QRT_TRACE_PLAYER", QFile::encodeName(path));
    return Outcome();
}

}  // namespace qrtplay
