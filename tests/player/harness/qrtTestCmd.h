#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "qrtCommandQueue.h"

namespace QRT_0_81 {

/// Does what the test says, when executed and when it ends.
class TestCmd final : public Cmd {
public:
    using Action = std::function<void()>;
    explicit TestCmd(Action onExecute, Action atEnd = {})
        : Cmd(CmdType::get_pref), m_onExecute(std::move(onExecute)), m_atEnd(std::move(atEnd)) {}
    ~TestCmd() override {
        if (m_atEnd) m_atEnd();
    }
    void execute(PlayerImpl&) override {
        if (m_onExecute) m_onExecute();
    }

private:
    const Action m_onExecute;
    const Action m_atEnd;
};

inline std::unique_ptr<Cmd> cmd(TestCmd::Action onExecute, TestCmd::Action atEnd = {}) {
    return std::make_unique<TestCmd>(std::move(onExecute), std::move(atEnd));
}

/// The same for a command whose caller waits.
class TestSynchronousCmd final : public CmdSynchronous {
public:
    TestSynchronousCmd(Status* status, CmdCompletion* completion, std::function<Status()> onRun)
        : CmdSynchronous(CmdType::set_pref, status, completion), m_onRun(std::move(onRun)) {}

private:
    Status run(PlayerImpl&) override { return m_onRun(); }
    const std::function<Status()> m_onRun;
};

}  // namespace QRT_0_81
