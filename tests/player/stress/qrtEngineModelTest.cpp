// The engine against its model, in random sequences of what hosts and the player thread do: the same commands in the
// same order with the same results, the same frames cached, the same resources lent, the same lines in the log.
//
// The environment chooses the run: QRT_MODEL_SEED and QRT_MODEL_SEQUENCES. Sequence n of a run has the seed of the run
// plus n, so that one that fails can be had alone.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <random>

#include "qrtModelledEngine.h"

namespace QRT_0_81 {

namespace {

unsigned long number(char const* variable, unsigned long fallback) {
    char const* const text = std::getenv(variable);
    return text ? std::strtoul(text, nullptr, 10) : fallback;
}

/// One random sequence.
class Sequence final {
public:
    Sequence(PlayerImpl& engine, unsigned seed) : m_random(seed), m_engine(engine) {}

    /// What went wrong; empty when nothing did.
    [[nodiscard]] std::string play() {
        constexpr int shortest = 10;
        constexpr int longest = 60;
        const int length = shortest + upTo(longest - shortest);
        for (int i = 0; i < length && m_engine.fault().empty(); ++i, ++numSteps)
            doSomething();
        constexpr int most = 400;  // more than what a sequence can leave behind
        for (int i = 0; i < most && m_engine.fault().empty() && m_engine.hasCommands(); ++i, ++numSteps)
            m_engine.runOne();
        if (m_engine.fault().empty() && m_engine.hasCommands()) return "the engine does not come to rest";
        return m_engine.fault();
    }

    int numSteps = 0;

private:
    void doSomething() {
        const int what = upTo(99);
        if (what < 45) {
            if (m_engine.hasCommands()) m_engine.runOne();
        } else if (what < 68) {
            m_engine.fetch(frame());
        } else if (what < 76) {
            if (m_engine.numHeld() > 0)
                m_engine.drop(static_cast<size_t>(upTo(static_cast<int>(m_engine.numHeld()) - 1)));
        } else if (what < 83) {
            m_engine.post({CmdType::start_producing, 0, params()});
        } else if (what < 86) {
            m_engine.post({CmdType::stop_producing});
        } else if (what < 96) {
            changeSettings();
        } else if (what < 98) {
            m_engine.letRenderFail();
        } else {
            m_engine.invalidate();
        }
    }

    void changeSettings() {
        switch (upTo(4)) {
            case 0: m_engine.post({CmdType::set_composition}); break;
            case 1: m_engine.post({CmdType::set_video_resolution, upTo(3) == 0 ? 0 : 16 + 8 * upTo(1)}); break;
            case 2: m_engine.post({CmdType::set_ram_outputs, upTo(1)}); break;
            default: {
                ModelParams which;
                which.step = upTo(1) == 0 ? 1 : -1;  // the frames ahead or those behind
                m_engine.post({CmdType::set_pref, upTo(5) - 1, which});
                break;
            }
        }
    }

    /// Most of them close together, so that they meet; some out of range.
    int64 frame() { return upTo(9) == 0 ? upTo(EngineModel::numFrames + 4) - 2 : upTo(12); }

    ModelParams params() {
        ModelParams wanted;
        wanted.start = upTo(5);
        wanted.end = wanted.start + upTo(9) + (upTo(9) == 0 ? EngineModel::numFrames : 0);
        wanted.current = wanted.start + upTo(8);  // some leave the range
        wanted.step = upTo(6) - 3;
        wanted.mode = static_cast<ModelParams::Mode>(upTo(2));
        return wanted;
    }

    int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(m_random); }

    std::mt19937 m_random;
    ModelledEngine m_engine;
};

/// Plays sequences on the player thread, one after the other, until one goes wrong.
class PlaySequences final : public CmdSynchronous {
public:
    struct Run {
        unsigned seed;
        unsigned numSequences;
        unsigned numPlayed = 0;
        unsigned long numSteps = 0;
        std::string fault{};

        [[nodiscard]] std::string progress() const {
            return "model: seed " + std::to_string(seed) + ": " + std::to_string(numPlayed) + " sequences, " +
                   std::to_string(numSteps) + " steps";
        }
    };

    PlaySequences(Status* status, CmdCompletion* completion, Run& run)
        : CmdSynchronous(CmdType::get_pref, status, completion), m_run(run) {}

private:
    Status run(PlayerImpl& engine) override {
        for (unsigned i = 0; i < m_run.numSequences && m_run.fault.empty(); ++i) {
            Sequence sequence(engine, m_run.seed + i);
            m_run.fault = sequence.play();
            m_run.numSteps += static_cast<unsigned long>(sequence.numSteps);
            constexpr unsigned report = 10'000;  // a long run says how far it has come
            if (++m_run.numPlayed % report == 0) std::cout << m_run.progress() << std::endl;
            if (m_run.fault.empty()) continue;
            m_run.fault = "sequence with seed " + std::to_string(m_run.seed + i) + ", step " +
                          std::to_string(sequence.numSteps) + ": " + m_run.fault;
        }
        return Status();
    }

    Run& m_run;
};

}  // namespace

TEST(EngineModel, isWhatTheEngineDoesInEverySequence) {
    PlaySequences::Run run{static_cast<unsigned>(number("QRT_MODEL_SEED", 1)),
                           static_cast<unsigned>(number("QRT_MODEL_SEQUENCES", 1500))};
    const HostContext context;
    PlayerImpl engine(VideoBufferResolution(16, 8, 4, 8, false), FailingGraphEngine::create);
    LogMsg::setSink([](LogMsg const&) {});
    ASSERT_EQ(engine.initialize(context.nativeContext(), context.nativeWindow()).get(), Status::ok);
    EXPECT_EQ(PlayerImplInspector::execute<PlaySequences>(engine, run).get(), Status::ok);
    EXPECT_EQ(engine.uninitialize().get(), Status::ok);
    LogMsg::setSink({});
    EXPECT_EQ(run.fault, "");
    std::cout << run.progress() << std::endl;
}

}  // namespace QRT_0_81
