#pragma once

#include <QStringList>
#include <optional>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "encode/qrtOutputFormat.h"
#include "input/qrtPlayInput.h"
#include "options/qrtFrameRange.h"
#include "options/qrtOutputPattern.h"
#include "playback/qrtPlaySettings.h"
#include "player/qrtPlayParams.h"

namespace qrtplay {

/// `qrtplay render`.
struct RenderOptions {
    PlayInput input;
    PlaySettings play;
    std::vector<FrameRange> frames;  ///< empty: all
    bool hasOutput = true;           ///< false: frames are played and thrown away
    OutputPattern output;
    OutputFormat format;
    bool withSound = true;
    bool skipExisting = false;
    bool isDryRun = false;
    bool isJson = false;
    int loops = 1;
    std::vector<std::string> words;  ///< the whole command line, the program's name first
};

/// `qrtplay contact-sheet`.
struct ContactSheetOptions {
    PlayInput input;
    PlaySettings play;
    std::string output;
    int columns = 4;
    int rows = 4;
    int width = 1600;  ///< of the whole sheet, in pixels
};

/// `qrtplay info`.
struct InfoOptions {
    PlayInput input;
    bool isJson = false;
};

/// `qrtplay self-test`.
struct SelfTestOptions {
    bool isJson = false;
};

/// `qrtplay [view]`: the window.
struct ViewOptions {
    PlayInput input;  ///< without files the window opens empty
    std::optional<int> start;
    bool isPlaying = false;
    bool isFullScreen = false;
    bool isEveryFrame = false;
    bool isMuted = false;
    std::optional<PlayParams::PlayMode> mode;
    std::string screenshot;  ///< a file to write a picture of the window to, which then ends; empty: none
    QStringList words;       ///< the whole command line
};

/// What the user wants.
struct Options {
    enum class Command { render, contact_sheet, info, self_test, view, print };

    Command command = Command::print;
    RenderOptions render;
    ContactSheetOptions contactSheet;
    InfoOptions info;
    SelfTestOptions selfTest;
    ViewOptions view;
    std::string trace;  ///< a file for what the engine does; empty: none
    std::string text;   ///< for `print`: help or version
};

/// Reads a command line, the program's name being its first word. Failures are one line that names the word.
/// Needs an application object.
Outcome parseOptions(QStringList const& arguments, Options& options);

}  // namespace qrtplay
