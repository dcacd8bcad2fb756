#include "render/qrtProgram.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <iostream>

#include "foundation/core/qrtPlatform.h"
#include "foundation/logger/qrtLogMsg.h"
#include "media/qrtAv.h"
#include "render/qrtConsole.h"
#include "render/qrtContactSheetCommand.h"
#include "render/qrtDisplay.h"
#include "render/qrtOptions.h"
#include "render/qrtRenderCommand.h"

namespace qrtplay {

namespace {

/// An application object without a display serves for reading the command line, so that help needs none.
Outcome readCommandLine(int argc, char** argv, Options& options) {
    static char name[] = "qrtplay";
    static char* names[] = {name, nullptr};
    int count = 1;
    const QCoreApplication application(count, names);
    QStringList arguments;
    for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
    return parseOptions(arguments, options);
}

void dropMinorMessages(QtMsgType type, QMessageLogContext const&, QString const& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) std::cerr << "qrtplay: " << text.toStdString() << std::endl;
}

/// This program says itself what fails, in a line of its own; the lines of the libraries are for who asks for them.
void silenceLibraries() {
    if (Platform::getenv("QRT_DEBUG_PLAYER") || Platform::getenv("QT_LOGGING_RULES")) return;
    av_log_set_level(AV_LOG_QUIET);
    LogMsg::setSink([](LogMsg const&) {});
    qInstallMessageHandler(dropMinorMessages);
}

}  // namespace

int runProgram(int argc, char** argv) {
    Options options;
    if (Outcome outcome = readCommandLine(argc, argv, options); outcome.failed()) {
        printError(outcome.message());
        return exit_usage;
    }
    if (options.command == Options::Command::print) {
        std::cout << options.text << std::flush;
        return exit_done;
    }
    if (Outcome outcome = checkDisplay(); outcome.failed()) {
        printError(outcome.message());
        return exit_failed;
    }
    silenceLibraries();
    const QGuiApplication application(argc, argv);
    if (Outcome outcome = checkPlatform(); outcome.failed()) {
        printError(outcome.message());
        return exit_failed;
    }
    return options.command == Options::Command::render ? runRender(options.render)
                                                       : runContactSheet(options.contactSheet);
}

}  // namespace qrtplay
