#include "viewer/preferences/qrtSettledSpinBox.h"

#include <QSignalBlocker>

namespace qrtplay {

SettledSpinBox::SettledSpinBox(QWidget* parent) : QSpinBox(parent) {
    constexpr int pauseInMs = 250;
    setKeyboardTracking(false);
    setAccelerated(true);
    m_timer.setSingleShot(true);
    m_timer.setInterval(pauseInMs);
    connect(&m_timer, &QTimer::timeout, this, &SettledSpinBox::tell);
    connect(this, QOverload<int>::of(&QSpinBox::valueChanged), &m_timer, QOverload<>::of(&QTimer::start));
    connect(this, &QSpinBox::editingFinished, this, [this] {
        if (m_timer.isActive()) tell();
    });
}

void SettledSpinBox::showValue(int value) {
    m_timer.stop();
    const QSignalBlocker blocker(this);
    setValue(value);
}

void SettledSpinBox::tell() {
    m_timer.stop();
    emit settled(value());
}

}  // namespace qrtplay
