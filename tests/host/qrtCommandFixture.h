#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <string>

#include "host/qrtTestClips.h"

namespace qrtplay {

/// The program itself, run as a user runs it, in a folder of its own.
class Command : public ::testing::Test {
protected:
    struct Result {
        int status;
        std::string output;
        std::string errors;
    };

    Result run(QStringList const& arguments, QProcess::ExitStatus ending = QProcess::NormalExit) {
        QProcess process;
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(folder.path());
        process.start(QRT_PLAY_PROGRAM, arguments);
        constexpr int longestMs = 300000;
        const bool finished = process.waitForFinished(longestMs);
        EXPECT_TRUE(finished) << arguments.join(' ').toStdString();
        EXPECT_EQ(process.exitStatus(), ending) << arguments.join(' ').toStdString();
        return {process.exitCode(), process.readAllStandardOutput().toStdString(),
                process.readAllStandardError().toStdString()};
    }

    /// Runs something that has to end with one line on standard error.
    std::string failure(QStringList const& arguments, int status = 1) {
        const Result result = run(arguments);
        EXPECT_EQ(result.status, status) << result.errors;
        EXPECT_THAT(result.errors, ::testing::StartsWith("qrtplay: "));
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        EXPECT_EQ(result.output, "");
        return result.errors;
    }

    QStringList files(QString const& below = ".") const {
        return QDir(folder.filePath(below)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    QImage image(QString const& name) const {
        return QImage(folder.filePath(name)).convertToFormat(QImage::Format_RGB32);
    }
    static QString clip(std::string const& name) { return QString::fromStdString(clipPath(name)); }

    QTemporaryDir folder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};

}  // namespace qrtplay
