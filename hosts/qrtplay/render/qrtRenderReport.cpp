#include "render/qrtRenderReport.h"

#include <QString>
#include <utility>

#include "base/qrtPrintable.h"
#include "base/qrtProgramVersion.h"
#include "options/qrtOptions.h"
#include "playback/qrtTimecode.h"

namespace qrtplay {

namespace {

std::string mebibytes(int64 bytes) {
    constexpr double bytesPerMiB = 1 << 20;
    return QString::number(static_cast<double>(bytes) / bytesPerMiB, 'f', 1).toStdString() + " MiB";
}

void addOrNull(JsonText& json, char const* key, std::string const& text) {
    if (text.empty())
        json.addNull(key);
    else
        json.add(key, text);
}

}  // namespace

RenderReport::RenderReport(Streams streams, bool isJson)
    : m_streams(streams), m_isJson(isJson), m_failures([this](std::string const& line) { print(line); }) {}

void RenderReport::print(std::string const& line) {
    if (m_progress) m_progress->clear();
    m_streams.errors << consoleLine(line) << std::flush;
}

JsonText RenderReport::event(char const* name) const {
    JsonText json;
    json.beginObject().add("event", name);
    return json;
}

void RenderReport::send(JsonText& event) {
    // Who reads along wants every line at once.
    if (m_isJson) m_streams.output << event.endObject().text() + "\n" << std::flush;
}

void RenderReport::start(RunFacts const& facts) {
    m_facts = facts;
    m_progress = std::make_unique<Progress>(m_streams.errors, m_streams.isTerminal, facts.frames);
    JsonText json = event("start");
    json.add("version", versionNumber).add("inputs", facts.inputs);
    addOrNull(json, "output", facts.output);
    addOrNull(json, "codec", facts.codec);
    json.add("depth", facts.depth).add("width", facts.size.width()).add("height", facts.size.height());
    json.add("rate", fractionText(facts.rate)).add("frames", facts.frames).add("sound", facts.hasSound);
    send(json);
}

void RenderReport::countOne() {
    ++m_done;
    if (m_progress) m_progress->update(m_done);
}

void RenderReport::wrote(int64 frame, std::string const& path) {
    ++m_written;
    countOne();
    JsonText json = event("frame");
    json.add("frame", frame);
    addOrNull(json, "path", path);
    json.add("done", m_done).add("total", m_facts.frames).add("seconds", m_progress->elapsedSeconds());
    send(json);
}

void RenderReport::skipped(int64 frame, std::string const& path) {
    ++m_skipped;
    JsonText json = event("skipped");
    send(json.add("frame", frame).add("path", path));
}

void RenderReport::failed(int64 frame, std::string const& message) {
    m_failures.add(frame, message);
    countOne();
    JsonText json = event("failed");
    send(json.add("frame", frame).add("message", message));
}

void RenderReport::warn(std::string const& message) {
    print("warning: " + message);
    JsonText json = event("warning");
    send(json.add("message", message));
}

void RenderReport::loopEnded(int64 loop, int64 residentBytes) {
    JsonText json = event("loop");
    send(json.add("loop", loop).add("resident_bytes", residentBytes));
}

void RenderReport::interrupted(std::string const& resume) {
    m_failures.flush();
    print("interrupted after " + std::to_string(m_done) + " of " + std::to_string(m_facts.frames) +
          " frames; to go on: " + resume);
    JsonText json = event("interrupted");
    send(json.add("done", m_done).add("total", m_facts.frames).add("resume", resume));
}

void RenderReport::error(std::string const& message) {
    m_failures.flush();
    print(message);
    JsonText json = event("error");
    send(json.add("message", message));
}

int RenderReport::finish(ExitStatus status, FrameSource::Counts const& counts, LoopMemory const& memory) {
    m_failures.flush();
    const double seconds = m_progress ? m_progress->elapsedSeconds() : 0;
    if (m_progress) m_progress->clear();
    if (m_progress) printSummary(counts, memory, seconds);
    if (m_isJson) sendSummary(status, counts, memory, seconds);
    return status;
}

void RenderReport::printSummary(FrameSource::Counts const& counts, LoopMemory const& memory, double seconds) {
    const double perSecond = seconds > 0 ? static_cast<double>(counts.delivered) / seconds : 0;
    std::string line = std::to_string(m_written) + " of " + std::to_string(m_facts.frames) + " frames ";
    line += m_facts.output.empty() ? "played" : "written to " + printable(m_facts.output);
    if (m_skipped > 0) line += " (" + std::to_string(m_skipped) + " more were there)";
    line += ": " + QString::number(perSecond, 'f', 1).toStdString() + " frames/s, " + std::to_string(counts.onDemand) +
            " produced on demand, " + std::to_string(counts.cacheHits) + " cache hits";
    if (memory.loops > 0)
        line += "\nmemory: " + mebibytes(memory.firstLoop) + " at the end of the first loop, " + mebibytes(memory.end) +
                " at the end of " + (memory.loops == 1 ? "it" : "loop " + std::to_string(memory.loops));
    (m_isJson ? m_streams.errors : m_streams.output) << line + "\n" << std::flush;
}

void RenderReport::sendSummary(ExitStatus status, FrameSource::Counts const& counts, LoopMemory const& memory,
                               double seconds) {
    const double perSecond = seconds > 0 ? static_cast<double>(counts.delivered) / seconds : 0;
    JsonText json = event("summary");
    json.add("exit", static_cast<int>(status)).add("total", m_facts.frames).add("written", m_written);
    json.add("skipped", m_skipped).add("failed", m_failures.count()).add("seconds", seconds);
    json.add("frames_per_second", perSecond).add("cache_hits", counts.cacheHits).add("on_demand", counts.onDemand);
    addOrNull(json, "output", m_facts.output);
    if (memory.loops > 0)
        json.add("loops", memory.loops)
            .add("resident_bytes_first_loop", memory.firstLoop)
            .add("resident_bytes", memory.end);
    send(json);
}

}  // namespace qrtplay
