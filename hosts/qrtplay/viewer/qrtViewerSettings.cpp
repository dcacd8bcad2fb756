#include "viewer/qrtViewerSettings.h"

#include <QCoreApplication>
#include <QSettings>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace qrtplay {

namespace {

// Choices are kept as words, so that the file can be read and outlives another order of the enumerators.
template <class Choice, size_t Count>
using Words = std::array<std::pair<char const*, Choice>, Count>;

constexpr Words<PixelFormat, 4> depthWords{{{"8", PixelFormat::rgba8},
                                            {"16", PixelFormat::rgba16},
                                            {"16f", PixelFormat::rgba16f},
                                            {"32f", PixelFormat::rgba32f}}};
constexpr Words<Scaling, 3> scalingWords{
    {{"fit", Scaling::fit}, {"fill", Scaling::fill}, {"one-to-one", Scaling::one_to_one}}};
constexpr Words<PacePolicy, 2> policyWords{
    {{"every-frame", PacePolicy::every_frame}, {"real-time", PacePolicy::real_time}}};
constexpr Words<Numbering, 3> numberingWords{
    {{"timecode", Numbering::timecode}, {"frames", Numbering::frames}, {"seconds", Numbering::seconds}}};

QSettings keptSettings() {
    return QSettings(QSettings::IniFormat, QSettings::UserScope, QCoreApplication::organizationName(),
                     QCoreApplication::applicationName());
}

/// Reads values that anybody may have edited.
class SettingsReader final {
public:
    explicit SettingsReader(QSettings const& settings) : m_settings(settings) {}

    void read(char const* key, bool& value) const {
        const QString text = textOf(key);
        if (text == "true") value = true;
        if (text == "false") value = false;
    }

    void read(char const* key, int least, int most, std::optional<int>& value) const {
        bool isNumber = false;
        const int number = textOf(key).toInt(&isNumber);
        if (isNumber && number >= least && number <= most) value = number;
    }

    void read(char const* key, int least, int most, int& value) const {
        std::optional<int> number;
        read(key, least, most, number);
        value = number.value_or(value);
    }

    /// A part of one.
    void read(char const* key, double& value) const {
        bool isNumber = false;
        const double number = textOf(key).toDouble(&isNumber);
        if (isNumber && number >= 0 && number <= 1) value = number;  // NaN is neither
    }

    void read(char const* key, QString& value) const {
        if (m_settings.contains(key)) value = textOf(key);
    }

    void read(char const* key, std::string& value) const {
        if (m_settings.contains(key)) value = textOf(key).toStdString();
    }

    void read(char const* key, QByteArray& value) const {
        const QVariant kept = m_settings.value(key);
        if (kept.userType() == QMetaType::QByteArray) value = kept.toByteArray();
    }

    void read(char const* key, QColor& value) const {
        const QColor colour(textOf(key));
        if (colour.isValid()) value = QColor(colour.rgb());
    }

    template <class Choice, size_t Count>
    void read(char const* key, Words<Choice, Count> const& words, Choice& value) const {
        const QString text = textOf(key);
        for (auto const& [word, choice] : words) {
            if (text == word) value = choice;
        }
    }

private:
    [[nodiscard]] QString textOf(char const* key) const { return m_settings.value(key).toString(); }

