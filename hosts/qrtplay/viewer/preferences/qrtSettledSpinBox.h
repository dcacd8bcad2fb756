#pragma once

#include <QSpinBox>
#include <QTimer>

namespace qrtplay {

/// A spin box that tells its number when the user is done: at Enter, on losing the focus, and shortly after the last of
/// several steps. What follows may take its time; told at every step it would make Qt take a click for a long press.
///
/// Threading: the GUI thread.
class SettledSpinBox final : public QSpinBox {
    Q_OBJECT

public:
    explicit SettledSpinBox(QWidget* parent = nullptr);

    /// Shows a number without telling it.
    void showValue(int value);

signals:
    void settled(int value);

private:
    void tell();

    QTimer m_timer;
};

}  // namespace qrtplay
