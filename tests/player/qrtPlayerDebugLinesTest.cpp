// The debug lines of the engine. A place that speaks decides once per process whether the lines are on, so this program
// switches them on before anything else runs.
#include <cstdlib>
#include <iomanip>
#include <set>
#include <sstream>
#include <thread>

#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

namespace {

[[maybe_unused]] const int areDebugLinesOn = setenv("QRT_DEBUG_PLAYER", "", 1);  // even an empty value counts

}  // namespace

class PlayerDebugLines : public PlayerFixture {
protected:
    /// The lines posted since the start of the test that are one of the wanted, in order.
    [[nodiscard]] std::vector<std::string> only(std::set<std::string> const& wanted) const {
        std::vector<std::string> found;
        for (std::string const& line : log.lines()) {
            if (wanted.count(line)) found.push_back(line);
        }
        return found;
    }

    LogCapture log;
};

TEST_F(PlayerDebugLines, initializeTellsItsSteps) {
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok);
    const std::vector<std::string> expected{"initialize() - beginning", "initialize() - before launching player thread",
                                            "initialize() - after launching player thread", "initialize() - end"};
    EXPECT_EQ(only({expected.begin(), expected.end()}), expected);
    EXPECT_TRUE(log.contains("ResourcePoolFBO::initialize()-numAllocatedFBO=4"));
}

TEST_F(PlayerDebugLines, uninitializeTellsItsSteps) {
    start();
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    const std::vector<std::string> expected{"uninitialize() - beginning", "uninitialize() - sending terminate command",
                                            "uninitialize() - uninitializing", "uninitialize() - end"};
    EXPECT_EQ(only({expected.begin(), expected.end()}), expected);
    EXPECT_TRUE(log.contains("ResourcePoolFBO::uninitialize()-numDeletedFBO=4"));
}

TEST_F(PlayerDebugLines, aSecondInitializeAndAnUntimelyUninitializeTellNoMoreThanTheirBeginning) {
    EXPECT_EQ(player->uninitialize().get(), 256);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"uninitialize() - beginning"});
    start();
    log.clear();
    EXPECT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), 272);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"initialize() - beginning"});
}

TEST_F(PlayerDebugLines, aPoolThatCannotBeSetUpIsToldWithItsType) {
    player = Player::create(VideoBufferResolution(16, 8, 2, 8, false), FakeGraphEngine::create);
    (void)player->initialize(host.nativeContext(), host.nativeWindow());
    EXPECT_TRUE(log.contains("Resource pool initialization error = 262"));
}

TEST_F(PlayerDebugLines, aFrameOnDemandIsToldStepByStep) {
    start();
    SharedPtr<VideoBuffer> buffer;
    log.clear();
    ASSERT_EQ(player->getVideoBuffer(12, buffer).get(), Status::ok);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "getVideoBuffer()-before frameNumber = 12", "_cmdProduceVideoBuffer() frameNumber = 12",
                               "Locking an FBO remaining 3", "Produced VRAMOutput frameNumber = 12",
                               "getVideoBuffer()-after frameNumber = 12"}));
}

TEST_F(PlayerDebugLines, aFrameInMemoryIsToldAsSuch) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    log.clear();
    ASSERT_EQ(player->getVideoBuffer(12, buffer).get(), Status::ok);
    EXPECT_TRUE(log.contains("Locking a buffer remaining 3"));
    EXPECT_TRUE(log.contains("Produced RAMOutput frameNumber = 12"));
    EXPECT_TRUE(log.contains("Releasing an FBO remaining 4"));
    EXPECT_FALSE(log.contains("Produced VRAMOutput frameNumber = 12"));
}

TEST_F(PlayerDebugLines, aCachedFrameIsToldWithoutProduction) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(12, buffer).get(), Status::ok);
    log.clear();
    ASSERT_EQ(player->getVideoBuffer(12, buffer).get(), Status::ok);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"getVideoBuffer()-before frameNumber = 12",
                                                     "getVideoBuffer()-after frameNumber = 12"}));
}

