#pragma once

#include "base/qrtOutcome.h"
#include "options/qrtCommandLine.h"
#include "playback/qrtPlaySettings.h"

namespace qrtplay {

// Options of all commands that play something.

[[nodiscard]] CommandSyntax::Option allowPathOption();
[[nodiscard]] CommandSyntax::Option frameRateOption();
/// Size, scaling and colours.
[[nodiscard]] CommandSyntax::Group pictureOptions();
/// How the engine is used.
[[nodiscard]] CommandSyntax::Group playerOptions();

/// "--trace", of the commands that play what the user names.
[[nodiscard]] CommandSyntax::Option traceOption();
/// Reads it into `file`, which stays as it is without it.
Outcome parseTraceOption(CommandLine const& line, std::string& file);

/// "--convert", which is one of the player's.
[[nodiscard]] CommandSyntax::Option conversionOption();

/// Reads what a command line says of the frame rate and of both groups into `play`; what it does not say stays as it
/// is. Failures name the option.
Outcome parsePlayOptions(CommandLine const& line, PlaySettings& play);
/// The same of `conversionOption` alone.
Outcome parseConversionOption(CommandLine const& line, PlaySettings& play);

}  // namespace qrtplay
