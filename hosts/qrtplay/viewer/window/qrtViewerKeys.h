#pragma once

#include <QObject>

class QWidget;

namespace qrtplay {

/// What keys mean beyond being short cuts: whether K is held down, and that a control with the focus keeps the keys
/// that work it (space on a button, arrows in a list), which would play or step otherwise.
///
/// Threading: the GUI thread.
class ViewerKeys final : public QObject {
    Q_OBJECT

public:
    /// Looks at the keys of `window` and all in it.
    explicit ViewerKeys(QWidget& window);

    [[nodiscard]] bool isStopHeld() const noexcept { return m_isStopHeld; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget& m_window;
    bool m_isStopHeld = false;
};

}  // namespace qrtplay
