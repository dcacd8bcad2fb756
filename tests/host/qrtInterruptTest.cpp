#include "render/qrtInterrupt.h"

#include <gtest/gtest.h>

#include <csignal>

namespace qrtplay {
namespace {

TEST(Interrupt, notesTheFirstSignalInsteadOfEndingTheProcess) {
    {
        const Interrupt interrupt;
        EXPECT_FALSE(Interrupt::isRequested());
        std::raise(SIGINT);
        EXPECT_TRUE(Interrupt::isRequested());
    }
    const Interrupt next;
    EXPECT_FALSE(Interrupt::isRequested());
    std::raise(SIGTERM);
    EXPECT_TRUE(Interrupt::isRequested());
}

TEST(InterruptDeathTest, letsTheSecondSignalEndTheProcess) {
    EXPECT_EXIT(
        {
            const Interrupt interrupt;
            std::raise(SIGINT);
            std::raise(SIGINT);
        },
        ::testing::KilledBySignal(SIGINT), "");
}

TEST(Interrupt, leavesASignalIgnoredThatTheShellIgnores) {
    const auto before = std::signal(SIGINT, SIG_IGN);
    {
        const Interrupt interrupt;
        std::raise(SIGINT);
        EXPECT_FALSE(Interrupt::isRequested());
    }
    EXPECT_EQ(std::signal(SIGINT, before), SIG_IGN);
}

}  // namespace
}  // namespace qrtplay
