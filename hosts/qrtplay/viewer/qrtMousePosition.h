#pragma once

#include <QMouseEvent>

namespace qrtplay {

/// Where the mouse is in the widget that gets the event, which Qt 5 and Qt 6 have different words for.
inline QPointF mousePosition(QMouseEvent const& event) {
#if QT_VERSION_MAJOR == 5
    return event.localPos();
#else
    return event.position();
#endif
}

}  // namespace qrtplay
