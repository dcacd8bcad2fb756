#include <QFile>

#include "viewer/playing/qrtSoundDevice.h"
#include "viewer/qrtMadeDevice.h"

namespace qrtplay {

namespace {

void configureAlsa(QString const& path, QByteArray const& configuration) {
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) file.write(configuration);
    qputenv("ALSA_CONFIG_PATH", path.toUtf8());
}

}  // namespace

MadeDevice::MadeDevice() {
    qputenv("PULSE_SERVER", "unix:/nonexistent");
    configureAlsa(m_folder.filePath("asound.conf"), {});
}

MadeDevice::~MadeDevice() {
    qunsetenv("ALSA_CONFIG_PATH");
}

bool MadeDevice::make(Kind kind) {
    const QByteArray type = kind == Kind::silent ? "type null" : "type plug slave.pcm nowhere";
    configureAlsa(m_folder.filePath("asound.conf"),
                  "pcm.!default { " + type + " hint { show on description \"Made up\" } }");
    m_whyNot = "Qt Multimedia has no plugin for ALSA here";
    return nameOf(usualSoundDevice()) == "default";
}

}  // namespace qrtplay
