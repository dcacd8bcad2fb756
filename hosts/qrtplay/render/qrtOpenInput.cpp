#include "render/qrtOpenInput.h"

#include <utility>

#include "encode/qrtMovieSettings.h"
#include "render/qrtPlaySession.h"

namespace qrtplay {

namespace {

ExitStatus statusOf(OpenFailure why) noexcept {
    switch (why) {
        case OpenFailure::input_missing: return exit_input_missing;
        case OpenFailure::refused: return exit_refused;
        case OpenFailure::no_opengl: return exit_no_opengl;
        case OpenFailure::failed: break;
    }
    return exit_failed;
}

}  // namespace

ExitStatus statusOf(InputFailure kind) noexcept {
    return kind == InputFailure::missing ? exit_input_missing : exit_refused;
}

Outcome describeInput(PlayInput const& input, PlaySettings const& settings, InputFacts& facts, ExitStatus& status) {
    OpenedInput opened;
    InputFailure kind = InputFailure::refused;
    if (Outcome outcome = openInput(input, opened, kind); outcome.failed()) {
        status = statusOf(kind);
        return outcome;
    }
    Timeline const& timeline = *opened.timeline;
    facts.rate = settings.outputRate.value_or(timeline.rate());
    facts.frameCount = timeline.duration().frameFrom(facts.rate);
    facts.resolution = settings.resolution.value_or(ownSize(opened));
    const int64 samples = timeline.duration().frameFrom(Rational(movieSampleRate, 1));
    facts.hasSound = !timeline.soundAt(0, samples, movieSampleRate).empty();
    facts.warnings = timeline.warnings();
    return Outcome();
}

Outcome openFrameSource(PlayInput const& input, PlaySettings const& settings, std::unique_ptr<FrameSource>& source,
                        ExitStatus& status) {
    std::unique_ptr<PlaySession> session;
    OpenFailure why = OpenFailure::failed;
    if (Outcome outcome = PlaySession::open(input, settings, session, why); outcome.failed()) {
        status = statusOf(why);
        return outcome;
    }
    source = std::move(session);
    return Outcome();
}

}  // namespace qrtplay
