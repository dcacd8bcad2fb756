#include "render/qrtOptions.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace qrtplay {

namespace {

constexpr char version[] = "qrtplay 0.81.0\n";

constexpr char overview[] = R"(Plays media files through the QRT player and keeps what it shows.

Usage:
  qrtplay render CLIP --output PATTERN [options]       writes frames of a clip as PNG files
  qrtplay contact-sheet CLIP --output FILE [options]   writes one PNG with frames from all over a clip
  qrtplay COMMAND --help                               explains a command
  qrtplay --help | --version

Examples:
  qrtplay render clip.mp4 --output 'out/frame.####.png'
  qrtplay render clip.mp4 --frames 0-99 --output 'out/frame.####.png'
  qrtplay contact-sheet clip.mp4 --output sheet.png

Without a display (on a server, say) run it under scripts/with-display.sh or xvfb-run.
Exit status: 0 all was written, 1 something was not, 2 the command line is wrong, 130 ended by Ctrl-C.
)";

constexpr char renderExamples[] = R"(
Frames are numbered from 0. --frames takes
  7           one frame
  0-99        a hundred frames
  10-90x5     every fifth frame from 10 to 90
  99-0x-1     a hundred frames backwards (also 99-0)
  0-9,50,90-99   a list of these

Examples:
  qrtplay render clip.mp4 --output 'out/frame.####.png'
  qrtplay render clip.mp4 --frames 7 --output poster.png
  qrtplay render clip.mp4 --frames 10-90x5 --output 'out/%04d.png' --resolution 640x360
  qrtplay render clip.mp4 --frames 99-0x-1 --output 'out/frame.####.png' --ram --head 8 --tail 2

A frame that cannot be decoded is named, the others are still written, and the exit status is 1.
)";

constexpr char contactSheetExamples[] = R"(
Examples:
  qrtplay contact-sheet clip.mp4 --output sheet.png
  qrtplay contact-sheet clip.mp4 --output sheet.png --columns 6 --rows 5 --width 2400
)";

/// The parts of a command line that both commands have.
class CommandLine {
public:
    CommandLine(QString const& command, QString const& description) {
        m_parser.setApplicationDescription(description);
        m_parser.addPositionalArgument(command, "This command.", command);
        m_parser.addPositionalArgument("clip", "The media file to play.", "CLIP");
        m_parser.addOption({{"h", "help"}, "Shows this text."});
    }

    void add(QString const& name, QString const& description, QString const& value = {}, QString const& usual = {}) {
        m_parser.addOption({name, description, value, usual});
    }

    Outcome parse(QStringList const& arguments) {
        if (!m_parser.parse(arguments)) return Outcome::failure(withoutFullStop(m_parser.errorText()));
        if (isHelp()) return Outcome();
        const QStringList words = m_parser.positionalArguments();
        if (words.size() < 2 || words[1].isEmpty()) return Outcome::failure(words.first().toStdString() + ": no clip is named");
        if (words.size() > 2) return Outcome::failure("'" + words[2].toStdString() + "': one clip at a time");
        return Outcome();
    }

    [[nodiscard]] bool isHelp() const { return m_parser.isSet("help"); }
    [[nodiscard]] std::string help(char const* examples) const { return m_parser.helpText().toStdString() + examples; }
    [[nodiscard]] std::string clip() const { return m_parser.positionalArguments()[1].toStdString(); }
    [[nodiscard]] bool has(QString const& name) const { return m_parser.isSet(name); }
    [[nodiscard]] std::string value(QString const& name) const { return m_parser.value(name).toStdString(); }

    Outcome number(QString const& name, int least, int most, int& number) const {
        bool isNumber = false;
        const int read = m_parser.value(name).toInt(&isNumber);
        if (!isNumber || read < least || read > most)
            return Outcome::failure("--" + name.toStdString() + " '" + value(name) + "': has to be a number from " +
                                    std::to_string(least) + " to " + std::to_string(most));
        number = read;
        return Outcome();
    }

    Outcome optionalNumber(QString const& name, int least, int most, std::optional<int>& target) const {
        if (!has(name)) return Outcome();
        int read = 0;
        Outcome outcome = number(name, least, most, read);
        if (outcome.success()) target = read;
        return outcome;
    }

private:
    static std::string withoutFullStop(QString text) {
        if (text.endsWith('.')) text.chop(1);
        return text.toStdString();
    }

    QCommandLineParser m_parser;
};

