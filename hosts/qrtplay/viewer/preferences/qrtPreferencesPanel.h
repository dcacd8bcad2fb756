#pragma once

#include <QStringList>
#include <QWidget>
#include <functional>

#include "playback/qrtPlaySettings.h"
#include "viewer/preferences/qrtEngineSettings.h"
#include "viewer/qrtViewerSettings.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QSlider;
class QVBoxLayout;

namespace qrtplay {

class ColourButton;
class FurtherPreferences;
class OcioRows;
class Playback;
class ResolutionEdit;
class SettingRow;
class SettledSpinBox;

/// Sets what can be set of the player and explains each setting: output resolution and depth, textures or memory,
/// frames kept ahead and behind, budgets, colour management, sound volume, background.
///
/// Each change is carried out at once on the engine; what the engine refuses (while it plays, say) is put back, and the
/// reason is shown in words beside the setting. Threading: the GUI thread.
class PreferencesPanel final : public QWidget {
    Q_OBJECT

public:
    /// `playback` has to last longer than this.
    explicit PreferencesPanel(Playback& playback, QWidget* parent = nullptr);
    ~PreferencesPanel() override;

    using QWidget::show;
    /// Shows these, without carrying anything out.
    void show(ViewerSettings const& settings);
    /// What was chosen, in `settings`.
    void store(ViewerSettings& settings) const;
    /// To be called after another timeline was opened: its own resolution and what the engine uses.
    void timelineChanged();

signals:
    /// A change was carried out.
    void changed();
    /// A change that needs the input opened again, such as another colour configuration.
    void reopenWanted();

private:
    using Edit = std::function<void(ViewerSettings&)>;

    void addPicture(QVBoxLayout& column);
    void addLookAhead(QVBoxLayout& column);
    void addMemory(QVBoxLayout& column);
    void addColour(QVBoxLayout& column);
    void addSound(QVBoxLayout& column);
    void addPlaying(QVBoxLayout& column);
    QComboBox* addChoice(QVBoxLayout& rows, char const* objectName, QString const& name, QString const& explanation,
                         QStringList const& choices, std::function<void(ViewerSettings&, int)> const& edit);
    SettledSpinBox* addNumber(QVBoxLayout& rows, char const* objectName, QString const& name,
                              QString const& explanation, int most,
                              std::function<void(ViewerSettings&, int)> const& edit);

    EngineSettings::Result carryOut(Edit const& edit);
    void carryOutIn(SettingRow& row, Edit const& edit);
    void chooseColours(OcioSettings const& wanted);
    void choosePreference(QString const& name, int value);
    void chooseVolume(int percent);
    void showSettings();
    void showPreference(SettledSpinBox& box, String const& name, std::optional<int> chosen);
    void showFurther();
    void followPlayback();
    void clearRefusals();

    Playback& m_playback;
    EngineSettings m_engine;
    ViewerSettings m_settings;  // what has been carried out

    ResolutionEdit* m_resolution = nullptr;
    QComboBox* m_depth = nullptr;
    QComboBox* m_delivery = nullptr;
    QComboBox* m_scaling = nullptr;
    ColourButton* m_background = nullptr;
    SettledSpinBox* m_headFrames = nullptr;
    SettledSpinBox* m_tailFrames = nullptr;
    SettledSpinBox* m_decodeCache = nullptr;
    SettledSpinBox* m_segmentCache = nullptr;
    OcioRows* m_ocio = nullptr;
    QSlider* m_volume = nullptr;
    QLabel* m_percent = nullptr;
    QCheckBox* m_mute = nullptr;
    QComboBox* m_policy = nullptr;
    FurtherPreferences* m_further = nullptr;
};

}  // namespace qrtplay
