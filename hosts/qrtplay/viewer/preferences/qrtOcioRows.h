#pragma once

#include <QWidget>
#include <memory>

#include "playback/qrtPlaySettings.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace qrtplay {

class ColourManagement;
class SettingRow;

/// Chooses an OpenColorIO configuration, or none, and a display and a view by their names in it.
///
/// Threading: the GUI thread.
class OcioRows final : public QWidget {
    Q_OBJECT

public:
    explicit OcioRows(QWidget* parent = nullptr);

    /// Shows these without telling them. `colours`: made of them; null where there is no colour management.
    void showSettings(OcioSettings const& settings, std::shared_ptr<ColourManagement const> const& colours);
    /// Why the last choice was not carried out; an empty text takes all such texts away.
    void setRefusal(QString const& reason);

signals:
    void chosen(qrtplay::OcioSettings const& settings);

private:
    QWidget* makeConfigControl();
    void browse();
    void chooseConfig(QString const& path);
    void chooseDisplay(QString const& name);
    void chooseView(QString const& name);

    OcioSettings m_settings;
    QLineEdit* m_config = nullptr;
    QPushButton* m_none = nullptr;
    QComboBox* const m_display;
    QComboBox* const m_view;
    SettingRow* const m_configRow;
    SettingRow* const m_displayRow;
    SettingRow* const m_viewRow;
    SettingRow* m_changedRow = nullptr;
};

}  // namespace qrtplay
