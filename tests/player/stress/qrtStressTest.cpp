// A player under everything that hosts may do at once: eight threads that call anything, with a graph engine and
// segments that fail now and then, and rules that must hold at any moment.
//
// The environment chooses the run: QRT_STRESS_SEED (each thread's calls and the faults follow from it; how the threads
// meet does not), QRT_STRESS_CALLS and QRT_STRESS_SECONDS, of which the one that is reached later ends it.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "harness/qrtHostContext.h"
#include "harness/qrtLogCapture.h"
#include "qrtStressGraphEngine.h"
#include "qrtStressHost.h"
#include "qrtStressTags.h"

namespace QRT_0_81 {

namespace {

using Clock = std::chrono::steady_clock;

unsigned long number(char const* variable, unsigned long fallback) {
    char const* const text = std::getenv(variable);
    return text ? std::strtoul(text, nullptr, 10) : fallback;
}

constexpr int numHosts = 8;
constexpr int callsARound = 250;  // of each host; then all of them stop, and what is only true in rest is looked at

}  // namespace

class Stress : public ::testing::Test {
protected:
    Stress() {
        stressWorld() = &world;
        segments.append(SharedPtr<ExternalSegment>(new StressSegment("texture", stressTags[0], false)));
        segments.append(SharedPtr<ExternalSegment>(new StressSegment("memory", stressTags[1], true)));
        player = Player::create(VideoBufferResolution(16, 8, 4, 8, false), StressGraphEngine::create);
        world.player = player.get();
        for (int i = 0; i < numHosts; ++i) {
            HostContext const* const readsTextures = i == 0 ? &context : nullptr;
            hosts.push_back(std::make_unique<StressHost>(world, *player, segments, readsTextures,
                                                         seed * numHosts + static_cast<unsigned>(i)));
        }
    }
    ~Stress() override { stressWorld() = nullptr; }

    void beginLife() {
        world.require(player->initialize(context.nativeContext(), context.nativeWindow()).success(), "a life begins");
        ++numLives;
    }
    /// Frames in memory outlive the player's life as they were; textures do not.
    void endLife() {
        if (player->stopProducing().failure()) ++world.numCalls;
        world.require(player->uninitialize().success(), "a life ends");
        for (auto const& host : hosts) {
            host->checkHeld();
            for (auto const& buffer : host->heldBuffers()) {
                unsigned int texture = 0;
                (void)buffer->getTexture(texture);
                world.require(texture == 0, "no texture outlives its player's life");
            }
        }
        SharedPtr<VideoBuffer> none;
        world.require(player->getVideoBuffer(0, none) == Status::not_initialized, "there are no frames without a life");
    }

    void playRound() {
        std::vector<std::thread> threads;
        for (size_t i = 1; i < hosts.size(); ++i)
            threads.emplace_back([host = hosts[i].get()] { host->call(callsARound); });
        hosts[0]->call(callsARound);  // the thread that textures can be read on
        for (std::thread& thread : threads)
            thread.join();
        ++numRounds;
    }

    /// Lets the player come to rest, and looks at what it holds then.
    void checkAtRest() {
        (void)player->stopProducing();
        int value = 0;
        (void)player->getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, value);  // behind what was still posted
        for (auto const& host : hosts)
            host->checkHeld();
        PlayerImpl& engine = PlayerInspector::engine(*player);
        const auto cached = cachedFrames(engine);
        checkStats(cached);
        std::unordered_set<void const*> held;
        for (auto const& host : hosts)
            for (auto const& buffer : host->heldBuffers())
                held.insert(resourceOf(buffer));
        for (CachedFrame const& frame : cached)
            held.insert(resourceOf(frame.buffer));
        checkLent(ResourcePoolInspector::stateOf(PlayerImplInspector::fboPool(engine)), held);
        checkLent(ResourcePoolInspector::stateOf(PlayerImplInspector::ramPool(engine)), held);
    }

