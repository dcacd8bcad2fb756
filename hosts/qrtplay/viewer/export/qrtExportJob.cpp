#include "viewer/export/qrtExportJob.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>

#include "encode/qrtOutputFormat.h"
#include "options/qrtOutputPattern.h"
#include "playback/qrtTimecode.h"

namespace qrtplay {

namespace {

constexpr PixelFormat allDepths[] = {PixelFormat::rgba8, PixelFormat::rgba16, PixelFormat::rgba16f,
                                     PixelFormat::rgba32f};

QString textOf(std::string const& text) {
    return QString::fromStdString(text);
}

QString nameOfScaling(Scaling scaling) {
    switch (scaling) {
        case Scaling::fit: return "fit";
        case Scaling::fill: return "fill";
        case Scaling::one_to_one: break;
    }
    return "1:1";
}

/// The frame number's place, with what parts it from the name before it.
QRegularExpression const& numberPlace() {
    static const QRegularExpression place("[._-]?(#+|%(0[1-9])?d)");
    return place;
}

bool hasNumberPlace(QString const& output) {
    return QFileInfo(output).fileName().contains(numberPlace());
}

/// Options that say how the timeline is played; those that were not chosen are left to the program.
QStringList playArguments(PlaySettings const& play) {
    QStringList words;
    if (play.resolution) words << "--resolution" << textOf(sizeText(*play.resolution));
    words << "--scaling" << nameOfScaling(play.scaling);
    if (play.outputRate) words << "--fps" << textOf(fractionText(*play.outputRate));
    if (!play.ocio.config.empty()) words << "--ocio" << textOf(play.ocio.config);
    if (!play.ocio.display.empty()) words << "--display" << textOf(play.ocio.display);
    if (!play.ocio.view.empty()) words << "--view" << textOf(play.ocio.view);
    if (play.ramOutputs) words << "--ram";
    if (play.headFrames) words << "--head" << QString::number(*play.headFrames);
    if (play.tailFrames) words << "--tail" << QString::number(*play.tailFrames);
    if (play.decodeCacheInMiB) words << "--cache" << QString::number(*play.decodeCacheInMiB);
    return words;
}

bool isInput(ExportJob const& job, QString const& output) {
    const QFileInfo written(output);
    return std::any_of(job.files.begin(), job.files.end(), [&written](QString const& file) {
        const QFileInfo read(file);
        if (read.absoluteFilePath() == written.absoluteFilePath()) return true;
        return read.exists() && read.canonicalFilePath() == written.canonicalFilePath();
    });
}

/// A name without its ending, if that is one that can be written.
QString withoutEnding(QString const& output) {
    return fileKindOf(output.toStdString()) ? output.left(output.lastIndexOf('.')) : output;
}

QString problemOfNumber(ExportJob const& job, QString const& output) {
    if (isMovie(*fileKindOf(output.toStdString())))
        return hasNumberPlace(output)
                   ? QString("A movie is one file: take the place for the frame number out of its name.")
                   : QString();
    OutputPattern pattern;
    if (hasNumberPlace(output))
        return OutputPattern::parse(output.toStdString(), pattern).success()
                   ? QString()
                   : QString("The name has more than one place for the frame number.");
    return job.frameCount() > 1
               ? QString("Every frame becomes a file of its own: put #### into the name where its number belongs.")
               : QString();
}

}  // namespace

bool ExportTarget::isMovie() const {
    const std::optional<FileKind> kind = fileKindOf(output.toStdString());
    return kind && qrtplay::isMovie(*kind);
}

QString ExportTarget::fileName() const {
    return QFileInfo(output).fileName();
}

QStringList renderArguments(ExportJob const& job, ExportTarget const& target) {
    QStringList words{"render"};
    words << "--frames" << QString("%1-%2").arg(job.range.first).arg(job.range.last);
    words << "--output" << target.output << "--depth" << textOf(nameOf(target.depth)) << "--json";
    if (target.isMovie() && !target.withSound) words << "--no-sound";
    if (!target.isMovie() && target.onlyMissing) words << "--skip-existing";
    words << playArguments(job.play);
    for (QString const& folder : job.allowPaths)
        words << "--allow-path" << folder;
    // Names that begin with a dash are names nevertheless.
    return words << "--" << job.files;
}

QString problemOf(ExportJob const& job, QString const& output) {
    if (job.files.isEmpty() || job.frameCount() < 1) return "There is nothing to export.";
    if (output.isEmpty()) return "Name the file to export to.";
    if (QFileInfo(output).isDir()) return "This is a folder. Add the name of a file.";
    if (!fileKindOf(output.toStdString()))
        return "The ending of the name says what is written. It has to be one of " + textOf(knownEndings()) + ".";
    if (isInput(job, output)) return "This file is what is being exported. Choose another name.";
    return problemOfNumber(job, output);
}

int64 countExisting(ExportJob const& job, ExportTarget const& target) {
    OutputPattern pattern;
    if (OutputPattern::parse(target.output.toStdString(), pattern).failed()) return 0;
    if (!pattern.hasNumber()) return QFileInfo::exists(target.output) ? 1 : 0;
    int64 count = 0;
    for (int64 frame = job.range.first; frame <= job.range.last; ++frame)
        count += QFileInfo::exists(textOf(pattern.pathOf(frame))) ? 1 : 0;
    return count;
}

std::vector<PixelFormat> depthsOf(QString const& output) {
    std::vector<PixelFormat> depths;
    for (const PixelFormat depth : allDepths) {
        FormatWishes wishes;
        wishes.depth = depth;
        OutputFormat format;
        if (chooseOutputFormat(output.toStdString(), wishes, format).success()) depths.push_back(depth);
    }
    return depths;
}

PixelFormat suitableDepth(QString const& output, PixelFormat shown) {
    OutputFormat usual;
    if (chooseOutputFormat(output.toStdString(), {}, usual).failed()) return shown;
    const PixelFormat least = std::max(shown, usual.depth);
    const std::vector<PixelFormat> depths = depthsOf(output);
    const auto found =
        std::find_if(depths.begin(), depths.end(), [least](PixelFormat depth) { return depth >= least; });
    return found != depths.end() ? *found : depths.back();
}

QString withEnding(QString const& output, QString const& ending, int64 frameCount) {
    QString name = withoutEnding(output);
    const std::optional<FileKind> kind = fileKindOf((name + ending).toStdString());
    if (!kind) return name + ending;
    const auto begin = name.lastIndexOf('/') + 1;
    if (isMovie(*kind)) {
        const QString bare = name.mid(begin).remove(numberPlace());
        name = name.left(begin) + (bare.isEmpty() ? "movie" : bare);
    } else if (frameCount > 1 && !hasNumberPlace(name)) {
        name += ".####";
    }
    return name + ending;
}

QString proposedOutput(ExportJob const& job, QString const& folder) {
    QString name;
    if (!job.files.isEmpty()) name = QFileInfo(job.files.front()).completeBaseName().remove(numberPlace());
    if (name.isEmpty()) name = "timeline";
    return withEnding(QDir(folder).absoluteFilePath(name + "-export"), job.frameCount() > 1 ? ".mp4" : ".png",
                      job.frameCount());
}

}  // namespace qrtplay
