// The player's integer preferences: two of its own, the graph engine's, and the environment that wins over both.
#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "foundation/core/qrtObserver.h"
#include "harness/qrtPlayerFixture.h"
#include "harness/qrtRecordingObserver.h"
#include "harness/qrtScopedEnvironment.h"

namespace QRT_0_81 {

namespace {

String const& headFrames = Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES;
String const& tailFrames = Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES;
constexpr char headVariable[] = "QRT_PREF_PRODUCER_CACHE_NB_HEAD_FRAMES";
constexpr char tailVariable[] = "QRT_PREF_PRODUCER_CACHE_NB_TAIL_FRAMES";
const VideoBufferResolution twoChannels(16, 8, 2, 8, false);  // no framebuffer pool can be made of these

std::vector<std::string> namesIn(Vector<String> const& names) {
    std::vector<std::string> texts;
    for (auto const& name : names)
        texts.emplace_back(name.c_str());
    return texts;
}

}  // namespace

class PlayerPrefs : public PlayerFixture {
protected:
    int pref(String const& name) {
        int value = -77;
        EXPECT_EQ(player->getPref(name, value).get(), Status::ok);
        return value;
    }
    void initialize() { ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), Status::ok); }
};

TEST_F(PlayerPrefs, areTwoHeadFramesAndNoTailFramesByDefault) {
    EXPECT_EQ(pref(headFrames), 2);
    EXPECT_EQ(pref(tailFrames), 0);
    initialize();
    EXPECT_EQ(pref(headFrames), 2);
    EXPECT_EQ(pref(tailFrames), 0);
}

TEST_F(PlayerPrefs, areKeptFromBeforeInitializeToBeyondUninitialize) {
    EXPECT_EQ(player->setPref(headFrames, 4).get(), Status::ok);
    initialize();
    EXPECT_EQ(pref(headFrames), 4);
    EXPECT_EQ(player->setPref(tailFrames, 1).get(), Status::ok);
    EXPECT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(pref(headFrames), 4);
    EXPECT_EQ(pref(tailFrames), 1);
}

TEST_F(PlayerPrefs, belongToOnePlayer) {
    EXPECT_EQ(player->setPref(headFrames, 4).get(), Status::ok);
    player = Player::create(smallRgba8, FakeGraphEngine::create);
    EXPECT_EQ(pref(headFrames), 2);
}

TEST_F(PlayerPrefs, refuseNegativeNumbers) {
    for (const bool isInitialized : {false, true}) {
        if (isInitialized) initialize();
        for (String const& name : {headFrames, tailFrames}) {
            ASSERT_EQ(player->setPref(name, 1).get(), Status::ok);
            EXPECT_EQ(player->setPref(name, -1).get(), 3);
            EXPECT_EQ(pref(name), 1);
            EXPECT_EQ(player->setPref(name, 0).get(), Status::ok);
            EXPECT_EQ(pref(name), 0);
        }
    }
}

TEST_F(PlayerPrefs, sizeTheFramebufferPoolAsHeadPlusTailPlusTwo) {
    start();
    EXPECT_EQ(host.countTextures(), 4);
    ASSERT_EQ(player->setPref(headFrames, 5).get(), Status::ok);
    EXPECT_EQ(host.countTextures(), 7);
    ASSERT_EQ(player->setPref(tailFrames, 3).get(), Status::ok);
    EXPECT_EQ(host.countTextures(), 10);
    ASSERT_EQ(player->setPref(headFrames, 0).get(), Status::ok);
    ASSERT_EQ(player->setPref(tailFrames, 0).get(), Status::ok);
    EXPECT_EQ(host.countTextures(), 2);
}

TEST_F(PlayerPrefs, sayHowFarTheProducerLooksBothWays) {
    start();
    ASSERT_EQ(player->setPref(headFrames, 1).get(), Status::ok);
    ASSERT_EQ(player->setPref(tailFrames, 2).get(), Status::ok);
    ASSERT_EQ(player->startProducing(playParams(50, 0, 99)).get(), Status::ok);
    for (const int64 frame : {50, 51, 49, 48})
        waitUntilReady(frame);
    EXPECT_EQ(FakeGraphEngine::renderedFrames(), (std::vector<int64>{50, 51, 49, 48}));
}

TEST_F(PlayerPrefs, setToTheirPresentValueSucceedWithoutTouchingThePools) {
    // Pools of this format cannot be made: only a call that leaves them alone succeeds.
    player = Player::create(twoChannels, FakeGraphEngine::create);
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), 262);
    EXPECT_EQ(player->setPref(headFrames, 2).get(), Status::ok);
    EXPECT_EQ(player->setPref(tailFrames, 0).get(), Status::ok);
}

TEST_F(PlayerPrefs, stayStoredWhenThePoolsCannotFollow) {
    player = Player::create(twoChannels, FakeGraphEngine::create);
    ASSERT_EQ(player->initialize(host.nativeContext(), host.nativeWindow()).get(), 262);
    EXPECT_EQ(player->setPref(headFrames, 6).get(), 262);
    EXPECT_EQ(pref(headFrames), 6);
    EXPECT_EQ(player->setPref(tailFrames, 1).get(), 262);
    EXPECT_EQ(pref(tailFrames), 1);
}

