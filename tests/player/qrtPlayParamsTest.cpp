// Which frames a player produces, and in what order: through the public class, as hosts use it.
#include "player/qrtPlayParams.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "harness/qrtPlayParamsValues.h"
#include "harness/qrtVirtualTable.h"
#include "qrtPlayParamsPrivate.h"

namespace QRT_0_81 {

namespace {

using ::testing::ElementsAre;

constexpr auto unknownMode = static_cast<PlayParams::PlayMode>(3);
constexpr auto negativeMode = static_cast<PlayParams::PlayMode>(-1);

/// The frames that `count` calls of `next` lead to.
std::vector<int64> walk(PlayParams& params, int count) {
    std::vector<int64> frames;
    for (int i = 0; i < count; ++i) {
        EXPECT_TRUE(params.next());
        frames.push_back(params.getCurrentFrame());
    }
    return frames;
}

/// Puts a private record in the place of an object's own for one scope, which no public call can. An explicit
/// instantiation may name private members.
template <auto Member>
struct RecordAccess {
    friend PlayParamsPrivate*& recordOf(PlayParams& params) { return params.*Member; }
};
PlayParamsPrivate*& recordOf(PlayParams& params);
template struct RecordAccess<&PlayParams::m_private>;

class ScopedRecord final {
public:
    ScopedRecord(PlayParams& params, PlayParamsPrivate* record)
        : m_record(recordOf(params)), m_own(std::exchange(m_record, record)) {}
    ~ScopedRecord() { m_record = m_own; }
    ScopedRecord(ScopedRecord const&) = delete;
    ScopedRecord& operator=(ScopedRecord const&) = delete;

private:
    PlayParamsPrivate*& m_record;
    PlayParamsPrivate* const m_own;
};

}  // namespace

// ---- Construction ---------------------------------------------------------------------------------------------------

TEST(PlayParamsCreate, convertsItsTimesToFramesAtItsRate) {
    const auto params = PlayParams::create(Time(2, rate1), Time(1, rate1), Time(3, rate1), rate24, -2,
                                           PlayParams::ping_pong, PlayParams::audio_only);
    EXPECT_EQ(params->getCurrentFrame(), 48);
    EXPECT_EQ(params->getStartFrame(), 24);
    EXPECT_EQ(params->getEndFrame(), 24 + 72 - 1);
    EXPECT_EQ(params->getFrameRate(), rate24);
    EXPECT_EQ(params->getStep(), -2);
    EXPECT_EQ(params->getPlayMode(), PlayParams::ping_pong);
    EXPECT_EQ(params->getProductionMode(), PlayParams::audio_only);
}

TEST(PlayParamsCreate, aDurationOfNFramesEndsAtTheFirstFramePlusNMinusOne) {
    for (const int64 count : {1, 2, 100}) {
        const auto params = PlayParams::create(Time(), Time(7, rate24), Time(count, rate24), rate24, 1,
                                               PlayParams::single, PlayParams::all);
        EXPECT_EQ(params->getEndFrame(), 7 + count - 1);
    }
}

TEST(PlayParamsCreate, aZeroOrNegativeDurationHoldsTheFirstFrameOnly) {
    for (const int64 count : {int64{0}, int64{-1}, int64{-1000}, least64}) {
        const auto params = PlayParams::create(Time(), Time(7, rate24), Time(count, rate24), rate24, 1,
                                               PlayParams::single, PlayParams::all);
        EXPECT_EQ(params->getStartFrame(), 7) << count;
        EXPECT_EQ(params->getEndFrame(), 7) << count;
    }
}

TEST(PlayParamsCreate, doesNotClampTheCurrentFrameIntoTheRange) {
    const auto params = PlayParams::create(Time(99, rate24), Time(0, rate24), Time(10, rate24), rate24, 1,
                                           PlayParams::single, PlayParams::all);
    EXPECT_EQ(params->getCurrentFrame(), 99);
}

TEST(PlayParamsCreate, storesEnumeratorsOutsideTheListsAsTheyAre) {
    const auto params =
        PlayParams::create(Time(), Time(), Time(), rate24, 0, negativeMode, static_cast<PlayParams::ProductionMode>(9));
    EXPECT_EQ(static_cast<int>(params->getPlayMode()), -1);
    EXPECT_EQ(static_cast<int>(params->getProductionMode()), 9);
    EXPECT_EQ(params->getStep(), 0);
}

TEST(PlayParamsCreate, holdsTheOnlyReference) {
    EXPECT_EQ(make(0, 0, 0, 1, PlayParams::single)->refcount(), 1u);
}

TEST(PlayParamsEnumerators, haveTheNumbersThatHostsStore) {
    EXPECT_EQ(static_cast<int>(PlayParams::single), 0);
    EXPECT_EQ(static_cast<int>(PlayParams::loop), 1);
    EXPECT_EQ(static_cast<int>(PlayParams::ping_pong), 2);
    EXPECT_EQ(static_cast<int>(PlayParams::video_only), 0);
    EXPECT_EQ(static_cast<int>(PlayParams::audio_only), 1);
    EXPECT_EQ(static_cast<int>(PlayParams::all), 2);
}

// ---- Values ---------------------------------------------------------------------------------------------------------

TEST(PlayParamsSetters, storeTheirValueAndNothingElse) {
    const auto params = make(5, 0, 10, 1, PlayParams::single);
    params->setStartFrame(100);
    params->setEndFrame(-100);
    params->setStep(0);
    params->setPlayMode(unknownMode);
    params->setProductionMode(static_cast<PlayParams::ProductionMode>(-7));
    EXPECT_EQ(params->getCurrentFrame(), 5);
    EXPECT_EQ(params->getStartFrame(), 100);
    EXPECT_EQ(params->getEndFrame(), -100);
    EXPECT_EQ(params->getStep(), 0);
    EXPECT_EQ(params->getPlayMode(), unknownMode);
    EXPECT_EQ(static_cast<int>(params->getProductionMode()), -7);
    EXPECT_EQ(params->getFrameRate(), rate24);
    params->setCurrentFrame(least64);
    EXPECT_EQ(params->getCurrentFrame(), least64);
}

TEST(PlayParamsClone, equalsItsSourceAndIsAnObjectOfItsOwn) {
    const auto source = make(5, 0, 10, -3, PlayParams::ping_pong);
    const SharedPtr<PlayParams> keepsTheSourceBusy = source;
    const auto copy = source->clone();
    EXPECT_NE(copy.get(), source.get());
    EXPECT_TRUE(*copy == *source);
    EXPECT_EQ(copy->refcount(), 1u);
    copy->setCurrentFrame(6);
    EXPECT_EQ(source->getCurrentFrame(), 5);
    EXPECT_FALSE(*copy == *source);
}

TEST(PlayParamsAssignment, copiesAllSevenValuesAndLeavesTheReferenceCount) {
    const auto source = PlayParams::create(Time(5, rate1), Time(1, rate1), Time(9, rate1), rate1, -3,
                                           PlayParams::ping_pong, PlayParams::audio_only);
    const auto target = make(0, 0, 0, 1, PlayParams::single);
    const SharedPtr<PlayParams> secondReference = target;
    PlayParams& result = *target = *source;
    EXPECT_EQ(&result, target.get());
    EXPECT_TRUE(*target == *source);
    EXPECT_EQ(target->getFrameRate(), rate1);
    EXPECT_EQ(target->refcount(), 2u);
    EXPECT_EQ(source->refcount(), 1u);
}

TEST(PlayParamsAssignment, toItselfChangesNothing) {
    const auto params = make(5, 0, 10, -3, PlayParams::loop);
    const auto before = params->clone();
    PlayParams& alias = *params;
    *params = alias;
    EXPECT_TRUE(*params == *before);
}

TEST(PlayParamsEquality, holdsForOneObjectAndForEqualValues) {
    const auto params = make(5, 0, 10, 1, PlayParams::loop);
    EXPECT_TRUE(*params == *params);
    EXPECT_TRUE(*params == *make(5, 0, 10, 1, PlayParams::loop));
}

TEST(PlayParamsEquality, isBrokenByAnyOneValue) {
    struct Change {
        char const* name;
        std::function<void(PlayParams&)> make;
    };
    const Change changes[] = {
        {"current frame", [](PlayParams& params) { params.setCurrentFrame(6); }},
        {"start frame", [](PlayParams& params) { params.setStartFrame(1); }},
        {"end frame", [](PlayParams& params) { params.setEndFrame(11); }},
        {"step", [](PlayParams& params) { params.setStep(-1); }},
        {"play mode", [](PlayParams& params) { params.setPlayMode(PlayParams::single); }},
        {"production mode", [](PlayParams& params) { params.setProductionMode(PlayParams::video_only); }},
    };
    const auto reference = make(5, 0, 10, 1, PlayParams::loop);
    for (Change const& change : changes) {
        const auto other = reference->clone();
        change.make(*other);
        EXPECT_FALSE(*reference == *other) << change.name;
        EXPECT_FALSE(*other == *reference) << change.name;
    }
    const Time zero;
    const auto at24 = PlayParams::create(zero, zero, zero, rate24, 1, PlayParams::loop, PlayParams::all);
    const auto at48Halves = PlayParams::create(zero, zero, zero, Rational(48, 2), 1, PlayParams::loop, PlayParams::all);
    EXPECT_FALSE(*at24 == *at48Halves) << "frame rate";
}

TEST(PlayParamsFrameRate, isReadWhereItIsStored) {
    const auto params = make(5, 0, 10, 1, PlayParams::loop);
    Rational const& rate = params->getFrameRate();
    *params = *PlayParams::create(Time(), Time(), Time(), rate1, 1, PlayParams::loop, PlayParams::all);
    EXPECT_EQ(rate, rate1);
}

// ---- The private record ---------------------------------------------------------------------------------------------

TEST(PlayParamsRecord, isAllThatAnObjectHoldsBesideItsReferenceCount) {
    EXPECT_EQ(sizeof(PlayParams), sizeof(RefCountedMT) + sizeof(void*));
}

TEST(PlayParamsRecord, missingMakesAnObjectUnequalToEverythingItselfIncluded) {
    const auto params = make(5, 0, 10, 1, PlayParams::loop);
    const auto other = params->clone();
    const ScopedRecord none(*params, nullptr);
    EXPECT_FALSE(*params == *params);
    EXPECT_FALSE(*params == *other);
    EXPECT_FALSE(*other == *params);
    const ScopedRecord noneEither(*other, nullptr);
    EXPECT_FALSE(*params == *other);
}

TEST(PlayParamsRecord, missingOnOneSideMakesAssignmentsCopyNothing) {
    const auto params = make(5, 0, 10, 1, PlayParams::loop);
    const auto empty = make(6, 0, 20, -1, PlayParams::single);
    const auto before = params->clone();
    {
        const ScopedRecord none(*empty, nullptr);
        EXPECT_EQ(&(*params = *empty), params.get());
        EXPECT_EQ(&(*empty = *params), empty.get());
    }
    EXPECT_TRUE(*params == *before);
    EXPECT_TRUE(*empty == *make(6, 0, 20, -1, PlayParams::single));
}

TEST(PlayParamsRecord, sharedByTwoObjectsMakesThemEqualAndAssignmentsHarmless) {
    const auto params = make(5, 0, 10, 1, PlayParams::loop);
    const auto other = make(6, 0, 20, -1, PlayParams::single);
    const ScopedRecord shared(*other, recordOf(*params));
    EXPECT_TRUE(*other == *params);
    *other = *params;
    EXPECT_TRUE(*params == *make(5, 0, 10, 1, PlayParams::loop));
}

// ---- getFrame -------------------------------------------------------------------------------------------------------

TEST(PlayParamsGetFrame, roundsToTheNearestFrameHalvesUpwards) {
    EXPECT_EQ(PlayParams::getFrame(Time(3, Rational(2, 1)), rate1), 2);    // 1.5
    EXPECT_EQ(PlayParams::getFrame(Time(14, Rational(10, 1)), rate1), 1);  // 1.4
    EXPECT_EQ(PlayParams::getFrame(Time(1, Rational(2, 1)), rate1), 1);    // 0.5
    EXPECT_EQ(PlayParams::getFrame(Time(-1, Rational(2, 1)), rate1), 0);   // -0.5
    EXPECT_EQ(PlayParams::getFrame(Time(-1, Rational(4, 1)), rate1), 0);   // -0.25
}

TEST(PlayParamsGetFrame, belowMinusOneHalfCutsTheSumWithOneHalfOffTowardZero) {
    EXPECT_EQ(PlayParams::getFrame(Time(-17, Rational(10, 1)), rate1), -1);  // -1.7
    EXPECT_EQ(PlayParams::getFrame(Time(-5, Rational(2, 1)), rate1), -2);    // -2.5
    EXPECT_EQ(PlayParams::getFrame(Time(-3, Rational(4, 1)), rate1), 0);     // -0.75
    EXPECT_EQ(PlayParams::getFrame(Time(-3, Rational(2, 1)), rate1), -1);    // -1.5
    EXPECT_EQ(PlayParams::getFrame(Time(-5, Rational(4, 1)), rate1), 0);     // -1.25
    EXPECT_EQ(PlayParams::getFrame(Time(-3, rate1), rate1), -2);             // -3: whole numbers are hit too
}

TEST(PlayParamsGetFrame, convertsBetweenRates) {
    EXPECT_EQ(PlayParams::getFrame(Time(25, Rational(25, 1)), rate24), 24);
    EXPECT_EQ(PlayParams::getFrame(Time(24000, Rational(24000, 1001)), Rational(24000, 1001)), 24000);
    EXPECT_EQ(PlayParams::getFrame(Time(1001, rate1), Rational(24000, 1001)), 24000);
    EXPECT_EQ(PlayParams::getFrame(Time(48, Rational(-24, 1)), rate24), -47);  // a rate may be negative: -48 + 0.5
}

// ---- next -----------------------------------------------------------------------------------------------------------

TEST(PlayParamsNext, withStepZeroIsFalseAndLeavesEverything) {
    for (const auto mode : {PlayParams::single, PlayParams::loop, PlayParams::ping_pong, unknownMode}) {
        const auto params = make(3, 0, 10, 0, mode);
        const auto before = params->clone();
        EXPECT_FALSE(params->next());
        EXPECT_TRUE(*params == *before);
    }
}

TEST(PlayParamsNext, singleKeepsTheFrameThatLeftTheRangeAndIsFalse) {
    const auto forwards = make(4, 0, 4, 2, PlayParams::single);
    EXPECT_FALSE(forwards->next());
    EXPECT_EQ(forwards->getCurrentFrame(), 6);
    const auto backwards = make(1, 0, 4, -2, PlayParams::single);
    EXPECT_FALSE(backwards->next());
    EXPECT_EQ(backwards->getCurrentFrame(), -1);
}

TEST(PlayParamsNext, singleShowsTheEndFrameItself) {
    const auto forwards = make(3, 0, 4, 1, PlayParams::single);
    EXPECT_TRUE(forwards->next());
    EXPECT_EQ(forwards->getCurrentFrame(), 4);
    const auto backwards = make(1, 0, 4, -1, PlayParams::single);
    EXPECT_TRUE(backwards->next());
    EXPECT_EQ(backwards->getCurrentFrame(), 0);
}

TEST(PlayParamsNext, singleLooksOnlyAtTheEndThatItMovesToward) {
    const auto params = make(-100, 0, 4, 1, PlayParams::single);
    EXPECT_TRUE(params->next());
    EXPECT_EQ(params->getCurrentFrame(), -99);
}

TEST(PlayParamsNext, loopGoesOnAtTheOtherEndWithoutCarryingTheOvershoot) {
    const auto forwards = make(9, 3, 10, 4, PlayParams::loop);
    EXPECT_TRUE(forwards->next());
    EXPECT_EQ(forwards->getCurrentFrame(), 3);
    const auto backwards = make(3, 3, 5, -1, PlayParams::loop);
    EXPECT_TRUE(backwards->next());
    EXPECT_EQ(backwards->getCurrentFrame(), 5);
    EXPECT_EQ(backwards->getStep(), -1);
}

TEST(PlayParamsNext, loopVisitsEveryFrameInTurn) {
    EXPECT_THAT(walk(*make(0, 0, 2, 1, PlayParams::loop), 5), ElementsAre(1, 2, 0, 1, 2));
    EXPECT_THAT(walk(*make(0, 0, 2, -1, PlayParams::loop), 4), ElementsAre(2, 1, 0, 2));
}

TEST(PlayParamsNext, pingPongTurnsAtTheEndAndShowsItOnce) {
    const auto params = make(10, 0, 10, 1, PlayParams::ping_pong);
    EXPECT_TRUE(params->next());
    EXPECT_EQ(params->getCurrentFrame(), 9);
    EXPECT_EQ(params->getStep(), -1);
    EXPECT_THAT(walk(*make(8, 0, 10, 1, PlayParams::ping_pong), 4), ElementsAre(9, 10, 9, 8));
    EXPECT_THAT(walk(*make(2, 0, 10, -1, PlayParams::ping_pong), 4), ElementsAre(1, 0, 1, 2));
}

TEST(PlayParamsNext, pingPongReflectsOvershootsByTheStep) {
    const auto params = make(9, 0, 10, 3, PlayParams::ping_pong);
    EXPECT_TRUE(params->next());
    EXPECT_EQ(params->getCurrentFrame(), 6);
    EXPECT_EQ(params->getStep(), -3);
}

TEST(PlayParamsNext, pingPongStaysWhenTheStepIsTooLongForTheRange) {
    const auto forwards = make(2, 0, 3, 5, PlayParams::ping_pong);
    EXPECT_TRUE(forwards->next());
    EXPECT_EQ(forwards->getCurrentFrame(), 2);
    EXPECT_EQ(forwards->getStep(), -5);
    const auto backwards = make(1, 0, 3, -5, PlayParams::ping_pong);
    EXPECT_TRUE(backwards->next());
    EXPECT_EQ(backwards->getCurrentFrame(), 1);
    EXPECT_EQ(backwards->getStep(), 5);
}

TEST(PlayParamsNext, pingPongFlipsItsStepOnEveryCallInAOneFrameRange) {
    const auto params = make(4, 4, 4, 1, PlayParams::ping_pong);
    for (const int step : {-1, 1, -1}) {
        EXPECT_TRUE(params->next());
        EXPECT_EQ(params->getCurrentFrame(), 4);
        EXPECT_EQ(params->getStep(), step);
    }
}

TEST(PlayParamsNext, unknownModesBehaveAsPingPong) {
    for (const auto mode : {unknownMode, negativeMode}) {
        const auto params = make(10, 0, 10, 1, mode);
        EXPECT_TRUE(params->next());
        EXPECT_EQ(params->getCurrentFrame(), 9);
        EXPECT_EQ(params->getStep(), -1);
    }
}

// ---- seek -----------------------------------------------------------------------------------------------------------

TEST(PlayParamsSeek, outsideTheRangeIsType258AndLeavesAllValues) {
    for (const auto mode : {PlayParams::single, PlayParams::loop, PlayParams::ping_pong, unknownMode}) {
        for (const int64 frame : {int64{-1}, int64{11}, least64, most64}) {
            const auto params = make(5, 0, 10, 2, mode);
            const auto before = params->clone();
            EXPECT_EQ(params->seek(frame).get(), 258);
            EXPECT_TRUE(*params == *before);
        }
    }
}

TEST(PlayParamsSeek, outsideAnInvertedRangeIsType258ForEveryFrame) {
    const auto params = make(5, 10, 0, 1, PlayParams::loop);
    for (const int64 frame : {0, 5, 10})
        EXPECT_EQ(params->seek(frame).get(), 258);
    EXPECT_EQ(params->getCurrentFrame(), 5);
}

TEST(PlayParamsSeek, movesTheCurrentFrameAndKeepsTheStepInSingleAndLoop) {
    for (const auto mode : {PlayParams::single, PlayParams::loop}) {
        for (const int64 frame : {0, 2, 5, 8, 10}) {
            const auto params = make(5, 0, 10, 2, mode);
            EXPECT_EQ(params->seek(frame).get(), Status::ok);
            EXPECT_EQ(params->getCurrentFrame(), frame);
            EXPECT_EQ(params->getStep(), 2);
        }
    }
}

TEST(PlayParamsSeek, pingPongPlaysOnInTheDirectionOfTheMove) {
    struct Case {
        int step;
        int64 frame;
        int resultingStep;
    };
    for (const Case& move : {Case{2, 3, -2}, Case{2, 8, 2}, Case{-2, 8, 2}, Case{-2, 3, -2}, Case{0, 3, 0}}) {
        const auto params = make(5, 0, 10, move.step, PlayParams::ping_pong);
        EXPECT_EQ(params->seek(move.frame).get(), Status::ok);
        EXPECT_EQ(params->getCurrentFrame(), move.frame);
        EXPECT_EQ(params->getStep(), move.resultingStep);
    }
}

TEST(PlayParamsSeek, pingPongToTheCurrentFrameKeepsTheDirection) {
    for (const int step : {2, -2}) {
        const auto params = make(5, 0, 10, step, PlayParams::ping_pong);
        EXPECT_EQ(params->seek(5).get(), Status::ok);
        EXPECT_EQ(params->getStep(), step);
    }
}

TEST(PlayParamsSeek, inAnUnknownModeIsType258AndStays) {
    for (const auto mode : {unknownMode, negativeMode}) {
        const auto params = make(5, 0, 10, 2, mode);
        const auto before = params->clone();
        EXPECT_EQ(params->seek(6).get(), 258);
        EXPECT_TRUE(*params == *before);
    }
}

TEST(PlayParamsSeek, inAnUnknownModeToTheCurrentFrameSucceeds) {
    for (const auto mode : {unknownMode, negativeMode}) {
        const auto params = make(5, 0, 10, 2, mode);
        EXPECT_EQ(params->seek(5).get(), Status::ok);
        EXPECT_EQ(params->getCurrentFrame(), 5);
    }
}

// ---- Binary interface -----------------------------------------------------------------------------------------------

TEST(PlayParamsSlotOrder, isTheDestructorAndThenReferenceCounting) {
    const auto params = make(0, 0, 0, 1, PlayParams::single);
    callSlot<void>(1, params.get());
    EXPECT_EQ(callSlot<uint32>(3, params.get()), 2u);
    EXPECT_FALSE(callSlot<bool>(2, params.get()));
    EXPECT_EQ(callSlot<uint32>(3, params.get()), 1u);
}

}  // namespace QRT_0_81
