#pragma once

#include <QSize>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "render/qrtConsole.h"
#include "render/qrtFailureReport.h"
#include "render/qrtFrameSource.h"
#include "render/qrtJsonText.h"
#include "render/qrtProgress.h"

namespace qrtplay {

/// What a run begins with.
struct RunFacts {
    std::vector<std::string> inputs;
    std::string output;  ///< empty: frames are not written
    std::string codec;   ///< of a movie; empty otherwise
    std::string depth;
    QSize size;
    Rational rate{24, 1};
    int64 frames = 0;  ///< to be rendered
    bool hasSound = false;
};

/// How the memory has grown over a looped run.
struct LoopMemory {
    int64 loops = 0;      ///< 0: not a looped run
    int64 firstLoop = 0;  ///< resident bytes at the end of the first loop ...
    int64 end = 0;        ///< ... and of the last one
};

/// Tells what becomes of a run of `render`: people on standard error (and one line on standard output at the end),
/// programs as one JSON object a line on standard output, where people then get nothing. The objects have a member
/// "event":
///
///     start        version, inputs, output (null: none), codec (null: images), depth, width, height, rate, frames,
///     sound frame        frame, path (null: not written), done, total, seconds (since the start) skipped      frame,
///     path failed       frame, message warning      message loop         loop, resident_bytes interrupted  done,
///     total, resume (a command line) error        message: why the run ended summary      exit, total, written,
///     skipped, failed, seconds, frames_per_second, cache_hits, on_demand, output
///                  and, of a looped run, loops, resident_bytes_first_loop, resident_bytes
///
/// `summary` comes last, whatever happened.
/// Threading: one thread.
class RenderReport final {
public:
    struct Streams {
        std::ostream& output;
        std::ostream& errors;
        bool isTerminal = false;  ///< `errors`: may have a bar
    };

    RenderReport(Streams streams, bool isJson);
    RenderReport(RenderReport const&) = delete;
    RenderReport& operator=(RenderReport const&) = delete;

    void start(RunFacts const& facts);
    void wrote(int64 frame, std::string const& path);
    void skipped(int64 frame, std::string const& path);
    /// `message` names the frame, but for what is already known of it.
    void failed(int64 frame, std::string const& message);
    void warn(std::string const& message);
    void loopEnded(int64 loop, int64 residentBytes);
    void interrupted(std::string const& resume);
    void error(std::string const& message);
    /// The end; gives the exit status back.
    int finish(ExitStatus status, FrameSource::Counts const& counts, LoopMemory const& memory);

    [[nodiscard]] int64 failures() const noexcept { return m_failures.count(); }
    [[nodiscard]] int64 written() const noexcept { return m_written; }
    /// Nothing of a movie is left: its frames were encoded, but not written.
    void dropWritten() { m_written = 0; }

private:
    void print(std::string const& line);
    [[nodiscard]] JsonText event(char const* name) const;
    void send(JsonText& event);
    void countOne();
    void printSummary(FrameSource::Counts const& counts, LoopMemory const& memory, double seconds);
    void sendSummary(ExitStatus status, FrameSource::Counts const& counts, LoopMemory const& memory, double seconds);

    const Streams m_streams;
    const bool m_isJson;
    RunFacts m_facts;
    std::unique_ptr<Progress> m_progress;  // from the start on
    FailureReport m_failures;
    int64 m_written = 0;
    int64 m_skipped = 0;
    int64 m_done = 0;
};

}  // namespace qrtplay
