#pragma once

#include <QFont>

namespace qrtplay {

/// What generators write with: the system's bold sans serif font, its size in pixels.
[[nodiscard]] inline QFont generatorFont(int pixelSize) {
    QFont font("sans-serif");
    font.setStyleHint(QFont::SansSerif);
    font.setBold(true);
    font.setPixelSize(pixelSize);
    // Shapes that do not depend on the size make the filling of a letter fit its outline.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

}  // namespace qrtplay
