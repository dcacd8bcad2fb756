#include "options/qrtOptions.h"

#include "base/qrtProgramVersion.h"
#include "options/qrtCommandLine.h"
#include "options/qrtPlayOptions.h"
#include "options/qrtRenderOptions.h"
#include "options/qrtViewOptions.h"

namespace qrtplay {

namespace {

constexpr char overview[] = R"(Plays media files and timelines through the QRT player and keeps what it shows.

Usage:
  qrtplay [FILE...] [options]                          shows files in a window
  qrtplay render FILE... --output PATTERN [options]    writes frames as image files or a movie
  qrtplay contact-sheet FILE --output SHEET [options]  writes one picture with frames from all over a file
  qrtplay info FILE [--json]                           tells what a file or a timeline holds
  qrtplay self-test [--json]                           tells whether this machine can play
  qrtplay COMMAND --help                               explains a command
  qrtplay --help | --version

A FILE is a media file, an image sequence such as 'plates/shot.####.exr', or a timeline (.otio, .otioz, .otiod).

Examples:
  qrtplay clip.mp4 --play
  qrtplay render clip.mp4 --output 'out/frame.####.png'
  qrtplay render cut.otio --frames 0-99 --output cut.mov
  qrtplay contact-sheet clip.mp4 --output sheet.png
  qrtplay info cut.otio

Options of the window ('qrtplay view --help' explains more):
)";

constexpr char overviewEnd[] = R"(
Without a display (on a server, say) run the commands under xvfb-run, which starts one.
Exit status: 0 done, 1 failed, 2 the command line is wrong, 3 an input is missing, 4 a media or timeline was refused,
5 no OpenGL, 6 some frames failed, 130 ended by Ctrl-C.
)";

constexpr char contactSheetExamples[] = R"(
Examples:
  qrtplay contact-sheet clip.mp4 --output sheet.png
  qrtplay contact-sheet cut.otio --output sheet.jpg --columns 6 --rows 5 --width 2400
)";

constexpr char infoExamples[] = R"(
Needs no display. Exit status: 0 told, 3 the file is missing, 4 it was refused.

Examples:
  qrtplay info clip.mp4
  qrtplay info 'plates/shot.####.exr'
  qrtplay info cut.otio --json
)";

constexpr char selfTestExamples[] = R"(
Tells the OpenGL in use and the decoders, plays a small movie of its own through both kinds of delivery, and compares
every pixel and the sound. Exit status: 0 all is well, 1 something is not, 5 no OpenGL.

Examples:
  qrtplay self-test
  qrtplay self-test --json
)";

Outcome parseContactSheet(QStringList const& arguments, Options& options) {
    CommandLine line({"contact-sheet",
                      "Writes one picture with frames from all over a file.",
                      "FILE --output SHEET [options]",
                      1,
                      1,
                      {{"Options",
                        {{"output", "SHEET", "The file to write: .png, .tif or .jpg."},
                         {"columns", "N", "Frames beside each other (4)."},
                         {"rows", "N", "Frames below each other (4)."},
                         {"width", "W", "Width of the sheet in pixels (1600)."},
                         conversionOption(),
                         allowPathOption(),
                         traceOption()}}},
                      contactSheetExamples});
    if (Outcome outcome = line.parse(arguments); outcome.failed()) return outcome;
    if (line.isHelp()) {
        options.text = line.help();
        return Outcome();
    }
    ContactSheetOptions& sheet = options.contactSheet;
    options.command = Options::Command::contact_sheet;
    sheet.input.files = line.files();
    sheet.input.allowPaths = line.values("allow-path");
    if (!line.has("output")) return Outcome::failure("no output is named; add --output FILE.png");
    sheet.output = line.value("output");
    OutputFormat format;
    if (Outcome outcome = chooseOutputFormat(sheet.output, {{}, PixelFormat::rgba8, {}}, format); outcome.failed())
        return outcome;
    if (isMovie(format.kind)) return Outcome::failure("output '" + sheet.output + "': a contact sheet is no movie");
    constexpr int mostTiles = 50;
    constexpr int leastWidth = 320;
    constexpr int mostWidth = 16384;
    Outcome outcome = parseConversionOption(line, sheet.play);
    if (outcome.success()) outcome = parseTraceOption(line, options.trace);
    if (outcome.success()) outcome = line.number("columns", 1, mostTiles, sheet.columns);
    if (outcome.success()) outcome = line.number("rows", 1, mostTiles, sheet.rows);
    if (outcome.success()) outcome = line.number("width", leastWidth, mostWidth, sheet.width);
    return outcome;
}

Outcome parseInfo(QStringList const& arguments, Options& options) {
    CommandLine line({"info",
                      "Tells what a media file, an image sequence or a timeline holds.",
                      "FILE [options]",
                      1,
                      1,
                      {{"Options", {{"json", "", "As one JSON object on standard output."}, allowPathOption()}}},
                      infoExamples});
    if (Outcome outcome = line.parse(arguments); outcome.failed()) return outcome;
    if (line.isHelp()) {
        options.text = line.help();
        return Outcome();
    }
    options.command = Options::Command::info;
    options.info.input.files = line.files();
    options.info.input.allowPaths = line.values("allow-path");
    options.info.isJson = line.has("json");
    return Outcome();
}

Outcome parseSelfTest(QStringList const& arguments, Options& options) {
    CommandLine line({"self-test",
                      "Tells whether this machine can play.",
                      "[options]",
                      0,
                      0,
                      {{"Options", {{"json", "", "As one JSON object on standard output."}}}},
                      selfTestExamples});
    if (Outcome outcome = line.parse(arguments); outcome.failed()) return outcome;
    if (line.isHelp()) {
        options.text = line.help();
        return Outcome();
    }
    options.command = Options::Command::self_test;
    options.selfTest.isJson = line.has("json");
    return Outcome();
}

Outcome parseCommand(QStringList const& arguments, Options& options) {
    const QString command = arguments.value(1);
    if (command == "render") return parseRender(arguments, options);
    if (command == "contact-sheet") return parseContactSheet(arguments, options);
    if (command == "info") return parseInfo(arguments, options);
    if (command == "self-test") return parseSelfTest(arguments, options);
    if (command == "--help" || command == "-h" || command == "help") {
        options.text = overview + viewOptionsHelp() + overviewEnd;
        return Outcome();
    }
    if (command == "--version" || command == "-v") {
        options.text = "qrtplay " + std::string(versionNumber) + "\n";
        return Outcome();
    }
    return parseView(arguments, options);
}

}  // namespace

Outcome parseOptions(QStringList const& arguments, Options& options) {
    options = Options();
    return parseCommand(arguments, options);
}

}  // namespace qrtplay
