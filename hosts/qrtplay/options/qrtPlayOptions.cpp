#include "options/qrtPlayOptions.h"

#include <QRegularExpression>
#include <QString>

#include "media/qrtVideoFacts.h"
#include "playback/qrtTimecode.h"

namespace qrtplay {

namespace {

constexpr int mostCachedFrames = 10000;
constexpr int mostCacheInMiB = 1 << 20;

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

Outcome parseScaling(std::string const& text, Scaling& scaling) {
    if (text == "fit")
        scaling = Scaling::fit;
    else if (text == "fill")
        scaling = Scaling::fill;
    else if (text == "1:1")
        scaling = Scaling::one_to_one;
    else
        return Outcome::failure("--scaling '" + text + "': has to be fit, fill or 1:1");
    return Outcome();
}

Outcome parseOcio(CommandLine const& line, OcioSettings& ocio) {
    for (char const* const name : {"ocio", "display", "view"}) {
        if (line.has(name) && line.value(name).empty())
            return Outcome::failure("--" + std::string(name) + ": has to be named");
    }
    if (line.has("ocio") || line.has("display") || line.has("view"))
        ocio = {line.value("ocio"), line.value("display"), line.value("view")};
    return Outcome();
}

}  // namespace

CommandSyntax::Option allowPathOption() {
    return {"allow-path", "DIR",
            "What a timeline names, and where links among images lead, is opened in this folder only; can be repeated. "
            "Anywhere without it."};
}

CommandSyntax::Option frameRateOption() {
    return {"fps", "RATE",
            "Frames per second of the output, such as 25, 23.976 or 24000/1001; the input's own without it."};
}

CommandSyntax::Group pictureOptions() {
    return {"Picture",
            {{"resolution", "WxH", "Size of the frames; the input's own without it."},
             {"scaling", "HOW", "For pictures of another size: fit (with bars, the default), fill (cut off) or 1:1."},
             {"ocio", "CONFIG",
              "Manages colours with this OpenColorIO configuration; with the one that OCIO names without it, ..."},
             {"display", "D", "... for this display of it ..."},
             {"view", "V", "... and this view; its defaults without them."}}};
}

CommandSyntax::Group playerOptions() {
    return {"Player",
            {{"vram", "", "Frames are delivered as textures (the default)."},
             {"ram", "", "Frames are delivered as blocks of memory."},
             {"head", "N", "How many frames are kept rendered ahead."},
             {"tail", "N", "How many frames are kept rendered behind."},
             {"cache", "MIB", "Memory for decoded pictures, in MiB; 512 without it."},
             conversionOption()}};
}

CommandSyntax::Option traceOption() {
    return {"trace", "JSON",
            "Writes what the engine does, and when, into this file, which Perfetto and chrome://tracing open."};
}

Outcome parseTraceOption(CommandLine const& line, std::string& file) {
    if (!line.has("trace")) return Outcome();
    // Any other file is more likely to be one that is to be kept.
    if (!QString::fromStdString(line.value("trace")).endsWith(".json", Qt::CaseInsensitive))
        return Outcome::failure("--trace '" + line.value("trace") + "': has to end with .json");
    file = line.value("trace");
    return Outcome();
}

CommandSyntax::Option conversionOption() {
    return {"convert", "WHERE",
            "Where pictures get their colours and their size: cpu, gpu or auto (cpu when OpenGL runs in software; the "
            "default)."};
}

Outcome parseConversionOption(CommandLine const& line, PlaySettings& play) {
    if (!line.has("convert")) return Outcome();
    ConversionChoice choice{};
    if (!parseConversion(line.value("convert"), choice))
        return Outcome::failure("--convert '" + line.value("convert") + "': has to be auto, cpu or gpu");
    play.conversion = choice;
    return Outcome();
}

Outcome parsePlayOptions(CommandLine const& line, PlaySettings& play) {
    if (line.has("ram") && line.has("vram")) return Outcome::failure("--ram and --vram exclude each other");
    if (line.has("ram") || line.has("vram")) play.ramOutputs = line.has("ram");
    if (line.has("resolution")) {
        Outcome outcome = parseResolution(line.value("resolution"), play.resolution);
        if (outcome.failed()) return outcome;
    }
    if (line.has("scaling")) {
        if (Outcome outcome = parseScaling(line.value("scaling"), play.scaling); outcome.failed()) return outcome;
    }
    if (line.has("fps")) {
        Rational rate;
        if (Outcome outcome = parseRate(line.value("fps"), rate); outcome.failed()) return outcome;
        play.outputRate = rate;
    }
    if (Outcome outcome = parseOcio(line, play.ocio); outcome.failed()) return outcome;
    if (Outcome outcome = parseConversionOption(line, play); outcome.failed()) return outcome;
    Outcome outcome = line.number("head", 0, mostCachedFrames, play.headFrames);
    if (outcome.success()) outcome = line.number("tail", 0, mostCachedFrames, play.tailFrames);
    if (outcome.success()) outcome = line.number("cache", 1, mostCacheInMiB, play.decodeCacheInMiB);
    return outcome;
}

}  // namespace qrtplay
