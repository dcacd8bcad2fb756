// Linked into every program of a sanitizer build: what the sanitizers need of a program that loads drivers and uses Qt.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

// Drivers stay loaded to the end: of one that is gone the sanitizers can neither name the frames nor see the pointers
// that it still holds.
extern "C" [[gnu::visibility("default")]] int dlclose(void*) {
    return 0;
}

namespace {

bool isThreadLeft(std::string const& name) {
    std::error_code ignored;
    for (auto const& task : std::filesystem::directory_iterator("/proc/self/task", ignored)) {
        std::ifstream file(task.path() / "comm");
        std::string found;
        if (std::getline(file, found) && found == name) return true;
    }
    return false;
}

/// Qt does not join its threads: the one that reads from the X server is still on its way out when the application
/// object is gone. LeakSanitizer, which looks next, crashes on a thread that ends while it looks.
[[maybe_unused]] const int isAwaitingQt = std::atexit([] {
    while (isThreadLeft("QXcbEventQueue"))
        std::this_thread::yield();
});

}  // namespace
