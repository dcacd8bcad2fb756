#pragma once

#include "qrtCommandQueue.h"

namespace QRT_0_81 {

/// What waits in the queue already.
class OtherCommand final : public Cmd {
public:
    OtherCommand() : Cmd(CmdType::get_pref) {}
    void execute(PlayerImpl&) override {}
};

}  // namespace QRT_0_81
