#pragma once

namespace qrtplay {

/// Lets the user end a job between two frames with Ctrl-C (or SIGTERM); a second one ends the process at once.
///
/// One object at a time; the handlers that were there before come back with its end.
class Interrupt final {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(Interrupt const&) = delete;
    Interrupt& operator=(Interrupt const&) = delete;

    [[nodiscard]] static bool isRequested();
};

}  // namespace qrtplay
