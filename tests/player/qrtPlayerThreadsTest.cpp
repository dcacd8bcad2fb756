// Several host threads at once.
#include <atomic>
#include <latch>
#include <random>
#include <thread>

#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

class PlayerThreads : public PlayerFixture {
protected:
    class Format final : public AudioFormatInterface {
    public:
        [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override { return sampleFrames * 2; }
        [[nodiscard]] int32 getSampleRate() const override { return 48000; }
    };

    /// One facade call of the many, chosen by a number.
    void callSomething(std::mt19937& random) {
        SharedPtr<VideoBuffer> buffer;
        ConstSharedPtr<CacheStats> stats;
        Vector<String> names;
        int value = 0;
        uint64 size = 0;
        ResourceConstraint::ResizeMode mode{};
        char samples[64];
        const auto frame = static_cast<int64>(random() % 100);
        switch (random() % 16) {
            case 0: (void)player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, static_cast<int>(random() % 4)); break;
            case 1: (void)player->getPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, value); break;
            case 2: (void)player->getPrefs(names); break;
            case 3: (void)player->isVideoBufferReady(frame); break;
            case 4: (void)player->fillAudioBuffer(samples, sizeof samples, 0); break;
            case 5: (void)player->startProducing(playParams(frame, 0, 99, 1, PlayParams::loop)); break;
            case 6: (void)player->stopProducing(); break;
            case 7:
                (void)player->setVideoResolution(
                    VideoBufferResolution(16 + static_cast<int32>(random() % 3), 8, 4, 8, false));
                break;
            case 8: (void)player->getVideoResolution(); break;
            case 9: (void)player->setVideoFrameRate(Rational(static_cast<int32>(24 + random() % 3), 1)); break;
            case 10:
                (void)player->getVideoFrameRate();
                (void)player->getDefaultSourceVideoFrameRate();
                break;
            case 11: (void)player->setDefaultSourceVideoFrameRate(Rational(25, 1)); break;
            case 12:
                (void)player->setAudioFormat(ConstSharedPtr<AudioFormatInterface>(new Format));
                (void)player->getAudioFormat();
                break;
            case 13:
                (void)player->setRamOutputs(random() % 2 == 0);
                (void)player->getRamOutputs();
                break;
            case 14:
                (void)player->getCacheStats(CacheStats::CacheType::producer, stats);
                (void)player->setExternalSegmentCacheConstraint(Resource::Type::vram, mode, 0, random() % 3);
                player->getExternalSegmentCacheConstraint(Resource::Type::vram, mode, size, size);
                break;
            default: (void)player->getVideoBuffer(frame, buffer); break;
        }
    }
};

TEST_F(PlayerThreads, twoHostsMayPrepareOnePlayerAtOnce) {
    std::latch together(2);
    const auto prepare = [&] {
        together.arrive_and_wait();
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, i % 4).get(), Status::ok);
            EXPECT_EQ(player->setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, i % 3).get(), Status::ok);
            EXPECT_EQ(player->setRamOutputs(i % 2 == 0).get(), Status::ok);
            EXPECT_EQ(player->setVideoResolution(VideoBufferResolution(16 + i % 3, 8, 4, 8, false)).get(), Status::ok);
        }
    };
    std::thread first(prepare);
    std::thread second(prepare);
    first.join();
    second.join();
    start();
    SharedPtr<VideoBuffer> buffer;
    EXPECT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
}

TEST_F(PlayerThreads, twoCallersOfSynchronousCommandsEachGetTheirOwnResult) {
    start();
    std::latch together(2);
    std::atomic<int> numWrong{0};
    const auto ask = [&](String const& name, int expected) {
        together.arrive_and_wait();
        for (int i = 0; i < 200; ++i) {
            int value = -1;
            if (player->getPref(name, value).failure() || value != expected) ++numWrong;
        }
    };
    std::thread first(ask, Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, 2);
    std::thread second(ask, String("FAKE_QUALITY"), 3);
    first.join();
    second.join();
    EXPECT_EQ(numWrong, 0);
}

TEST_F(PlayerThreads, twoHostsMakeAThousandMixedCallsEachAndEveryCallAnswers) {
    start();
    std::latch together(2);
    const auto call = [&](unsigned seed) {
        std::mt19937 random(seed);
        together.arrive_and_wait();
        for (int i = 0; i < 1000; ++i)
            callSomething(random);
    };
    std::thread first(call, 1u);
    std::thread second(call, 2u);
    first.join();
    second.join();
    (void)player->stopProducing();
    ASSERT_EQ(player->setRamOutputs(false).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(50, buffer).get(), Status::ok);
    EXPECT_EQ(frameIn(buffer), 50);
}

