// A host that forgot its QGuiApplication. The program has a main of its own that makes none.
#include <gtest/gtest.h>

#include "harness/qrtFakeGraphEngine.h"
#include "harness/qrtLogCapture.h"
#include "player/qrtPlayer.h"

namespace QRT_0_81 {

TEST(PlayerWithoutApplication, initializeFailsWithAMessageAndThePlayerStaysUsable) {
    const LogCapture log;
    const auto player = Player::create(VideoBufferResolution(16, 8, 4, 8, false), FakeGraphEngine::create);
    EXPECT_EQ(player->initialize(nullptr, nullptr).get(), 1);
    EXPECT_TRUE(log.contains("initialize() failed: there is no QGuiApplication"));
    EXPECT_EQ(player->uninitialize().get(), 256);
    EXPECT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 4).get(), Status::ok);
}

}  // namespace QRT_0_81

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
