#include "viewer/window/qrtKeyboardHelp.h"

#include <QKeySequence>
#include <QStringList>

#include "viewer/window/qrtViewerActions.h"

namespace qrtplay {

namespace {

struct MouseUse {
    char const* what;
    char const* does;
};
constexpr MouseUse mouseUses[] = {
    {"Drag on the timeline", "Scrubs."},
    {"Wheel on the picture", "Zooms around the pointer."},
    {"Drag on the picture", "Moves it, when it is larger than the window."},
    {"Double click on the picture", "Shows nothing but the picture, and the whole window again."},
    {"Ctrl + wheel on the timeline", "Zooms around the pointer."},
    {"Drop files on the window", "Opens them."},
};

QString row(QString const& what, QString const& does) {
    return "<tr><td style='padding-right: 16px'><b>" + what.toHtmlEscaped() + "</b></td><td>" + does.toHtmlEscaped() +
           "</td></tr>";
}

QString keysOf(ViewerActions::Entry const& entry) {
    QStringList keys;
    for (QString const& key : QString(entry.keys).split(", "))
        keys << QKeySequence(key).toString(QKeySequence::NativeText);
    return keys.join(" or ");
}

}  // namespace

QString keyboardHelp() {
    QString html = "<table cellspacing='2'>";
    char const* menu = nullptr;
    for (ViewerActions::Entry const& entry : ViewerActions::entries()) {
        if (!*entry.keys) continue;
        if (!menu || QString(menu) != entry.menu)
            html += "<tr><td colspan='2'><h3>" + QString(entry.menu).remove('&') + "</h3></td></tr>";
        menu = entry.menu;
        html += row(keysOf(entry), entry.toolTip);
    }
    html += "<tr><td colspan='2'><h3>Mouse</h3></td></tr>";
    for (MouseUse const& use : mouseUses)
        html += row(use.what, use.does);
    return html + "</table>";
}

}  // namespace qrtplay
