#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "harness/qrtFakeComposition.h"
#include "harness/qrtHostContext.h"
#include "harness/qrtIdleGraphEngine.h"
#include "harness/qrtLogCapture.h"
#include "qrtEngineModel.h"
#include "qrtPlayerImplCommands.h"
#include "qrtStressInspector.h"

namespace QRT_0_81 {

/// A graph engine whose next frame fails when it is told so.
class FailingGraphEngine final : public IdleGraphEngine {
public:
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create() {
        return SharedPtr<GraphEngineInterface>(new FailingGraphEngine);
    }
    Status renderFrame(VideoBufferResolution const&, int64, uint32) override {
        return std::exchange(isFailing(), false) ? static_cast<Status::Type>(4711) : Status::ok;
    }
    static bool& isFailing() {
        static bool isFailing = false;
        return isFailing;
    }
};

/// The real engine beside its model: every operation is done to both, and what they come to is compared.
///
/// Threading: everything on the player thread, inside of a command. So nothing happens between two operations, and the
/// engine knows its own thread.
class ModelledEngine final {
public:
    using Command = EngineModel::Command;

    /// Brings the engine into the state in which a model begins.
    explicit ModelledEngine(PlayerImpl& engine);
    ~ModelledEngine();

    void post(Command const& command);
    void fetch(int64 frame);
    /// Lets go of one of the frames that hosts hold.
    void drop(size_t which);
    void invalidate();
    void letRenderFail();
    /// Takes and executes the command at the front.
    void runOne();

    [[nodiscard]] bool hasCommands() const { return !m_model.queue.empty(); }
    [[nodiscard]] size_t numHeld() const { return m_held.size(); }
    /// Empty as long as both agree.
    [[nodiscard]] std::string const& fault() const { return m_fault; }

private:
    using Inspector = PlayerImplInspector;

    /// What a caller of the player has on its stack while its command waits.
    struct Caller {
        Status status = static_cast<Status::Type>(-1);
        CmdCompletion completion;
        SharedPtr<VideoBuffer> buffer;
        SharedPtr<PlayParams> params;
        int64 frame = 0;
    };
    struct Held {
        SharedPtr<VideoBuffer> buffer;
        int modelled;
    };

    template <class Cmd, class... Arguments>
    std::unique_ptr<Cmd> make(Caller& caller, Arguments&&... arguments) {
        return std::make_unique<Cmd>(&caller.status, &caller.completion, std::forward<Arguments>(arguments)...);
    }
    [[nodiscard]] std::unique_ptr<Cmd> commandOf(Command const& command, Caller& caller);
    [[nodiscard]] ModelLog takeLog();
    void finishFetch(int id, bool isSuccess, std::optional<int> const& modelled);
    void compare(char const* what, ModelLog const& log);
    void comparePool(char const* name, PoolState const& pool, ModelPool const& model);
    void require(bool holds, std::string const& what);

    PlayerImpl& m_engine;
    EngineModel m_model;
    std::vector<std::string> m_lines;
    Subject m_segment;
    std::list<Caller> m_callers;
    std::map<int, Caller*> m_waiting;  // for a production
    int m_nextCaller = 0;
    std::vector<Held> m_held;
    std::string m_fault;
};

}  // namespace QRT_0_81
