#include "qrtProgram.h"

#include <QApplication>
#include <iostream>
#include <memory>

#include "foundation/core/qrtPlatform.h"
#include "foundation/logger/qrtLogMsg.h"
#include "info/qrtInfoCommand.h"
#include "media/qrtAv.h"
#include "options/qrtOptions.h"
#include "render/qrtConsole.h"
#include "render/qrtContactSheetCommand.h"
#include "render/qrtDisplay.h"
#include "render/qrtDryRun.h"
#include "render/qrtRenderCommand.h"
#include "render/qrtSelfTestCommand.h"
#include "render/qrtTraceRequest.h"
#include "viewer/qrtViewerApplication.h"
#include "viewer/qrtViewerProgram.h"

namespace qrtplay {

namespace {

/// An application object without a display serves for reading the command line, so that help needs none.
Outcome readCommandLine(int argc, char** argv, Options& options) {
    static char name[] = "qrtplay";
    static char* names[] = {name, nullptr};
    int count = 1;
    const QCoreApplication application(count, names);
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    return parseOptions(arguments, options);
}

void dropMinorMessages(QtMsgType type, QMessageLogContext const&, QString const& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) printError(text.simplified().toStdString());  // has lines
}

/// This program says itself what fails, in a line of its own; the lines of the libraries are for who asks for them.
void silenceLibraries() {
    if (Platform::getenv("QRT_DEBUG_PLAYER") || Platform::getenv("QT_LOGGING_RULES")) return;
    av_log_set_level(AV_LOG_QUIET);
    LogMsg::setSink([](LogMsg const&) {});
    qInstallMessageHandler(dropMinorMessages);
}

/// Ends a command that cannot begin for want of a display, in the manner of the command.
int endWithoutOpenGl(Options const& options, std::string const& why) {
    if (options.command == Options::Command::self_test) return reportNoOpenGl(options.selfTest, why);
    if (options.command == Options::Command::render) return reportNoOpenGl(options.render, why);
    printError(why);
    return exit_no_opengl;
}

/// The window needs more of Qt than a command, and contexts that share their objects. Qt gets no word but the name: it
/// would take "--display" for its own.
std::unique_ptr<QGuiApplication> makeApplication(Options const& options, char** argv) {
    static int count = 1;
    static char* words[] = {argv[0], nullptr};
    if (options.command == Options::Command::view) return makeViewerApplication(count, words);
    return std::make_unique<QGuiApplication>(count, words);
}

int runWithDisplay(char** argv, Options const& options) {
    if (Outcome outcome = checkDisplay(); outcome.failed()) return endWithoutOpenGl(options, outcome.message());
    const auto application = makeApplication(options, argv);
    if (Outcome outcome = checkPlatform(); outcome.failed()) return endWithoutOpenGl(options, outcome.message());
    switch (options.command) {
        case Options::Command::render: return runRender(options.render);
        case Options::Command::contact_sheet: return runContactSheet(options.contactSheet);
        case Options::Command::view: return runViewer(options.view);
        default: return runSelfTest(options.selfTest);
    }
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
    if (Outcome outcome = requestTrace(options.trace); outcome.failed()) {
        printError(outcome.message());
        return exit_usage;
    }
    silenceLibraries();
    const bool isDryRun = options.command == Options::Command::render && options.render.isDryRun;
    if (isDryRun || options.command == Options::Command::info) {
        const QCoreApplication application(argc, argv);
        return isDryRun ? runDryRun(options.render) : runInfo(options.info);
    }
    return runWithDisplay(argv, options);
}

}  // namespace qrtplay