TEST_F(PlayerPrefs, areRefusedWhileProducingWhateverTheirNameAndValue) {
    start();
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    EXPECT_EQ(player->setPref(headFrames, 3).get(), 275);
    EXPECT_EQ(player->setPref(headFrames, 2).get(), 275);
    EXPECT_EQ(player->setPref(headFrames, -1).get(), 275);
    EXPECT_EQ(player->setPref(tailFrames, 1).get(), 275);
    EXPECT_EQ(player->setPref("FAKE_QUALITY", 5).get(), 275);
    EXPECT_EQ(pref(headFrames), 2);
    EXPECT_EQ(pref(tailFrames), 0);
    EXPECT_EQ(pref("FAKE_QUALITY"), 3);
    ASSERT_EQ(player->stopProducing().get(), Status::ok);
    EXPECT_EQ(player->setPref(headFrames, 3).get(), Status::ok);
}

TEST_F(PlayerPrefs, ofOtherNamesAreTheGraphEngines) {
    for (const bool isInitialized : {false, true}) {
        if (isInitialized) initialize();
        FakeGraphEngine::clearJournal();
        EXPECT_EQ(player->setPref("FAKE_QUALITY", isInitialized ? 8 : -9).get(), Status::ok);
        EXPECT_EQ(FakeGraphEngine::journal(),
                  std::vector<std::string>{isInitialized ? "setPref FAKE_QUALITY 8" : "setPref FAKE_QUALITY -9"});
        EXPECT_EQ(pref("FAKE_QUALITY"), isInitialized ? 8 : -9);
        EXPECT_EQ(player->setPref("UNKNOWN", 1).get(), Status::invalid_argument);
        int value = 12;
        EXPECT_EQ(player->getPref("UNKNOWN", value).get(), Status::invalid_argument);
        EXPECT_EQ(value, 12);
        EXPECT_EQ(player->setPref("producer_cache_nb_head_frames", 1).get(), Status::invalid_argument);
        FakeGraphEngine::answer("setPref", 91);
        EXPECT_EQ(player->setPref("FAKE_QUALITY", 1).get(), 91);
        FakeGraphEngine::answer("setPref", 0);
    }
}

TEST_F(PlayerPrefs, ofThePlayerNeverReachTheGraphEngine) {
    initialize();
    FakeGraphEngine::clearJournal();
    EXPECT_EQ(player->setPref(headFrames, 3).get(), Status::ok);
    EXPECT_EQ(pref(headFrames), 3);
    EXPECT_EQ(FakeGraphEngine::journal(), std::vector<std::string>{});
}

TEST_F(PlayerPrefs, areListedWithTheGraphEnginesNamesFirst) {
    for (const bool isInitialized : {false, true}) {
        if (isInitialized) initialize();
        Vector<String> names;
        names.push_back("already there");
        EXPECT_EQ(player->getPrefs(names).get(), Status::ok);
        EXPECT_EQ(namesIn(names),
                  (std::vector<std::string>{"already there", "FAKE_QUALITY", "PRODUCER_CACHE_NB_HEAD_FRAMES",
                                            "PRODUCER_CACHE_NB_TAIL_FRAMES"}));
    }
}

TEST_F(PlayerPrefs, areNotListedWhenTheGraphEngineFailsToListItsOwn) {
    FakeGraphEngine::answer("getPrefs", 17);
    Vector<String> names;
    EXPECT_EQ(player->getPrefs(names).get(), 17);
    EXPECT_TRUE(names.empty());
}

TEST_F(PlayerPrefs, areListedWithoutWaitingForThePlayerThread) {
    start();
    std::latch rendering(1);
    std::latch proceed(1);
    FakeGraphEngine::callBeforeRender([&](int64) {
        rendering.count_down();
        proceed.wait();
    });
    std::thread waitingHost([&] {
        SharedPtr<VideoBuffer> buffer;
        (void)player->getVideoBuffer(1, buffer);
    });
    rendering.wait();
    Vector<String> names;
    EXPECT_EQ(player->getPrefs(names).get(), Status::ok);
    EXPECT_EQ(names.size(), 3u);
    proceed.count_down();
    waitingHost.join();
}

TEST_F(PlayerPrefs, notifyOnTheCallersThreadWhateverTheResult) {
    RecordingObserver observer;
    player->addObserver(&observer);
    const ScopedEnvironment environment(tailVariable, "4");
    const auto setAll = [&] {
        EXPECT_EQ(player->setPref(headFrames, 3).get(), Status::ok);
        EXPECT_EQ(player->setPref(headFrames, 3).get(), Status::ok);  // no change
        EXPECT_EQ(player->setPref(headFrames, -3).get(), 3);
        EXPECT_EQ(player->setPref(tailFrames, 7).get(), Status::ok);  // the environment's
        EXPECT_EQ(player->setPref("UNKNOWN", 1).get(), 3);
    };
    const auto expectPlainUpdates = [&](size_t count) {
        EXPECT_EQ(observer.count(), count);
        for (auto const& update : observer.updates()) {
            EXPECT_TRUE(update.isPlain);
            EXPECT_EQ(update.thread, std::this_thread::get_id());
        }
        observer.clear();
    };
    setAll();
    expectPlainUpdates(5);
    start();
    observer.clear();
    setAll();
    expectPlainUpdates(5);
    ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
    EXPECT_EQ(player->setPref(headFrames, 5).get(), 275);
    expectPlainUpdates(1);
    (void)pref(headFrames);
    Vector<String> names;
    (void)player->getPrefs(names);
    expectPlainUpdates(0);
}