TEST_F(PlayerDebugLines, aFrameThatFailsIsNotToldAsDelivered) {
    start();
    FakeGraphEngine::answer("renderFrame", 777);
    SharedPtr<VideoBuffer> buffer;
    log.clear();
    ASSERT_EQ(player->getVideoBuffer(12, buffer).get(), 777);
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{"getVideoBuffer()-before frameNumber = 12",
                                        "_cmdProduceVideoBuffer() frameNumber = 12", "Locking an FBO remaining 3",
                                        "Releasing an FBO remaining 4", "getVideoBuffer() failed = 777"}));
}

TEST_F(PlayerDebugLines, aRunTellsEveryFrameThatItTriesAndItsEndOnce) {
    start();
    log.clear();
    ASSERT_EQ(player->startProducing(playParams(5, 0, 50)).get(), Status::ok);
    const std::string end = "PlayerImpl::_produceNextVideoBuffer() has no more frames to produce.";
    log.waitFor(end);
    for (int i = 0; i < 5; ++i)
        drain();
    const std::string prefix = "PlayerImpl::_produceNextVideoBuffer() - Trying to produce frameNumber = ";
    const std::vector<std::string> expected{prefix + "5", prefix + "6", prefix + "7", end};
    EXPECT_EQ(only({expected.begin(), expected.end()}), expected) << "and nothing is posted behind the end";
}

TEST_F(PlayerDebugLines, anEvictionForAHostTellsHowManyFramesItFreed) {
    start();
    SharedPtr<VideoBuffer> held;
    for (int64 frame = 0; frame < 4; ++frame) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(frame, buffer).get(), Status::ok);
    }
    log.clear();
    ASSERT_EQ(player->getVideoBuffer(9, held).get(), Status::ok);
    EXPECT_TRUE(log.contains("Releasing frameNumber = 0"));
    EXPECT_TRUE(log.contains("Releasing an FBO remaining 1"));
    EXPECT_TRUE(log.contains("_cacheEvictOne() - after - numEvicted = 1"));
}

TEST_F(PlayerDebugLines, anEvictionForLookAheadTellsHowManyFramesItFreed) {
    start();
    for (int64 frame = 60; frame < 64; ++frame) {
        SharedPtr<VideoBuffer> buffer;
        ASSERT_EQ(player->getVideoBuffer(frame, buffer).get(), Status::ok);
    }
    log.clear();
    ASSERT_EQ(player->startProducing(playParams(5, 0, 50)).get(), Status::ok);
    waitUntilReady(7);
    EXPECT_TRUE(log.contains("_cacheTryEvictOne() - after - numEvicted = 1"));
}

TEST_F(PlayerDebugLines, theLinesComeFromTheirSourcesOnThePlayersChannel) {
    start();
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(12, buffer).get(), Status::ok);
    ASSERT_EQ(setComposition(FakeComposition::create(0, 10)).get(), Status::ok);
    std::set<std::string> sources;
    for (LogMsg const& message : log.messages()) {
        EXPECT_EQ(message.channel(), "QRT_PLAYER");
        EXPECT_GT(message.line(), 0);
        sources.insert(message.file());
    }
    EXPECT_EQ(sources,
              (std::set<std::string>{"src/player/private/qrtPlayerImpl", "src/player/private/qrtProducedVideoBuffer",
                                     "src/player/private/qrtResourcePoolFBO"}));
}

TEST_F(PlayerDebugLines, everyLineBeginsWithTheIdOfItsThread) {
    start();
    std::ostringstream own;
    own << "thread_id=" << std::setw(14) << std::this_thread::get_id() << "-initialize() - beginning";
    ASSERT_FALSE(log.messages().empty());
    EXPECT_EQ(log.messages().front().text(), own.str());
    std::set<std::string> prefixes;
    for (LogMsg const& message : log.messages())
        prefixes.insert(message.text().substr(0, message.text().find('-')));
    EXPECT_EQ(prefixes.size(), 2u) << "the host's thread and the player's";
}

}  // namespace QRT_0_81
