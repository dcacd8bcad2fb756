#pragma once

#include <QSize>
#include <QStringList>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "render/qrtFrameRange.h"
#include "render/qrtOutputPattern.h"
#include "render/qrtPlaySession.h"

namespace qrtplay {

/// `qrtplay render`.
struct RenderOptions {
    std::string clip;
    std::vector<FrameRange> frames;  ///< empty: all
    OutputPattern output;
    PlaySettings play;
};

/// `qrtplay contact-sheet`.
struct ContactSheetOptions {
    std::string clip;
    std::string output;
    int columns = 4;
    int rows = 4;
    int width = 1600;  ///< of the whole sheet, in pixels
};

/// What the user wants.
struct Options {
    enum class Command { render, contact_sheet, print };

    Command command = Command::print;
    RenderOptions render;
    ContactSheetOptions contactSheet;
    std::string text;  ///< for `print`: help or version
};

/// Reads a command line, the program's name being its first word. Failures are one line that names the word.
/// Needs an application object.
Outcome parseOptions(QStringList const& arguments, Options& options);

}  // namespace qrtplay
