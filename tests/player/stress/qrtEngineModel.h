#pragma once

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/core/qrtStatus.h"
#include "foundation/core/qrtTypes.h"
#include "qrtCommandQueue.h"

namespace QRT_0_81 {

/// Playback by the rules of play parameters, written down once more.
struct ModelParams {
    enum Mode { single, loop, ping_pong };

    int64 current = 0;
    int64 start = 0;
    int64 end = 0;
    int step = 1;
    Mode mode = single;

    bool next();
    void seek(int64 frame);
    [[nodiscard]] ModelParams reversed() const;
};

/// What the engine posted to the log during a step, for the model to follow: it says which line has to come next, and
/// reads there which frame the cache chose where the choice is the cache's.
class ModelLog final {
public:
    explicit ModelLog(std::vector<std::string> lines) : m_lines(std::move(lines)) {}

    void expect(std::string const& line);
    /// The number behind `prefix` in the next line.
    [[nodiscard]] int64 choice(std::string const& prefix);
    /// A line was not as the model says, so nothing can be followed any more.
    [[nodiscard]] bool isLost() const { return !m_fault.empty(); }
    /// Empty as long as all was as the model says.
    [[nodiscard]] std::string fault() const;
    /// All lines, for who looks for the reason of another fault.
    [[nodiscard]] std::string text() const;

private:
    std::vector<std::string> m_lines;
    size_t m_next = 0;
    std::string m_fault;
};

/// One pool: how many are free, and which lent ones it still knows.
struct ModelPool {
    std::string one;  ///< what a line calls a resource
    bool isFramebuffers;
    bool isInitialized = false;
    uint64 size = 0;
    int width = 0;
    uint64 numFree = 0;
    std::set<int> lent{};  // by buffer
};

/// The player's engine by the book: its queue, its loop, its cache and its pools, without threads, memory or pictures.
///
/// Every operation tells what the engine must have answered, and follows its log lines. Two things are not by the plain
/// rule but by the engine's own, which its headers state: what a step of the loop gives back does not start the loop,
/// and updates of the current frame that would be overruled at the front of the queue are not posted.
class EngineModel final {
public:
    static constexpr int64 numFrames = 60;  // of the composition, from 0 on

    struct Command {
        CmdType type;
        int64 number = 0;      // a frame, or a value
        ModelParams params{};  // of a start
        int result = -1;       // of a production: the host that waits
    };

    EngineModel();

    // What hosts do
    void postBack(Command const& command) { queue.push_back(command); }
    void postFront(Command const& command) { queue.push_front(command); }
    /// A fetch of a frame that is cached or out of range, which waits for nobody.
    [[nodiscard]] int fetch(ModelLog& log, int64 frame, std::optional<int>& buffer);
    /// The part of a fetch behind the production.
    void noteFetched(int64 frame);
    void drop(ModelLog& log, int buffer);
    void invalidate(ModelLog& log);

    // What the player thread does
    /// Takes the command at the front and carries it out; the status that it ends with.
    [[nodiscard]] int run(ModelLog& log, Command& done, std::optional<int>& buffer);

    std::deque<Command> queue;
    std::map<int64, int> cache;  // buffers by frame
    ModelPool framebuffers{"an FBO", true};
    ModelPool blocks{"a buffer", false};
    ModelParams params;
    int engineStep = 1;  ///< that the graph engine was told
    bool isProducing = false;
    bool isRenderFailing = false;  ///< the next one; taken back by it
    int head = 2;
    int tail = 0;
    bool ramOutputs = false;
    int width = 16;

private:
    struct Buffer {
        ModelPool* pool;
        int numReferences;
    };

    int start(ModelLog& log, ModelParams const& wanted);
    int setRamOutputs(ModelLog& log, bool wanted);
    int setWidth(ModelLog& log, int wanted);
    int setCount(ModelLog& log, int& count, int wanted);
    int produce(ModelLog& log, int64 frame, bool onDemand, std::optional<int>& buffer);
    int produceNext(ModelLog& log);
    int moveTo(int64 frame);

    [[nodiscard]] std::optional<int64> nextFrame() const;
    [[nodiscard]] bool isWanted(int64 frame) const;
    [[nodiscard]] size_t evict(ModelLog& log, bool onDemand);

    void clear(ModelLog& log);
    void removeRecord(ModelLog& log, int64 frame);
    std::optional<int> lend(ModelLog& log, ModelPool& pool, bool onDemand);
    void release(ModelLog& log, int buffer);
    void setUp(ModelLog& log, ModelPool& pool, uint64 size, int width);
    void resizePools(ModelLog& log);

    std::map<int, Buffer> m_buffers;
    int m_nextBuffer = 0;
    bool m_isLookingAhead = false;
};

}  // namespace QRT_0_81
