#include "options/qrtRenderOptions.h"

#include "options/qrtPlayOptions.h"

namespace qrtplay {

namespace {

constexpr int mostLoops = 1000000;

constexpr char renderExamples[] = R"(
Frames are numbered from 0, at the rate of the output. --frames takes
  7             one frame
  0-99          a hundred frames
  100-          all from the hundredth on
  10-90x5       every fifth frame from 10 to 90
  99-0          a hundred frames backwards (also 99-0x-1); 99-0x3 every third of them
  0-9,50,90-99  a list of these

The ending of --output says what is written:
  .png .tif .tiff .exr .jpg .jpeg   a file a frame; '####' or '%04d' in the name is the frame number;
                                    EXR holds linear light, the others are coded for an sRGB display
  .mp4   H.264 and AAC              .mov   ProRes 422 HQ (or H.264) and PCM of 24 bits
  .mkv   FFV1, which loses nothing (or H.264, ProRes), and PCM of 24 bits

Files are written under a temporary name and renamed when they are whole. A frame that cannot be had is named and the
others are still written; in a movie it repeats the frame before it. Ctrl-C ends the run after the frames that are being
written; what to call to go on is said then.

Exit status: 0 all was written (or there already), 1 failed, 2 the command line is wrong, 3 an input is missing,
4 a media or timeline was refused, 5 no OpenGL, 6 some frames failed, 130 interrupted.

Examples:
  qrtplay render clip.mp4 --output 'out/frame.####.png'
  qrtplay render cut.otio --frames 100-199 --output 'out/cut.%04d.exr' --skip-existing
  qrtplay render cut.otio --output cut.mov --resolution 1920x1080 --fps 25
  qrtplay render a.mp4 b.mp4 --output both.mp4 --quality 80
  qrtplay render clip.mp4 --frames 99-0 --output 'out/frame.####.jpg' --ram --head 8 --tail 2
  qrtplay render cut.otio --output 'out/####.tif' --depth 16 --ocio config.ocio --display sRGB --view Film
  qrtplay render clip.mp4 --no-output --loop 100
)";

CommandSyntax renderSyntax() {
    return {
        "render",
        "Renders frames of media files, image sequences and timelines into image files or a movie. Several FILEs are\n"
        "played one after the other.",
        "FILE... --output PATTERN [options]",
        1,
        anyNumberOfFiles,
        {
            {"What is rendered",
             {{"frames", "RANGES", "Which frames, see below; all without it."},
              frameRateOption(),
              {"loop", "N", "Plays it N times and tells how the memory grows; with --no-output."},
              allowPathOption()}},
            {"What is written",
             {{"output", "PATTERN", "The files to write, see below."},
              {"no-output", "", "Plays without writing anything."},
              {"depth", "BITS", "Bits per channel: 8 or 16 for PNG, TIFF and movies, 16f or 32f for EXR."},
              {"quality", "Q", "Of JPEG (90) and H.264 (64): 1 to 100."},
              {"codec", "CODEC", "Of a movie: h264, prores or ffv1."},
              {"no-sound", "", "Leaves the sound out of a movie."},
              {"skip-existing", "", "Leaves out frames whose file is there, and a movie that is there."},
              {"dry-run", "", "Says what would be written, and writes nothing. Needs no OpenGL."}}},
            pictureOptions(),
            playerOptions(),
            {"Report",
             {{"json", "", "One JSON object a line on standard output for everything that happens, a summary last."},
              traceOption()}},
        },
        renderExamples};
}

/// Options that say how files are written make no sense without files.
Outcome parseNoOutput(CommandLine const& line, RenderOptions& render) {
    for (char const* const name : {"output", "quality", "codec", "skip-existing", "dry-run"}) {
        if (line.has(name)) return Outcome::failure("--" + std::string(name) + " and --no-output exclude each other");
    }
    render.hasOutput = false;
    if (line.has("depth")) {
        const std::optional<PixelFormat> depth = depthOf(line.value("depth"));
        if (!depth) return Outcome::failure("--depth '" + line.value("depth") + "': has to be 8, 16, 16f or 32f");
        render.format.depth = *depth;
    }
    return line.number("loop", 1, mostLoops, render.loops);
}

Outcome parseFormat(CommandLine const& line, RenderOptions& render) {
    FormatWishes wishes;
    if (line.has("depth")) {
        wishes.depth = depthOf(line.value("depth"));
        if (!wishes.depth)
            return Outcome::failure("--depth '" + line.value("depth") + "': has to be 8, 16, 16f or 32f");
    }
    if (line.has("codec")) {
        wishes.codec = videoCodecOf(line.value("codec"));
        if (!wishes.codec)
            return Outcome::failure("--codec '" + line.value("codec") + "': has to be h264, prores or ffv1");
    }
    constexpr int best = 100;
    if (Outcome outcome = line.number("quality", 1, best, wishes.quality); outcome.failed()) return outcome;
    return chooseOutputFormat(render.output.text(), wishes, render.format);
}

Outcome parseOutput(CommandLine const& line, RenderOptions& render) {
    if (line.has("no-output")) return parseNoOutput(line, render);
    if (!line.has("output")) return Outcome::failure("no output is named; add --output FILE, or --no-output");
    if (line.has("loop")) return Outcome::failure("--loop needs --no-output");
    if (Outcome outcome = OutputPattern::parse(line.value("output"), render.output); outcome.failed()) return outcome;
    if (Outcome outcome = parseFormat(line, render); outcome.failed()) return outcome;
    if (isMovie(render.format.kind) && render.output.hasNumber())
        return Outcome::failure("output '" + render.output.text() + "': a movie has no place for a frame number");
    render.skipExisting = line.has("skip-existing");
    render.isDryRun = line.has("dry-run");
    if (render.isDryRun && line.has("trace")) return Outcome::failure("--trace and --dry-run exclude each other");
    return Outcome();
}

}  // namespace

Outcome parseRender(QStringList const& arguments, Options& options) {
    CommandLine line(renderSyntax());
    if (Outcome outcome = line.parse(arguments); outcome.failed()) return outcome;
    if (line.isHelp()) {
        options.text = line.help();
        return Outcome();
    }
    RenderOptions& render = options.render;
    options.command = Options::Command::render;
    render.input.files = line.files();
    render.input.allowPaths = line.values("allow-path");
    for (const QString& word : arguments)
        render.words.push_back(word.toStdString());
    if (Outcome outcome = parseOutput(line, render); outcome.failed()) return outcome;
    if (Outcome outcome = parsePlayOptions(line, render.play); outcome.failed()) return outcome;
    if (Outcome outcome = parseTraceOption(line, options.trace); outcome.failed()) return outcome;
    render.play.depth = render.format.depth;
    // The files of an image sequence do not tell their rate; the output's is the best guess.
    if (render.play.outputRate) render.input.imageRate = *render.play.outputRate;
    render.withSound = !line.has("no-sound");
    render.isJson = line.has("json");
    return line.has("frames") ? parseFrameRanges(line.value("frames"), render.frames) : Outcome();
}

}  // namespace qrtplay