    static void const* resourceOf(SharedPtr<VideoBuffer> const& buffer) {
        auto* const lent = static_cast<VideoBufferPrivate*>(buffer.get());
        QOpenGLFramebufferObject* framebuffer = nullptr;
        void* data = nullptr;
        (void)lent->getFBO(framebuffer);
        (void)lent->getData(data);
        return framebuffer ? static_cast<void const*>(framebuffer) : data;
    }

    /// Nothing is lent that nobody holds.
    void checkLent(PoolState const& pool, std::unordered_set<void const*> const& held) {
        world.require(pool.numFree + pool.lent.size() == pool.size, "free and lent are the pool's size");
        for (void const* const resource : pool.lent)
            world.require(held.count(resource) != 0, "what is lent is held by a host or cached");
        ++world.numPoolChecks;
    }

    void checkStats(std::vector<CachedFrame> const& cached) {
        ConstSharedPtr<CacheStats> stats;
        world.require(player->getCacheStats(CacheStats::CacheType::producer, stats).success(), "there are statistics");
        size_t numFrames = 0;
        for (auto const& range : stats->getFrameRanges()) {
            world.require(range.first <= range.last, "a range of cached frames begins before it ends");
            numFrames += static_cast<size_t>(range.last - range.first + 1);
            for (int64 frame = range.first; frame <= range.last; ++frame)
                world.require(player->isVideoBufferReady(frame), "what the statistics name is cached");
        }
        world.require(numFrames == cached.size(), "the statistics name all that is cached");
    }

    void report() const {
        constexpr char const* names[] = {
            "render fails",      "render throws",     "render draws nothing", "render leaves state",
            "render calls back", "composition fails", "composition throws",   "composition incomplete",
            "update fails",      "step fails",        "rate fails",           "audio fails",
            "preference fails",  "segment fails",     "segment throws"};
        static_assert(std::size(names) == static_cast<size_t>(StressFault::count));
        uint64 numFaults = 0;
        std::string kinds;
        for (size_t i = 0; i < std::size(names); ++i) {
            const uint64 count = world.numFaults(static_cast<StressFault>(i));
            numFaults += count;
            kinds += std::string(i == 0 ? "" : ", ") + names[i] + " " + std::to_string(count);
        }
        std::cout << "stress: seed " << seed << ": " << numRounds << " rounds, " << numLives << " lives, "
                  << world.numCalls << " calls, " << numFaults << " faults, " << world.numDelivered
                  << " frames delivered, " << world.numChecked << " checked, " << world.numCacheChecked
                  << " cached ones checked, " << world.numPoolChecks << " looks at pools, " << world.numNotifications
                  << " notifications, " << world.announced << " compositions\n"
                  << "stress: faults: " << kinds << std::endl;
    }

    const unsigned seed = static_cast<unsigned>(number("QRT_STRESS_SEED", 1));
    StressWorld world{seed};
    HostContext context;
    StressHost::Segments segments;
    SharedPtr<Player> player;
    std::vector<std::unique_ptr<StressHost>> hosts;
    int numRounds = 0;
    int numLives = 0;
};

TEST_F(Stress, eightHostsAndEveryFaultBreakNoRule) {
    const auto end = Clock::now() + std::chrono::seconds(number("QRT_STRESS_SECONDS", 0));
    const unsigned long calls = number("QRT_STRESS_CALLS", 12'000);
    LogMsg::setSink([](LogMsg const&) {});  // failures are posted, and there are thousands
    constexpr int roundsALife = 4;
    beginLife();
    while (!world.isSpoilt() && (world.numCalls < calls || Clock::now() < end)) {
        playRound();
        checkAtRest();
        if (numRounds % roundsALife != 0) continue;
        endLife();
        beginLife();
    }
    endLife();
    for (auto const& host : hosts)
        host->leave();
    world.player = nullptr;
    player.reset();
    for (auto const& host : hosts)
        host->dropHeld();
    LogMsg::setSink({});
    report();
    EXPECT_EQ(StressGraphEngine::numAlive(), 0);
    EXPECT_EQ(context.countTextures(), 0);
    EXPECT_EQ(context.countFramebuffers(), 0);
    EXPECT_EQ(world.complaints(), std::vector<std::string>()) << "seed " << seed;
}

}  // namespace QRT_0_81