// ---- The environment ------------------------------------------------------------------------------------------------

TEST_F(PlayerPrefs, aVariableWinsOverEveryValueThatIsSet) {
    start();
    {
        const ScopedEnvironment head(headVariable, "5");
        const ScopedEnvironment quality("QRT_PREF_FAKE_QUALITY", "");
        FakeGraphEngine::clearJournal();
        EXPECT_EQ(player->setPref(headFrames, 7).get(), Status::ok);
        EXPECT_EQ(player->setPref(headFrames, -7).get(), Status::ok) << "the value is not even looked at";
        EXPECT_EQ(player->setPref("FAKE_QUALITY", 7).get(), Status::ok);
        EXPECT_EQ(FakeGraphEngine::countOf("setPref FAKE_QUALITY 7"), 0);
        EXPECT_EQ(pref(headFrames), 2) << "reading does not consult the environment";
        EXPECT_EQ(pref("FAKE_QUALITY"), 3);
        EXPECT_EQ(player->setPref(tailFrames, 1).get(), Status::ok);
        EXPECT_EQ(pref(tailFrames), 1) << "the variable of another name is none of its business";
        ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
        EXPECT_EQ(player->setPref(headFrames, 7).get(), Status::ok);
        EXPECT_EQ(player->setPref(tailFrames, 7).get(), 275);
        ASSERT_EQ(player->stopProducing().get(), Status::ok);
    }
    EXPECT_EQ(player->setPref(headFrames, 7).get(), Status::ok);
    EXPECT_EQ(pref(headFrames), 7) << "it is asked again at each set";
}

TEST_F(PlayerPrefs, aVariableWinsBeforeInitializeToo) {
    const ScopedEnvironment head(headVariable, "5");
    EXPECT_EQ(player->setPref(headFrames, 7).get(), Status::ok);
    EXPECT_EQ(pref(headFrames), 2);
}

TEST_F(PlayerPrefs, takeTheirDefaultsFromTheEnvironmentOfTheLoadAndNotLater) {
    const ScopedEnvironment head(headVariable, "5");
    player = Player::create(smallRgba8, FakeGraphEngine::create);
    EXPECT_EQ(pref(headFrames), 2);
}

struct DefaultCase {
    char const* name;
    char const* head;
    char const* tail;
    char const* found;  ///< head and tail frames, and the type that initialize answers with
};

/// The environment is read when the library is loaded: each case has a process of its own.
class PlayerPrefsDefaults : public ::testing::TestWithParam<DefaultCase> {};

TEST_P(PlayerPrefsDefaults, areWhatTheEnvironmentSaysAtLoad) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const ScopedEnvironment head(headVariable, GetParam().head);
    const ScopedEnvironment tail(tailVariable, GetParam().tail);
    const auto tell = [] {
        const auto player = Player::create(smallRgba8, FakeGraphEngine::create);
        int values[2] = {};
        (void)player->getPref(headFrames, values[0]);
        (void)player->getPref(tailFrames, values[1]);
        (void)player->setPref(headFrames, 9);
        (void)player->setPref(tailFrames, 9);
        const HostContext host;
        const int result = player->initialize(host.nativeContext(), host.nativeWindow()).get();
        int unchanged[2] = {};
        (void)player->getPref(headFrames, unchanged[0]);
        (void)player->getPref(tailFrames, unchanged[1]);
        const bool isUnchanged = unchanged[0] == values[0] && unchanged[1] == values[1];
        std::fprintf(stderr, "<<%d %d %d textures %d %s>>", values[0], values[1], result, host.countTextures(),
                     isUnchanged ? "unchanged" : "changed");
        std::_Exit(0);
    };
    EXPECT_EXIT(tell(), ::testing::ExitedWithCode(0),
                ::testing::HasSubstr("<<" + std::string(GetParam().found) + " unchanged>>"));
}

INSTANTIATE_TEST_SUITE_P(Values, PlayerPrefsDefaults,
                         ::testing::Values(DefaultCase{"numbers", "5", "1", "5 1 0 textures 8"},
                                           DefaultCase{"noNumbers", "abc", "", "0 0 0 textures 2"},
                                           DefaultCase{"numbersAndMore", "3x", " 4 5", "3 4 0 textures 9"},
                                           DefaultCase{"negativeNumbers", "-1", "-9", "-1 -9 0 textures 0"}),
                         [](auto const& caseInfo) { return std::string(caseInfo.param.name); });

}  // namespace QRT_0_81