Outcome parseResolution(std::string const& text, std::optional<QSize>& resolution) {
    static const QRegularExpression form("^([0-9]{1,9})x([0-9]{1,9})$");
    const auto match = form.match(QString::fromStdString(text));
    if (!match.hasMatch())
        return Outcome::failure("resolution '" + text + "': has to be WIDTHxHEIGHT in pixels, for example 1280x720");
    const QSize size(match.captured(1).toInt(), match.captured(2).toInt());
    if (size.width() < 1 || size.height() < 1 || size.width() > maxPictureSide || size.height() > maxPictureSide)
        return Outcome::failure("resolution '" + text + "': width and height have to lie between 1 and " +
                                std::to_string(maxPictureSide));
    resolution = size;
    return Outcome();
}

Outcome parseOutput(CommandLine const& line, OutputPattern& output) {
    if (!line.has("output")) return Outcome::failure("no output is named; add --output FILE.png");
    return OutputPattern::parse(line.value("output"), output);
}

Outcome parseRender(QStringList const& arguments, Options& options) {
    constexpr int mostCachedFrames = 10000;
    CommandLine line("render", "Writes frames of a clip as PNG files.");
    line.add("frames", "Which frames, see below; all without it.", "RANGE");
    line.add("output", "Where to: '####' or '%04d' in the name is the frame number.", "PATTERN");
    line.add("vram", "Frames are delivered as textures (the default).");
    line.add("ram", "Frames are delivered as blocks of memory.");
    line.add("resolution", "Size of the frames; the clip's own without it. Bars fill up another shape.", "WxH");
    line.add("head", "How many frames are kept rendered ahead.", "N");
    line.add("tail", "How many frames are kept rendered behind.", "N");
    if (Outcome outcome = line.parse(arguments); outcome.failed()) return outcome;
    if (line.isHelp()) {
        options.text = line.help(renderExamples);
        return Outcome();
    }

    RenderOptions& render = options.render;
    options.command = Options::Command::render;
    render.clip = line.clip();
    if (line.has("ram") && line.has("vram")) return Outcome::failure("--ram and --vram exclude each other");
    render.play.ramOutputs = line.has("ram");
    if (Outcome outcome = parseOutput(line, render.output); outcome.failed()) return outcome;
    if (line.has("frames")) {
        Outcome outcome = parseFrameRanges(line.value("frames"), render.frames);
        if (outcome.failed()) return outcome;
    }
    if (line.has("resolution")) {
        Outcome outcome = parseResolution(line.value("resolution"), render.play.resolution);
        if (outcome.failed()) return outcome;
    }
    Outcome outcome = line.optionalNumber("head", 0, mostCachedFrames, render.play.headFrames);
    if (outcome.success()) outcome = line.optionalNumber("tail", 0, mostCachedFrames, render.play.tailFrames);
    return outcome;
}

Outcome parseContactSheet(QStringList const& arguments, Options& options) {
    CommandLine line("contact-sheet", "Writes one PNG with frames from all over a clip.");
    line.add("output", "The file to write.", "FILE");
    line.add("columns", "Frames beside each other (4).", "N", "4");
    line.add("rows", "Frames below each other (4).", "N", "4");
    line.add("width", "Width of the sheet in pixels (1600).", "W", "1600");
    if (Outcome outcome = line.parse(arguments); outcome.failed()) return outcome;
    if (line.isHelp()) {
        options.text = line.help(contactSheetExamples);
        return Outcome();
    }

    ContactSheetOptions& sheet = options.contactSheet;
    options.command = Options::Command::contact_sheet;
    sheet.clip = line.clip();
    OutputPattern output;
    if (Outcome outcome = parseOutput(line, output); outcome.failed()) return outcome;
    sheet.output = output.text();
    constexpr int mostTiles = 50;
    constexpr int leastWidth = 320;
    constexpr int mostWidth = 16384;
    Outcome outcome = line.number("columns", 1, mostTiles, sheet.columns);
    if (outcome.success()) outcome = line.number("rows", 1, mostTiles, sheet.rows);
    if (outcome.success()) outcome = line.number("width", leastWidth, mostWidth, sheet.width);
    return outcome;
}

}  // namespace

Outcome parseOptions(QStringList const& arguments, Options& options) {
    options = Options();
    if (arguments.size() < 2) return Outcome::failure("no command is given; 'qrtplay --help' names them");
    const QString command = arguments[1];
    if (command == "render") return parseRender(arguments, options);
    if (command == "contact-sheet") return parseContactSheet(arguments, options);
    if (command == "--help" || command == "-h" || command == "help") {
        options.text = overview;
        return Outcome();
    }
    if (command == "--version" || command == "-v") {
        options.text = version;
        return Outcome();
    }
    return Outcome::failure("'" + command.toStdString() + "': not a command; 'qrtplay --help' names them");
}

}  // namespace qrtplay
