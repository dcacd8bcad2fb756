#include "info/qrtInfoCommand.h"

#include <iostream>
#include <memory>

#include "info/qrtInfoText.h"
#include "info/qrtMediaInfo.h"
#include "render/qrtConsole.h"
#include "render/qrtJsonText.h"
#include "render/qrtOpenInput.h"

namespace qrtplay {

namespace {

int fail(InfoOptions const& options, Outcome const& outcome, ExitStatus status) {
    printError(outcome.message());
    if (options.isJson) {
        JsonText json;
        json.beginObject().add("path", options.input.files.front()).add("error", outcome.message()).endObject();
        std::cout << json.text() << std::endl;
    }
    return status;
}

/// Looks for every media, so that the table tells what is missing before a long run does.
std::vector<std::string> problemsOf(Timeline const& timeline) {
    std::vector<std::string> problems;
    for (MediaReference const& reference : timeline.media()) {
        MediaInfo info;
        problems.push_back(readMediaInfo(reference, info).message());
    }
    return problems;
}

}  // namespace

int runInfo(InfoOptions const& options) {
    std::string const& path = options.input.files.front();
    OpenedInput opened;
    InputFailure kind = InputFailure::refused;
    if (Outcome outcome = openInput(options.input, opened, kind); outcome.failed())
        return fail(options, outcome, statusOf(kind));
    Timeline const& timeline = *opened.timeline;
    if (isTimelinePath(path)) {
        const std::vector<std::string> problems = problemsOf(timeline);
        std::cout << (options.isJson ? timelineJson(path, timeline, problems) : timelineTable(path, timeline, problems))
                  << std::flush;
        return exit_done;
    }
    MediaInfo info;
    if (Outcome outcome = readMediaInfo(timeline.media().front(), info); outcome.failed())
        return fail(options, outcome, exit_refused);
    std::cout << (options.isJson ? mediaJson(path, info) : mediaTable(path, info)) << std::flush;
    return exit_done;
}

}  // namespace qrtplay
