#pragma once

#include <optional>

#include "base/qrtKit.h"
#include "foundation/core/qrtRational.h"
#include "foundation/core/qrtSharedPtr.h"
#include "player/qrtPlayParams.h"

namespace qrtplay {

/// Which frames are shown when the pictures come late.
enum class PacePolicy {
    every_frame,  ///< all of them, each as soon as it can be had; the clock waits
    real_time,    ///< those whose time it is; what comes too late is skipped and counted
};

/// Says which frame of a run is due when.
///
/// The frames of a run, in the order of its play parameters, are due on the ticks of a grid: tick n is n frame times
/// after the start, computed from n and never by adding up, so that nothing drifts. Where every frame is shown a late
/// one moves the grid by whole frame times.
///
/// A user of this asks for the frame of `next`, and when it has got it either shows it on its tick (`hasCome`) or
/// learns that it is too late.
///
/// Times are nanoseconds of the clock that the user reads. Threading: one thread.
class Pacer final {
public:
    struct Tick {
        int64 number = 0;  ///< from the start of the run on
        int64 frame = 0;
        int64 dueAt = 0;
    };
    struct Counts {
        int64 shown = 0;
        int64 skipped = 0;  ///< were due and never shown
        int64 late = 0;     ///< shown after the next one was due
    };

    /// The first frame, the current one of `order`, is due at `startAt`. `order` is copied; `rate` has to be positive.
    Pacer(PlayParams& order, Rational const& rate, PacePolicy policy, int64 startAt);

    /// The frame that is wanted next; nothing after the last one of a run that ends.
    [[nodiscard]] std::optional<Tick> next() const noexcept { return m_next; }
    /// The play parameters of the run with the frame of `next` as the current one; for who goes along with it.
    [[nodiscard]] PlayParams& order() const noexcept { return *m_order; }

    enum class Verdict {
        early,  ///< to be kept until its tick
        show,   ///< shown now, and counted
        skip,   ///< too late, and counted as skipped
    };
    /// What becomes of the picture of `next` at the time `now`. After `show` and `skip` the run has gone on to the
    /// frame that can be had in time if getting it takes `fetchTime`: the one after it, or, in real time, a later one.
    ///
    /// In real time a picture that comes too late is shown all the same when the seven before it were not, and the last
    /// one of a run that ends always is.
    Verdict hasCome(int64 now, int64 fetchTime);
    /// As if the picture of `next` could not be had: the run goes on, the frame counts as skipped.
    void giveUp(int64 now, int64 fetchTime);

    [[nodiscard]] Counts const& counts() const noexcept { return m_counts; }
    /// One frame time, rounded, in nanoseconds.
    [[nodiscard]] int64 frameTime() const noexcept;

private:
    [[nodiscard]] bool isToBeSkipped() const;
    void skip();
    void goOn(int64 now, int64 fetchTime);
    bool advance();
    void moveGrid(int64 now);
    [[nodiscard]] int64 dueAt(int64 tick) const noexcept;

    const SharedPtr<PlayParams> m_order;
    const Rational m_rate;
    const PacePolicy m_policy;
    const int64 m_startAt;
    int64 m_delay = 0;         // whole frame times by which late frames have moved the grid, in ticks
    int64 m_skippedInRow = 0;  // in real time; something is to be seen even when all is late
    std::optional<Tick> m_next;
    Counts m_counts;
};

}  // namespace qrtplay
