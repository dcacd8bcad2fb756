#pragma once

#include <QByteArray>
#include <QColor>
#include <QMap>
#include <QString>
#include <QStringList>

#include "playback/qrtPacer.h"
#include "playback/qrtPlaySettings.h"
#include "viewer/playing/qrtFrameNumbering.h"

namespace qrtplay {

/// What the viewer keeps between runs.
struct ViewerSettings {
    static constexpr int mostRecentFiles = 10;

    /// What the preferences panel sets: resolution, depth, memory output, counts, budgets, colours. The output rate is
    /// not kept.
    PlaySettings play;
    QMap<QString, int> enginePreferences;  ///< what the engine knows beside those, by its names
    PacePolicy policy = PacePolicy::real_time;
    int playMode = 0;  ///< a `PlayParams::PlayMode`
    Numbering numbering = Numbering::timecode;
    bool dropFrame = false;
    bool overlay = false;
    bool safeAreas = false;
    QColor background{24, 24, 24};
    double volume = 1;
    bool muted = false;
    QByteArray geometry;      ///< of the window, ...
    QByteArray layout;        ///< ... and of its docks and tool bars
    QStringList recentFiles;  ///< latest first; several files that were opened together are one entry, a line each
    QString exportFolder;

    static constexpr int mostFrames = 10000;       ///< ahead and behind
    static constexpr int mostMebibytes = 1 << 20;  ///< of a cache
    static constexpr int mostPixels = 1 << 16;     ///< wide and high; what can be had is less

    /// Reads what was kept under the names of the application object; what is missing or makes no sense gets its
    /// default.
    [[nodiscard]] static ViewerSettings load();
    /// A file that cannot be written is no failure: the settings then last as long as the program.
    void save() const;

    /// Makes what was opened together the latest entry, once.
    void addRecent(QStringList const& files);
};

}  // namespace qrtplay
