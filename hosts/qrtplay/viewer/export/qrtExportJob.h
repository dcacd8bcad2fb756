#pragma once

#include <QString>
#include <QStringList>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtPixelBlock.h"
#include "playback/qrtPlaySettings.h"
#include "viewer/playing/qrtPlayback.h"

namespace qrtplay {

/// What is to be exported.
struct ExportJob {
    QStringList files;
    QStringList allowPaths;
    FrameSpan range;
    PlaySettings play;

    [[nodiscard]] int64 frameCount() const noexcept { return range.last - range.first + 1; }
};

/// Where to, and how.
struct ExportTarget {
    QString output;  ///< a movie, or images that are numbered where it has "####": an absolute path
    PixelFormat depth = PixelFormat::rgba8;
    bool withSound = true;     ///< of a movie
    bool onlyMissing = false;  ///< of images

    [[nodiscard]] bool isMovie() const;
    [[nodiscard]] QString fileName() const;
};

/// What follows the program's name to have the job done, one word each; no shell is meant to read them.
[[nodiscard]] QStringList renderArguments(ExportJob const& job, ExportTarget const& target);

/// What is wrong with the target, in a sentence for who chose it; empty when nothing is.
[[nodiscard]] QString problemOf(ExportJob const& job, QString const& output);

/// How many of the files that the job would write are there already.
[[nodiscard]] int64 countExisting(ExportJob const& job, ExportTarget const& target);

/// The depths that a file of such a name can have, the least one first; none when the ending is unknown.
[[nodiscard]] std::vector<PixelFormat> depthsOf(QString const& output);
/// The least of these that loses nothing of frames of depth `shown`, nor of what is usual for such files.
[[nodiscard]] PixelFormat suitableDepth(QString const& output, PixelFormat shown);

/// The same name with another ending, which begins with its dot: images get a place for the frame number when there are
/// several, movies lose it.
[[nodiscard]] QString withEnding(QString const& output, QString const& ending, int64 frameCount);

/// A name for the export of `job` in `folder`, unlike that of what is exported.
[[nodiscard]] QString proposedOutput(ExportJob const& job, QString const& folder);

}  // namespace qrtplay
