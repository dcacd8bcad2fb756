#include "viewer/window/qrtViewerKeys.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QWidget>

namespace qrtplay {

namespace {

bool movesThrough(int key) {
    return key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down ||
           key == Qt::Key_Home || key == Qt::Key_End;
}

/// Whether a control needs the key itself. Text fields ask for theirs on their own.
bool needs(QWidget const& control, QKeyEvent const& event) {
    if (event.modifiers() != Qt::NoModifier) return false;
    const int key = event.key();
    if (qobject_cast<QAbstractButton const*>(&control)) return key == Qt::Key_Space;
    if (qobject_cast<QComboBox const*>(&control) || qobject_cast<QAbstractItemView const*>(&control))
        return key == Qt::Key_Space || movesThrough(key);
    return qobject_cast<QAbstractSlider const*>(&control) && movesThrough(key);
}

}  // namespace

ViewerKeys::ViewerKeys(QWidget& window) : QObject(&window), m_window(window) {
    qApp->installEventFilter(this);
}

bool ViewerKeys::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::WindowDeactivate && watched == &m_window) m_isStopHeld = false;  // its release goes elsewhere
    if (type != QEvent::ShortcutOverride && type != QEvent::KeyRelease) return false;
    auto* const control = qobject_cast<QWidget*>(watched);
    if (!control || (control != &m_window && !m_window.isAncestorOf(control))) return false;
    auto& key = static_cast<QKeyEvent&>(*event);
    if (key.key() == Qt::Key_K && !key.isAutoRepeat()) m_isStopHeld = type == QEvent::ShortcutOverride;
    if (type != QEvent::ShortcutOverride || !needs(*control, key)) return false;
    key.accept();
    return true;
}

}  // namespace qrtplay
