#include "input/qrtPlayInput.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "timeline/qrtImageSequencePattern.h"
#include "timeline/qrtMediaTimeline.h"
#include "timeline/qrtOtioAddress.h"
#include "timeline/qrtOtioReader.h"

namespace qrtplay {

namespace {

namespace fs = std::filesystem;

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

bool exists(std::string const& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

/// Who names images allows their folder, and not what links in it lead to.
Outcome checkAllowed(MediaReference const& reference, std::vector<std::string> const& allowPaths) {
    if (allowPaths.empty() || reference.kind != MediaReference::Kind::image_sequence) return Outcome();
    ImageSequenceName const& images = reference.images;
    AllowedFolders allowed(allowPaths);
    allowed.add(images.folder);
    if (allowed.allow(images)) return Outcome();
    return Outcome::failure(images.text() + ": links out of its folder and of those that --allow-path names");
}

Outcome refer(std::string const& file, Rational const& imageRate, MediaReference& reference) {
    reference.name = fs::path(file).filename().string();
    // A file whose own name looks like a pattern is that file.
    if (exists(file) || !isImageSequencePattern(file)) {
        reference.kind = MediaReference::Kind::file;
        reference.path = file;
        return exists(file) ? Outcome() : Outcome::failure(file + ": no such file");
    }
    reference.kind = MediaReference::Kind::image_sequence;
    return findImages(file, imageRate, reference.images);
}

Outcome openMedia(PlayInput const& input, OpenedInput& opened, InputFailure& kind) {
    std::vector<MeasuredMedia> media;
    for (std::string const& file : input.files) {
        MeasuredMedia measured;
        kind = InputFailure::missing;
        if (Outcome outcome = refer(file, input.imageRate, measured.reference); outcome.failed()) return outcome;
        kind = InputFailure::refused;
        if (Outcome outcome = checkAllowed(measured.reference, input.allowPaths); outcome.failed()) return outcome;
        if (Outcome outcome = opened.probe.measure(measured.reference, measured); outcome.failed()) return outcome;
        media.push_back(std::move(measured));
    }
    opened.timeline = makeMediaTimeline(media.front().reference.name, media);
    return Outcome();
}

Outcome openTimeline(PlayInput const& input, OpenedInput& opened, InputFailure& kind) {
    std::string const& path = input.files.front();
    kind = InputFailure::missing;
    if (!exists(path)) return Outcome::failure(path + ": no such file");
    kind = InputFailure::refused;
    OtioOptions options;
    options.allowPaths = input.allowPaths;
    options.probe = [&opened](MediaReference const& reference, MediaLength& length) {
        MeasuredMedia measured;
        Outcome outcome = opened.probe.measure(reference, measured);
        length = {measured.length, measured.rate};
        return outcome;
    };
    return readOtio(path, options, opened.timeline);
}

}  // namespace

bool isTimelinePath(std::string const& path) {
    fs::path trimmed(path);
    if (trimmed.filename().empty()) trimmed = trimmed.parent_path();  // a folder that is named with a slash at its end
    const std::string ending = lowerCase(trimmed.extension().string());
    return ending == ".otio" || ending == ".otiod" || ending == ".otioz";
}

Outcome openInput(PlayInput const& input, OpenedInput& opened, InputFailure& kind) {
    kind = InputFailure::refused;
    if (input.files.empty()) return Outcome::failure("no file is named");
    const auto timeline = std::find_if(input.files.begin(), input.files.end(), isTimelinePath);
    if (timeline == input.files.end()) {
        if (Outcome outcome = openMedia(input, opened, kind); outcome.failed()) return outcome;
    } else {
        if (input.files.size() > 1) return Outcome::failure(*timeline + ": a timeline is played alone");
        if (Outcome outcome = openTimeline(input, opened, kind); outcome.failed()) return outcome;
    }
    if (opened.timeline->frameCount() > 0) return Outcome();
    kind = InputFailure::refused;
    return Outcome::failure(input.files.front() + ": holds nothing that takes time");
}

}  // namespace qrtplay
