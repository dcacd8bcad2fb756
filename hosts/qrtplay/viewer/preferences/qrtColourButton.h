#pragma once

#include <QColor>
#include <QPushButton>

namespace qrtplay {

/// Shows a colour and asks for another one when it is pressed.
///
/// Threading: the GUI thread.
class ColourButton final : public QPushButton {
    Q_OBJECT

public:
    explicit ColourButton(QWidget* parent = nullptr);

    /// Shows a colour without telling it.
    void showColour(QColor const& colour);
    [[nodiscard]] QColor colour() const { return m_colour; }

signals:
    void chosen(QColor const& colour);

private:
    void ask();

    QColor m_colour;
};

}  // namespace qrtplay
