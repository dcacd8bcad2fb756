#pragma once

#include <string>

namespace QRT_0_81 {

/// "qrt version 0.81.0 (2026-01-31, build 7, commit 0123456, branch main", as the build system supplied it.
/// The bracket stays open: this is the record's form, which tools that read it rely on.
[[nodiscard]] std::string versionText();

/// Whether the text asks for the version line: set, and a number other than 0 as `atoi` reads it.
[[nodiscard]] bool isVersionDumpWanted(char const* environmentText);

/// The line that goes to standard error when the library is loaded with `TOLLAN_DUMP_VERSION_INFO` set.
[[nodiscard]] std::string versionLine();

}  // namespace QRT_0_81
