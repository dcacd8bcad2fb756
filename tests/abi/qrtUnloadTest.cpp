// The kit's libraries come with a plug-in, work, go with it, and come again.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

/// Whether a library is in the process at this moment.
bool isLoaded(std::string const& module) {
    const std::string name = "libqrt" + module + "_" QRT_ABI ".so." QRT_SOVERSION;
    void* const library = dlopen(name.c_str(), RTLD_NOLOAD | RTLD_LAZY);
    if (library) dlclose(library);
    return library != nullptr;
}

constexpr char const* modules[] = {"Core", "Cache", "Composition", "Logger", "Player"};

}  // namespace

TEST(Libraries, areLoadedWorkAreUnloadedAndWorkAgain) {
    for (int life = 0; life < 3; ++life) {
        for (char const* const module : modules)
            EXPECT_FALSE(isLoaded(module)) << module << " in life " << life;
        void* const host = dlopen(QRT_LOADED_HOST, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(host, nullptr) << dlerror();
        for (char const* const module : modules)
            EXPECT_TRUE(isLoaded(module)) << module << " in life " << life;
        void* const address = dlsym(host, "qrtLoadedHostPlays");
        ASSERT_NE(address, nullptr) << dlerror();
        bool (*plays)() = nullptr;
        std::memcpy(&plays, &address, sizeof plays);
        EXPECT_TRUE(plays()) << "in life " << life;
        ASSERT_EQ(dlclose(host), 0);
    }
    for (char const* const module : modules)
        EXPECT_FALSE(isLoaded(module)) << module;
}