    QSettings const& m_settings;
};

template <class Choice, size_t Count>
QString wordFor(Words<Choice, Count> const& words, Choice value) {
    for (auto const& [word, choice] : words) {
        if (choice == value) return word;
    }
    return {};
}

void writeOptional(QSettings& settings, char const* key, std::optional<int> value) {
    if (value)
        settings.setValue(key, *value);
    else
        settings.remove(key);
}

void readPlay(SettingsReader const& reader, PlaySettings& play) {
    std::optional<int> width;
    std::optional<int> height;
    reader.read("picture/width", 1, ViewerSettings::mostPixels, width);
    reader.read("picture/height", 1, ViewerSettings::mostPixels, height);
    if (width && height) play.resolution = QSize(*width, *height);
    reader.read("picture/depth", depthWords, play.depth);
    reader.read("picture/memory", play.ramOutputs);
    reader.read("picture/scaling", scalingWords, play.scaling);
    reader.read("cache/ahead", 0, ViewerSettings::mostFrames, play.headFrames);
    reader.read("cache/behind", 0, ViewerSettings::mostFrames, play.tailFrames);
    reader.read("cache/decoded", 0, ViewerSettings::mostMebibytes, play.decodeCacheInMiB);
    std::optional<int> segments;
    reader.read("cache/generated", 0, ViewerSettings::mostMebibytes, segments);
    if (segments) play.segmentCacheInMiB = static_cast<unsigned>(*segments);
    reader.read("colour/configuration", play.ocio.config);
    reader.read("colour/display", play.ocio.display);
    reader.read("colour/view", play.ocio.view);
}

void writePlay(QSettings& settings, PlaySettings const& play) {
    writeOptional(settings, "picture/width", play.resolution ? std::optional(play.resolution->width()) : std::nullopt);
    writeOptional(settings, "picture/height",
                  play.resolution ? std::optional(play.resolution->height()) : std::nullopt);
    settings.setValue("picture/depth", wordFor(depthWords, play.depth));
    settings.setValue("picture/memory", play.ramOutputs);
    settings.setValue("picture/scaling", wordFor(scalingWords, play.scaling));
    writeOptional(settings, "cache/ahead", play.headFrames);
    writeOptional(settings, "cache/behind", play.tailFrames);
    writeOptional(settings, "cache/decoded", play.decodeCacheInMiB);
    settings.setValue("cache/generated", play.segmentCacheInMiB);
    settings.setValue("colour/configuration", QString::fromStdString(play.ocio.config));
    settings.setValue("colour/display", QString::fromStdString(play.ocio.display));
    settings.setValue("colour/view", QString::fromStdString(play.ocio.view));
}

QMap<QString, int> readPreferences(QSettings& settings) {
    QMap<QString, int> preferences;
    settings.beginGroup("engine");
    for (QString const& name : settings.allKeys()) {
        bool isNumber = false;
        const int value = settings.value(name).toString().toInt(&isNumber);
        if (isNumber) preferences.insert(name, value);
    }
    settings.endGroup();
    return preferences;
}

void writePreferences(QSettings& settings, QMap<QString, int> const& preferences) {
    settings.beginGroup("engine");
    settings.remove("");
    for (auto each = preferences.begin(); each != preferences.end(); ++each)
        settings.setValue(each.key(), each.value());
    settings.endGroup();
}

QStringList tidiedRecentFiles(QStringList entries) {
    entries.removeAll(QString());
    entries.removeDuplicates();
    return entries.mid(0, ViewerSettings::mostRecentFiles);
}

}  // namespace

ViewerSettings ViewerSettings::load() {
    QSettings kept = keptSettings();
    const SettingsReader reader(kept);
    ViewerSettings settings;
    readPlay(reader, settings.play);
    settings.enginePreferences = readPreferences(kept);
    reader.read("picture/background", settings.background);
    reader.read("playing/policy", policyWords, settings.policy);
    reader.read("playing/mode", PlayParams::single, PlayParams::ping_pong, settings.playMode);
    reader.read("view/numbering", numberingWords, settings.numbering);
    reader.read("view/dropFrame", settings.dropFrame);
    reader.read("view/overlay", settings.overlay);
    reader.read("view/safeAreas", settings.safeAreas);
    reader.read("sound/volume", settings.volume);
    reader.read("sound/muted", settings.muted);
    reader.read("window/geometry", settings.geometry);
    reader.read("window/layout", settings.layout);
    reader.read("files/exportFolder", settings.exportFolder);
    settings.recentFiles = tidiedRecentFiles(kept.value("files/recent").toStringList());
    return settings;
}

void ViewerSettings::save() const {
    QSettings kept = keptSettings();
    writePlay(kept, play);
    writePreferences(kept, enginePreferences);
    kept.setValue("picture/background", background.name());
    kept.setValue("playing/policy", wordFor(policyWords, policy));
    kept.setValue("playing/mode", playMode);
    kept.setValue("view/numbering", wordFor(numberingWords, numbering));
    kept.setValue("view/dropFrame", dropFrame);
    kept.setValue("view/overlay", overlay);
    kept.setValue("view/safeAreas", safeAreas);
    kept.setValue("sound/volume", volume);
    kept.setValue("sound/muted", muted);
    kept.setValue("window/geometry", geometry);
    kept.setValue("window/layout", layout);
    kept.setValue("files/exportFolder", exportFolder);
    kept.setValue("files/recent", recentFiles);
}

void ViewerSettings::addRecent(QStringList const& files) {
    recentFiles.prepend(files.join('\n'));
    recentFiles = tidiedRecentFiles(recentFiles);
}

}  // namespace qrtplay
