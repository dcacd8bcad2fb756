#pragma once

#include "options/qrtOptions.h"

namespace qrtplay {

/// Runs `qrtplay self-test`; the result is the exit status of the program: `exit_done` when every check has passed,
/// `exit_no_opengl`, or `exit_failed`. Needs a `QGuiApplication`.
///
/// As JSON it is one object: "passed", "opengl" (null, or vendor, renderer, version), "decoders" (name, present) and
/// "checks" (name, passed, details).
int runSelfTest(SelfTestOptions const& options);

/// The same without a display: says why there is none.
int reportNoOpenGl(SelfTestOptions const& options, std::string const& why);

}  // namespace qrtplay
