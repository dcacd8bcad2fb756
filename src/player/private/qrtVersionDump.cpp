#include "qrtVersionDump.h"

#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <sstream>

#include "qrtVersion.h"

#if defined(_WIN32)
#include <io.h>
#define QRT_FILENO _fileno
#else
#include <unistd.h>
#define QRT_FILENO fileno
#endif

namespace QRT_0_81 {

std::string versionText() {
    constexpr size_t shownCommitLength = 7;
    std::ostringstream text;
    text << "qrt"
         << " version " << QRT_VERSION_NUMBER << " (" << QRT_BUILD_DATE << ", build " << QRT_BUILD_NUMBER << ", commit "
         << std::string(QRT_COMMIT).substr(0, shownCommitLength) << ", branch " << QRT_BRANCH;
    return text.str();
}

bool isVersionDumpWanted(char const* environmentText) {
    return environmentText && std::atoi(environmentText) != 0;
}

std::string versionLine() {
    constexpr int moduleWidth = 16;
    std::ostringstream line;
    line << std::setw(moduleWidth) << "qrtPlayer"
         << ": " << versionText();
    return line.str();
}

namespace {

bool dumpVersion() {
    const bool isOn = isVersionDumpWanted(std::getenv("TOLLAN_DUMP_VERSION_INFO")) && QRT_FILENO(stderr) >= 0;
    if (isOn) std::fprintf(stderr, "%s\n", versionLine().c_str());
    return isOn;
}

/// Decided when the library is loaded, and kept.
[[maybe_unused]] const bool isVersionDumpOn = dumpVersion();

}  // namespace

}  // namespace QRT_0_81