TEST_F(PlayerThreads, noFrameOfTheOldCompositionArrivesOnceTheExchangeHasReturned) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    std::atomic<int> exchanged{0};
    std::atomic<bool> isDone{false};
    std::atomic<int> numStale{0};
    std::thread reader([&] {
        std::mt19937 random(7);
        while (!isDone) {
            const int current = exchanged;
            SharedPtr<VideoBuffer> buffer;
            if (player->getVideoBuffer(static_cast<int64>(random() % 50), buffer).failure()) continue;
            void* data = nullptr;
            (void)buffer->getData(data);
            const int identity = static_cast<unsigned char const*>(data)[16 * 4 * 4 + 8 * 4 + 2];
            if (identity < current) ++numStale;
        }
    });
    for (int identity = 1; identity <= 200; ++identity) {
        const auto composition = FakeComposition::create(0, 100);
        composition->identity = identity;
        ASSERT_EQ(setComposition(composition).get(), Status::ok);
        exchanged = identity;
        if (identity % 4 == 0) {  // exchanges are refused while producing; frames of the run must be the new ones too
            ASSERT_EQ(player->startProducing(playParams(0, 0, 99, 1, PlayParams::loop)).get(), Status::ok);
            drain();
            ASSERT_EQ(player->stopProducing().get(), Status::ok);
        }
    }
    isDone = true;
    reader.join();
    EXPECT_EQ(numStale, 0);
}

/// Hosts that call anything while compositions are exchanged, and look at every frame in memory that they get.
class PlayerThreadsDuringExchanges : public PlayerThreads {
protected:
    /// A call of one host; counts it once it has answered.
    void callAnything(std::mt19937& random) {
        const auto frame = static_cast<int64>(random() % 100);
        switch (random() % 4) {
            case 0: (void)player->startProducing(playParams(frame, 0, 99, 1, PlayParams::loop)); break;
            case 1: callSomething(random); break;
            case 2: lookAt(frame, true); break;
            default: lookAt(frame, false); break;
        }
        ++numAnswered;
    }
    void lookAt(int64 frame, bool onlyIfReady) {
        const int oldest = exchanged;
        if (onlyIfReady && !player->isVideoBufferReady(frame)) return;
        SharedPtr<VideoBuffer> buffer;
        if (player->getVideoBuffer(frame, buffer).failure()) return;
        void* data = nullptr;
        if (buffer->getData(data).failure() || !data) return;  // a texture, which only a thread with a context can read
        auto const* const pixel =
            static_cast<unsigned char const*>(data) + buffer->getResolution().getRowSize() * 4 + 32;
        ++numSeen;
        if (pixel[0] != frame || pixel[3] != 255) ++numWrong;
        if (pixel[2] < oldest) ++numStale;
    }

    std::atomic<int> exchanged{0};  // the identity of the composition whose exchange has returned
    std::atomic<int> numAnswered{0};
    std::atomic<int> numSeen{0};
    std::atomic<int> numWrong{0};
    std::atomic<int> numStale{0};
};

TEST_F(PlayerThreadsDuringExchanges, twoHostsGetAnAnswerToEachOfAThousandCallsAndNoFrameOfAnOldComposition) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    std::latch together(3);
    const auto call = [&](unsigned seed) {
        std::mt19937 random(seed);
        together.arrive_and_wait();
        for (int i = 0; i < 1000; ++i)
            callAnything(random);
    };
    std::thread first(call, 1u);
    std::thread second(call, 2u);
    together.arrive_and_wait();
    constexpr int mostExchanges = 250;  // what one channel of a pixel can tell apart
    while (numAnswered < 2000) {
        (void)player->stopProducing();  // but a host may have started a run again before the exchange
        const auto composition = FakeComposition::create(0, 100);
        composition->identity = exchanged + 1;
        if (exchanged < mostExchanges && setComposition(composition).success()) ++exchanged;
        (void)player->startProducing(playParams(0, 0, 99, 1, PlayParams::loop));
    }
    first.join();
    second.join();
    EXPECT_GT(exchanged, 0);
    EXPECT_GT(numSeen, 0);
    EXPECT_EQ(numWrong, 0);
    EXPECT_EQ(numStale, 0);
}

}  // namespace QRT_0_81
