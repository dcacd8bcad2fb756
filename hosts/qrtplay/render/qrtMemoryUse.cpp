#include "render/qrtMemoryUse.h"

#include <unistd.h>

#include <fstream>

namespace qrtplay {

int64 residentBytes() {
    std::ifstream file("/proc/self/statm");
    int64 total = 0;
    int64 resident = 0;
    if (!(file >> total >> resident)) return 0;
    return resident * sysconf(_SC_PAGESIZE);
}

}  // namespace qrtplay
