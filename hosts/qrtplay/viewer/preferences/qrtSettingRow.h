#pragma once

#include <QString>
#include <QWidget>

class QLabel;

namespace qrtplay {

/// A setting: its name, its control, a sentence that explains it, and, when a choice could not be carried out, why.
///
/// A control reacts to the wheel only while it has the focus, so that scrolling over it changes nothing.
/// Threading: the GUI thread.
class SettingRow final : public QWidget {
    Q_OBJECT

public:
    /// `control` becomes a child. An empty `name` leaves the whole width to the control, which names itself.
    SettingRow(QString const& name, QString const& explanation, QWidget* control, QWidget* parent = nullptr);

    [[nodiscard]] QWidget& control() const noexcept { return *m_control; }

    /// Shows why a choice was not carried out; an empty text takes that away.
    void setRefusal(QString const& reason);
    [[nodiscard]] QString refusal() const;

    /// The control cannot be used because this environment variable fixes the value; an empty name takes that away.
    void setFixedBy(QString const& variable);

protected:
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void colourTexts();
    void guardWheel(QWidget* widget);

    QWidget* const m_control;
    const QString m_explanationText;
    QLabel* const m_explanation;
    QLabel* const m_refusal;
};

}  // namespace qrtplay
