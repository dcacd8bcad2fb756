#include "timeline/qrtOtioReader.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <new>
#include <system_error>
#include <utility>

#include "base/qrtLimits.h"
#include "timeline/qrtOtioBuilder.h"
#include "timeline/qrtOtioBundle.h"
#include "timeline/qrtOtioJson.h"
#include "timeline/qrtOtioRun.h"
#include "timeline/qrtTemporaryFolder.h"

namespace qrtplay {

namespace {

namespace fs = std::filesystem;

std::string withoutLinks(std::string const& path) {
    std::error_code error;
    const fs::path resolved = fs::weakly_canonical(path, error);
    return error ? path : resolved.string();
}

std::string folderOf(std::string const& path) {
    const std::string folder = fs::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// `name` is what messages call the file.
std::string readText(std::string const& path, std::string const& name, OtioRun& run) {
    const auto fail = [&](std::string const& what) { throw OtioFault(oneLine(name) + ": " + what); };
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    // Neither folders nor pipes nor devices, which may never end.
    if (!fs::is_regular_file(status)) fail(fs::exists(status) ? "is no file" : "there is no such file");
    const std::uintmax_t size = fs::file_size(path, error);
    if (error) fail("cannot be read: " + error.message());
    if (size > run.bytesLeft)
        fail("is too large: a timeline and what it refers to have at most " + std::to_string(maxTimelineBytes >> 20) +
             " MiB");
    std::string text(static_cast<size_t>(size), '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(text.data(), static_cast<std::streamsize>(size));
    if (!file) fail("cannot be read");
    run.bytesLeft -= text.size();
    return text;
}

void parse(std::string const& text, std::string const& name, rapidjson::Document& document) {
    const Outcome outcome = readOtioJson(text, document);
    if (outcome.failed()) throw OtioFault(oneLine(name) + ": " + outcome.message());
}

/// Calls `use(OtioObject const&)` with the timeline that a file is, or the first one of the collection that it is.
template <class Use>
void useTimeline(OtioObject const& outermost, OtioRun& run, Use use) {
    if (outermost.is("Timeline")) return use(outermost);
    if (!outermost.is("SerializableCollection"))
        outermost.fail("is a " + oneLine(outermost.schema()) + ", not a timeline");
    bool isFound = false;
    outermost.forEach("children", [&](OtioObject const& child) {
        if (isFound || !child.is("Timeline"))
            return run.warn(child, "is left out: only the first timeline of a collection is read");
        isFound = true;
        use(child);
    });
    if (!isFound) outermost.fail("holds no timeline");
}

/// What only the outermost timeline tells.
void finish(OtioObject const& timeline, std::string const& name, TimelineNode root, OtioRun& run) {
    Timeline::Content& content = run.content;
    content.name = timeline.name().empty() ? fs::path(name).stem().string() : timeline.name();
    content.rate = run.videoRate();
    if (const std::optional<OtioTime> start = readTime(timeline, "global_start_time")) {
        content.clockStart = start->time;
        if (OtioRun::isVideoRate(start->rate)) content.rate = start->rate;
    }
    for (auto const& [index, length] : run.uncountedGenerators) {
        Generator& generator = content.generators[index];
        generator.rate = content.rate;
        generator.frameCount = std::max<int64>(length.frameFrom(content.rate), 0);
    }
    content.duration = root.duration;
    content.root = std::make_shared<TimelineNode const>(std::move(root));
    run.finishWarnings();
}

void readOutermost(std::string const& text, std::string const& name, std::string const& path, OtioRun& run) {
    rapidjson::Document document;
    parse(text, name, document);
    run.chain.push_back(withoutLinks(path));
    const std::string folder = folderOf(path);
    useTimeline(OtioObject(document, name), run, [&](OtioObject const& timeline) {
        TimelineNode root = OtioBuilder(folder, false, run).build(timeline, &run.content.tracks);
        finish(timeline, name, std::move(root), run);
    });
}

bool isBundle(std::string const& path) {
    std::string ending = fs::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending == ".otioz";
}

/// The .otio file of a folder or bundle, which is unpacked, or the path itself.
std::string contentOf(std::string const& path, OtioRun& run) {
    constexpr char content[] = "/content.otio";
    std::error_code error;
    if (fs::is_directory(path, error)) return path + content;
    if (!isBundle(path) || !fs::is_regular_file(path, error)) return path;
    const auto folder = std::make_shared<TemporaryFolder>();
    if (const Outcome outcome = folder->create(); outcome.failed())
        throw OtioFault(oneLine(path) + ": " + outcome.message());
    if (const Outcome outcome = unpackOtioBundle(path, folder->path()); outcome.failed())
        throw OtioFault(outcome.message());
    run.content.companion = folder;
    run.allowed.add(folder->path());
    return folder->path() + content;
}

/// Calls `read(OtioRun&)`, which leaves a timeline's content there.
template <class Read>
Outcome guarded(std::string const& name, OtioOptions const& options, std::shared_ptr<Timeline const>& timeline,
                Read read) {
    try {
        OtioRun run(options);
        read(run);
        timeline = std::make_shared<Timeline const>(std::move(run.content));
        return Outcome();
    } catch (OtioFault const& fault) {
        return Outcome::failure(fault.what());
    } catch (std::bad_alloc const&) {
        return Outcome::failure(oneLine(name) + ": there is not enough memory for it");
    }
}

}  // namespace

TimelineNode readNestedOtio(OtioObject const& clip, std::string const& path, bool isAudible, OtioRun& run) {
    const std::string file = withoutLinks(path);
    const auto first = std::find(run.chain.begin(), run.chain.end(), file);
    if (first != run.chain.end()) {
        std::string circle;
        for (auto one = first; one != run.chain.end(); ++one)
            circle += "'" + oneLine(*one) + "' > ";
        clip.fail("refers to itself: " + circle + "'" + oneLine(file) + "'");
    }
    if (run.chain.size() == maxTimelineFilesDepth)
        clip.fail("files refer to each other more than " + std::to_string(maxTimelineFilesDepth) + " deep");

    rapidjson::Document document;
    parse(readText(path, path, run), path, document);
    run.chain.push_back(file);
    const std::string folder = folderOf(path);
    TimelineNode root;
    useTimeline(OtioObject(document, path), run, [&](OtioObject const& timeline) {
        root = OtioBuilder(folder, isAudible, run).build(timeline, nullptr);
    });
    run.chain.pop_back();
    return root;
}

Outcome readOtio(std::string const& path, OtioOptions const& options, std::shared_ptr<Timeline const>& timeline) {
    return guarded(path, options, timeline, [&](OtioRun& run) {
        const std::string content = contentOf(path, run);
        // What lies in a temporary folder is called as if it lay in the bundle.
        const std::string name = content == path ? path : path + "/content.otio";
        readOutermost(readText(content, name, run), path, content, run);
    });
}

Outcome readOtioText(std::string const& text, std::string const& name, std::string const& folder,
                     OtioOptions const& options, std::shared_ptr<Timeline const>& timeline) {
    return guarded(name, options, timeline, [&](OtioRun& run) {
        readOutermost(text, name, (fs::path(folder) / fs::path(name).filename()).string(), run);
    });
}

}  // namespace qrtplay
