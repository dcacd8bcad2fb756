#include "options/qrtViewOptions.h"

#include <QFileInfo>

#include "options/qrtPlayOptions.h"
#include "playback/qrtTimecode.h"

namespace qrtplay {

namespace {

constexpr char viewExamples[] = R"(
Without a FILE the window opens empty. What an option does not say is as it was when the window was last closed. F1 in
the window lists all keys.

Exit status: 0 the window was closed, 1 the screenshot could not be made, 2 the command line is wrong, 5 no display.

Examples:
  qrtplay clip.mp4
  qrtplay cut.otio --play --loop
  qrtplay 'plates/shot.####.exr' --fps 24 --ocio config.ocio
)";

CommandSyntax viewSyntax() {
    return {
        "view",
        "Shows media files, image sequences or a timeline in a window. Several FILEs are played one after the other.\n"
        "The word 'view' may be left out.",
        "[FILE...] [options]",
        0,
        anyNumberOfFiles,
        {
            {"What is shown",
             {{"start", "FRAME", "Begins at this frame; frames are numbered from 0."},
              {"play", "", "Plays at once."},
              {"loop", "", "Begins again at the end."},
              {"ping-pong", "", "Turns round at the ends."},
              {"full-screen", "", "Shows nothing but the picture."},
              {"every-frame", "", "Shows every frame, however late; without it late ones are skipped."},
              {"mute", "", "Without sound."},
              {"screenshot", "PNG", "Writes a picture of the window (after two seconds with --play) and ends."},
              frameRateOption(),
              allowPathOption(),
              traceOption()}},
            pictureOptions(),
            playerOptions(),
        },
        viewExamples};
}

/// A word that is neither a file nor looks like one was meant for a command.
Outcome checkFirstWord(std::string const& word) {
    const QString text = QString::fromStdString(word);
    if (QFileInfo::exists(text) || text.contains('.') || text.contains('/') || text.contains('#')) return Outcome();
    return Outcome::failure("'" + word + "': neither a file nor a command; 'qrtplay --help' names them");
}

}  // namespace

std::string viewOptionsHelp() {
    return CommandLine(viewSyntax()).optionsHelp();
}

Outcome parseView(QStringList const& arguments, Options& options) {
    QStringList words = arguments;
    const bool isNamed = words.size() > 1 && words[1] == "view";
    if (!isNamed) words.insert(1, "view");
    CommandLine line(viewSyntax());
    if (Outcome outcome = line.parse(words); outcome.failed()) return outcome;
    if (line.isHelp()) {
        options.text = line.help();
        return Outcome();
    }
    ViewOptions& view = options.view;
    options.command = Options::Command::view;
    view.input.files = line.files();
    if (!isNamed && !view.input.files.empty()) {
        if (Outcome outcome = checkFirstWord(view.input.files.front()); outcome.failed()) return outcome;
    }
    view.input.allowPaths = line.values("allow-path");
    view.isPlaying = line.has("play");
    view.isFullScreen = line.has("full-screen");
    view.isEveryFrame = line.has("every-frame");
    view.isMuted = line.has("mute");
    view.screenshot = line.value("screenshot");
    if (line.has("screenshot") && !QString::fromStdString(view.screenshot).endsWith(".png", Qt::CaseInsensitive))
        return Outcome::failure("--screenshot '" + view.screenshot + "': has to end with .png");
    if (line.has("loop") && line.has("ping-pong")) return Outcome::failure("--loop and --ping-pong exclude each other");
    if (line.has("loop")) view.mode = PlayParams::loop;
    if (line.has("ping-pong")) view.mode = PlayParams::ping_pong;
    constexpr int mostFrames = 1 << 30;
    if (Outcome outcome = line.number("start", 0, mostFrames, view.start); outcome.failed()) return outcome;
    if (Outcome outcome = parseTraceOption(line, options.trace); outcome.failed()) return outcome;
    view.words = words;
    PlaySettings play;
    if (Outcome outcome = parsePlayOptions(line, play); outcome.failed()) return outcome;
    if (play.outputRate) view.input.imageRate = *play.outputRate;
    return Outcome();
}

void overrideSettings(ViewOptions const& options, PlaySettings& settings) {
    CommandLine line(viewSyntax());
    const bool isKnownToBeRight = line.parse(options.words).success() && parsePlayOptions(line, settings).success();
    Q_ASSERT(isKnownToBeRight || options.words.isEmpty());
    Q_UNUSED(isKnownToBeRight)
}

}  // namespace qrtplay
