#pragma once

#include <functional>

namespace QRT_0_81 {

/// Calls back whenever the engine waits for OpenGL with `glFinish`, just before it does.
///
/// The linker leads this program's own calls through here; see `--wrap` in the build file. Holds for one scope, one at
/// a time. Threading: only while no other thread renders.
class FinishWatch final {
public:
    explicit FinishWatch(std::function<void()> atFinish);
    ~FinishWatch();
    FinishWatch(FinishWatch const&) = delete;
    FinishWatch& operator=(FinishWatch const&) = delete;
};

}  // namespace QRT_0_81
