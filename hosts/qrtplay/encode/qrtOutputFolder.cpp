#include "encode/qrtOutputFolder.h"

#include <QDir>
#include <QTemporaryFile>

namespace qrtplay {

Outcome prepareFolder(std::string const& folder) {
    const QString name = QString::fromStdString(folder);
    if (!QDir().mkpath(name)) return Outcome::failure(folder + ": the output folder cannot be made");
    // Asking for permissions answers for a plain disk only; a file tells the truth.
    QTemporaryFile probe(name + "/.qrtplay-XXXXXX");
    if (!probe.open())
        return Outcome::failure(folder +
                                ": the output folder cannot be written to: " + probe.errorString().toStdString());
    return Outcome();
}

}  // namespace qrtplay
