#pragma once

#include <QMap>
#include <QString>
#include <QWidget>
#include <vector>

class QVBoxLayout;

namespace qrtplay {

class SettingRow;
class SettledSpinBox;

/// Preferences of the engine of which the viewer knows their names and numbers alone. Hidden while there are none.
///
/// Threading: the GUI thread.
class FurtherPreferences final : public QWidget {
    Q_OBJECT

public:
    struct Preference {
        QString name;
        int value = 0;
        QString fixedBy;  ///< an environment variable, or empty
    };

    explicit FurtherPreferences(QWidget* parent = nullptr);

    /// Shows these, and no others, without telling any.
    void showPreferences(std::vector<Preference> const& preferences);
    /// Why a choice was not carried out; an empty text takes that away.
    void setRefusal(QString const& name, QString const& reason);

signals:
    void chosen(QString const& name, int value);

private:
    struct Row {
        SettingRow* row = nullptr;
        SettledSpinBox* number = nullptr;
    };

    Row addRow(QString const& name);

    QVBoxLayout* const m_rowsLayout;
    QMap<QString, Row> m_rows;
};

}  // namespace qrtplay
