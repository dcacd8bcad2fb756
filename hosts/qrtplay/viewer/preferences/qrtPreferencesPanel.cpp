#include "viewer/preferences/qrtPreferencesPanel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QVBoxLayout>
#include <cmath>

#include "graph/qrtMediaGraphEngine.h"
#include "viewer/playing/qrtPlayback.h"
#include "viewer/preferences/qrtColourButton.h"
#include "viewer/preferences/qrtFurtherPreferences.h"
#include "viewer/preferences/qrtOcioRows.h"
#include "viewer/preferences/qrtResolutionEdit.h"
#include "viewer/preferences/qrtSettingRow.h"
#include "viewer/preferences/qrtSettledSpinBox.h"

namespace qrtplay {

namespace {

QVBoxLayout* addGroup(QVBoxLayout& column, QString const& title) {
    auto* const box = new QGroupBox(title);
    auto* const rows = new QVBoxLayout(box);
    rows->setSpacing(10);
    column.addWidget(box);
    return rows;
}

SettingRow* rowOf(QWidget const& control) {
    return qobject_cast<SettingRow*>(control.parentWidget());
}

void showIndex(QComboBox& box, int index) {
    const QSignalBlocker blocker(&box);
    box.setCurrentIndex(index);
}

}  // namespace

PreferencesPanel::PreferencesPanel(Playback& playback, QWidget* parent)
    : QWidget(parent), m_playback(playback), m_engine(playback) {
    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(8, 8, 8, 8);
    column->setSpacing(10);
    addPicture(*column);
    addLookAhead(*column);
    addMemory(*column);
    addColour(*column);
    addSound(*column);
    addPlaying(*column);
    m_further = new FurtherPreferences;
    column->addWidget(m_further);
    connect(m_further, &FurtherPreferences::chosen, this, &PreferencesPanel::choosePreference);
    column->addStretch();

    auto* const scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(content);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(scroll);

    setAccessibleName("Preferences");
    connect(&m_playback, &Playback::stateChanged, this, &PreferencesPanel::followPlayback);
    showSettings();
}

PreferencesPanel::~PreferencesPanel() = default;

void PreferencesPanel::addPicture(QVBoxLayout& column) {
    QVBoxLayout& rows = *addGroup(column, "Picture");
    m_resolution = new ResolutionEdit;
    m_resolution->setObjectName("resolution");
    auto* const row = new SettingRow(
        "Resolution", "Width x height of the rendered frames: choose or type one. Smaller is faster.", m_resolution);
    rows.addWidget(row);
    connect(m_resolution, &ResolutionEdit::chosen, this, [this, row](std::optional<QSize> size) {
        carryOutIn(*row, [&](ViewerSettings& settings) { settings.play.resolution = size; });
    });
    connect(m_resolution, &ResolutionEdit::misunderstood, this, [this, row] {
        row->setRefusal("Type width x height, such as 1280x720.");
        showSettings();
    });
    m_depth = addChoice(rows, "depth", "Format", "More bits for each colour keep finer shades and take more memory.",
                        {"8-bit", "16-bit", "16-bit float", "32-bit float"}, [](ViewerSettings& settings, int index) {
                            settings.play.depth = static_cast<PixelFormat>(index);
                        });
    m_delivery = addChoice(rows, "delivery", "Delivered as",
                           "Textures are shown as they are; memory is copied there and back first.",
                           {"Texture (VRAM)", "Memory (RAM)"},
                           [](ViewerSettings& settings, int index) { settings.play.ramOutputs = index == 1; });
    m_scaling =
        addChoice(rows, "scaling", "Scaling", "How a picture gets the size of the frame when the two differ.",
                  {"Fit (bars)", "Fill (cut off)", "1:1 (pixel for pixel)"},
                  [](ViewerSettings& settings, int index) { settings.play.scaling = static_cast<Scaling>(index); });

    m_background = new ColourButton;
    m_background->setObjectName("background");
    rows.addWidget(
        new SettingRow("Background", "Seen around the picture and through its transparent parts.", m_background));
    connect(m_background, &ColourButton::chosen, this, [this](QColor const& colour) {
        m_settings.background = colour;
        emit changed();
    });
}

void PreferencesPanel::addLookAhead(QVBoxLayout& column) {
    QVBoxLayout& rows = *addGroup(column, "Look-ahead");
    m_headFrames = addNumber(rows, "headFrames", "Frames ahead",
                             "Rendered before they are due. More of them bridge slow ones and take more memory.",
                             ViewerSettings::mostFrames,
                             [](ViewerSettings& settings, int value) { settings.play.headFrames = value; });
    m_tailFrames = addNumber(
        rows, "tailFrames", "Frames behind", "Kept after they were shown, for stepping back without a wait.",
        ViewerSettings::mostFrames, [](ViewerSettings& settings, int value) { settings.play.tailFrames = value; });
}

void PreferencesPanel::addMemory(QVBoxLayout& column) {
    QVBoxLayout& rows = *addGroup(column, "Memory");
    m_decodeCache = addNumber(rows, "decodeCache", "Decoded",
                              "Memory for pictures as they come from the file. More of it makes going back and forth "
                              "faster.",
                              ViewerSettings::mostMebibytes,
                              [](ViewerSettings& settings, int value) { settings.play.decodeCacheInMiB = value; });
    m_segmentCache = addNumber(
        rows, "segmentCache", "Generated",
        "Memory for titles, bars and countdowns, the same again for those drawn as textures. 0 keeps none.",
        ViewerSettings::mostMebibytes,
        [](ViewerSettings& settings, int value) { settings.play.segmentCacheInMiB = static_cast<unsigned>(value); });
    for (SettledSpinBox* const box : {m_decodeCache, m_segmentCache}) {
        box->setSuffix(" MiB");
        box->setSingleStep(16);
    }
    m_decodeCache->setAccessibleName("Memory for decoded pictures");
    m_segmentCache->setAccessibleName("Memory for generated pictures");
}

void PreferencesPanel::addColour(QVBoxLayout& column) {
    QVBoxLayout& rows = *addGroup(column, "Colour");
    m_ocio = new OcioRows;
    rows.addWidget(m_ocio);
    connect(m_ocio, &OcioRows::chosen, this, &PreferencesPanel::chooseColours);
}

void PreferencesPanel::addSound(QVBoxLayout& column) {
    QVBoxLayout& rows = *addGroup(column, "Sound");
    m_volume = new QSlider(Qt::Horizontal);
    m_volume->setObjectName("volume");
    m_volume->setRange(0, 100);
    m_volume->setPageStep(10);
    m_volume->setMinimumWidth(60);
    m_percent = new QLabel;
    m_percent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_percent->setMinimumWidth(m_percent->fontMetrics().horizontalAdvance("100%"));
    auto* const control = new QWidget;
    auto* const line = new QHBoxLayout(control);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(m_volume, 1);
    line->addWidget(m_percent);
    control->setFocusProxy(m_volume);
    const QString explanation = "How loud this player is; the system's volume stays as it is.";
    rows.addWidget(new SettingRow("Volume", explanation, control));
    m_volume->setAccessibleName("Volume");
    m_volume->setToolTip(explanation);
    connect(m_volume, &QSlider::valueChanged, this, &PreferencesPanel::chooseVolume);
    connect(m_volume, &QSlider::sliderReleased, this, &PreferencesPanel::changed);

    m_mute = new QCheckBox("Mute");
    m_mute->setObjectName("mute");
    rows.addWidget(new SettingRow(QString(), "Plays without sound.", m_mute));
    m_mute->setAccessibleName("Mute");
    connect(m_mute, &QCheckBox::toggled, this, [this](bool isMuted) {
        m_playback.setMuted(isMuted);
        m_settings.muted = isMuted;
        emit changed();
    });
}

void PreferencesPanel::addPlaying(QVBoxLayout& column) {
    QVBoxLayout& rows = *addGroup(column, "Playing");
    m_policy = new QComboBox;
    m_policy->setObjectName("policy");
    m_policy->addItems({"Show every frame", "Stay in real time"});
    m_policy->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    rows.addWidget(new SettingRow(
        "Late pictures",
        "When pictures come too late: show every frame and play slower, or skip some and stay in time.", m_policy));
    connect(m_policy, QOverload<int>::of(&QComboBox::activated), this, [this](int index) {
        m_playback.setPolicy(static_cast<PacePolicy>(index));
        m_settings.policy = static_cast<PacePolicy>(index);
        emit changed();
    });
}

QComboBox* PreferencesPanel::addChoice(QVBoxLayout& rows, char const* objectName, QString const& name,
                                       QString const& explanation, QStringList const& choices,
                                       std::function<void(ViewerSettings&, int)> const& edit) {
    auto* const box = new QComboBox;
    box->setObjectName(objectName);
    box->addItems(choices);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(8);
    auto* const row = new SettingRow(name, explanation, box);
    rows.addWidget(row);
    connect(box, QOverload<int>::of(&QComboBox::activated), this, [this, row, edit](int index) {
        carryOutIn(*row, [&](ViewerSettings& settings) { edit(settings, index); });
    });
    return box;
}

SettledSpinBox* PreferencesPanel::addNumber(QVBoxLayout& rows, char const* objectName, QString const& name,
                                            QString const& explanation, int most,
                                            std::function<void(ViewerSettings&, int)> const& edit) {
    auto* const box = new SettledSpinBox;
    box->setObjectName(objectName);
    box->setRange(0, most);
    auto* const row = new SettingRow(name, explanation, box);
    rows.addWidget(row);
    connect(box, &SettledSpinBox::settled, this, [this, row, edit](int value) {
        carryOutIn(*row, [&](ViewerSettings& settings) { edit(settings, value); });
    });
    return box;
}

void PreferencesPanel::show(ViewerSettings const& settings) {
    m_settings = settings;
    clearRefusals();
    showSettings();
}

void PreferencesPanel::store(ViewerSettings& settings) const {
    const std::optional<Rational> outputRate = settings.play.outputRate;
    settings.play = m_settings.play;
    settings.play.outputRate = outputRate;
    settings.enginePreferences = m_settings.enginePreferences;
    settings.background = m_settings.background;
    settings.volume = m_settings.volume;
    settings.muted = m_settings.muted;
    settings.policy = m_settings.policy;
}

void PreferencesPanel::timelineChanged() {
    clearRefusals();
    for (QString const& name : m_engine.furtherPreferences()) {
        const auto kept = m_settings.enginePreferences.constFind(name);
        if (kept != m_settings.enginePreferences.constEnd())
            (void)m_engine.setPreference(name.toUtf8().constData(), *kept);
    }
    m_settings.play = m_engine.inUse(m_settings.play);
    showSettings();
}

EngineSettings::Result PreferencesPanel::carryOut(Edit const& edit) {
    ViewerSettings wanted = m_settings;
    edit(wanted);
    EngineSettings::Result result = m_engine.change(m_settings.play, wanted.play);
    if (result.success()) m_settings = wanted;
    showSettings();
    return result;
}

void PreferencesPanel::carryOutIn(SettingRow& row, Edit const& edit) {
    const EngineSettings::Result result = carryOut(edit);
    row.setRefusal(result.refusal);
    if (result.success()) emit changed();
    if (result.needsReopening) emit reopenWanted();
}

void PreferencesPanel::chooseColours(OcioSettings const& wanted) {
    const EngineSettings::Result result = carryOut([&](ViewerSettings& settings) { settings.play.ocio = wanted; });
    m_ocio->setRefusal(result.refusal);
    if (result.success()) emit changed();
    if (result.needsReopening) emit reopenWanted();
}

void PreferencesPanel::choosePreference(QString const& name, int value) {
    const EngineSettings::Result result = m_engine.setPreference(name.toUtf8().constData(), value);
    if (result.success()) m_settings.enginePreferences[name] = value;
    showFurther();
    m_further->setRefusal(name, result.refusal);
    if (result.success()) emit changed();
}

void PreferencesPanel::chooseVolume(int percent) {
    m_settings.volume = percent / 100.0;
    m_percent->setText(QString::number(percent) + "%");
    m_playback.setVolume(m_settings.volume);
    if (!m_volume->isSliderDown()) emit changed();  // else when it is let go
}

void PreferencesPanel::showSettings() {
    PlaySettings const& play = m_settings.play;
    m_resolution->showResolution(play.resolution, m_engine.ownResolution());
    showIndex(*m_depth, static_cast<int>(play.depth));
    showIndex(*m_delivery, play.ramOutputs ? 1 : 0);
    showIndex(*m_scaling, static_cast<int>(play.scaling));
    m_background->showColour(m_settings.background);
    showPreference(*m_headFrames, Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, play.headFrames);
    showPreference(*m_tailFrames, Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, play.tailFrames);
    showPreference(*m_decodeCache, MediaGraphEngine::DECODE_CACHE_MIB, play.decodeCacheInMiB);
    m_segmentCache->showValue(static_cast<int>(play.segmentCacheInMiB));
    m_ocio->showSettings(play.ocio, m_engine.colours(play));
    {
        const QSignalBlocker blocker(m_volume);
        m_volume->setValue(static_cast<int>(std::lround(m_settings.volume * 100)));
        m_percent->setText(QString::number(m_volume->value()) + "%");
    }
    {
        const QSignalBlocker blocker(m_mute);
        m_mute->setChecked(m_settings.muted);
    }
    showIndex(*m_policy, static_cast<int>(m_settings.policy));
    showFurther();
}

void PreferencesPanel::showPreference(SettledSpinBox& box, String const& name, std::optional<int> chosen) {
    const QString variable = EngineSettings::fixedBy(name);
    const bool isInUse = m_playback.player() || !variable.isEmpty() || !chosen;
    box.showValue(isInUse ? m_engine.preference(name) : *chosen);
    rowOf(box)->setFixedBy(variable);
}

void PreferencesPanel::showFurther() {
    std::vector<FurtherPreferences::Preference> preferences;
    for (QString const& name : m_engine.furtherPreferences()) {
        const String key = name.toUtf8().constData();
        const QString variable = EngineSettings::fixedBy(key);
        const bool isInUse = m_playback.player() || !variable.isEmpty() || !m_settings.enginePreferences.contains(name);
        const int value = isInUse ? m_engine.preference(key) : m_settings.enginePreferences[name];
        preferences.push_back({name, value, variable});
    }
    m_further->showPreferences(preferences);
}

void PreferencesPanel::followPlayback() {
    m_settings.muted = m_playback.isMuted();
    m_settings.policy = m_playback.policy();
    const QSignalBlocker blocker(m_mute);
    m_mute->setChecked(m_settings.muted);
    showIndex(*m_policy, static_cast<int>(m_settings.policy));
}

void PreferencesPanel::clearRefusals() {
    for (SettingRow* const row : findChildren<SettingRow*>())
        row->setRefusal(QString());
}

}  // namespace qrtplay
