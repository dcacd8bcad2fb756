#include "media/qrtPictureStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <numeric>
#include <random>
#include <thread>

#include "host/qrtFakePictureSource.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;

std::vector<int64> range(int64 first, int64 last) {
    std::vector<int64> numbers(static_cast<size_t>(last - first + 1));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

/// A store over fake media of 25 frames a second.
class PictureStoreTest : public ::testing::Test {
protected:
    using Wish = PictureStore::Wish;

    FakeMedia& add(FakeMedia::Shape shape) {
        medias.push_back(std::make_shared<FakeMedia>(std::move(shape)));
        return *medias.back();
    }
    void openStore(size_t roomForPictures = 1000) {
        const auto open = [this](size_t media, std::unique_ptr<PictureSource>& source) {
            source = medias[media]->makeSource();
            return Outcome();
        };
        store = std::make_unique<PictureStore>(medias.size(), open, roomForPictures * fakePictureBytes());
    }
    static Wish wish(int64 frame, size_t media = 0) { return {media, ExactTime::ofFrame(frame, Rational(25, 1))}; }
    static std::vector<Wish> wishes(std::vector<int64> const& frames, size_t media = 0) {
        std::vector<Wish> all;
        for (const int64 frame : frames)
            all.push_back(wish(frame, media));
        return all;
    }
    /// The number of the picture that is answered; -1 for none, -2 for a failure.
    int64 ask(int64 frame, size_t media = 0) const {
        PictureStore::Answer answer;
        return store->picture(wish(frame, media), answer).success() ? numberOf(answer.picture) : -2;
    }
    std::future<int64> askOnAThread(int64 frame, size_t media = 0) const {
        return std::async(std::launch::async, [this, frame, media] { return ask(frame, media); });
    }

    std::vector<std::shared_ptr<FakeMedia>> medias;
    std::unique_ptr<PictureStore> store;
};

TEST_F(PictureStoreTest, answersWithThePictureAndWhatIsKnownOfItsMedia) {
    add({});
    add({"second.mov"});
    openStore();
    PictureStore::Answer answer;
    // A moment in the middle of frame 7.
    ASSERT_TRUE(store->picture({1, ExactTime(15, 50)}, answer).success());
    EXPECT_EQ(numberOf(answer.picture), 7);
    EXPECT_EQ(answer.key, (PictureStore::Key{1, 7}));
    EXPECT_EQ(answer.path, "second.mov");
    EXPECT_EQ(answer.facts.frameCount, 1000);
}

TEST_F(PictureStoreTest, hasNoPictureOutsideOfTheMedia) {
    add({});
    openStore();
    for (const int64 frame : {int64{-1}, int64{1000}, int64{123456789}}) {
        PictureStore::Answer answer;
        ASSERT_TRUE(store->picture(wish(frame), answer).success());
        EXPECT_EQ(answer.picture, nullptr);
        EXPECT_EQ(answer.key.frame, frame);
        EXPECT_EQ(answer.facts.frameCount, 1000);
        EXPECT_TRUE(store->isKept(wish(frame)));
    }
    EXPECT_THAT(medias[0]->decoded(), IsEmpty());
}

TEST_F(PictureStoreTest, takesEveryTimeOfAStillPictureForItsOneFrame) {
    FakeMedia::Shape still;
    still.frames = endlessFrameCount;
    add(still);
    openStore();
    EXPECT_EQ(ask(1'000'000), 0);
    EXPECT_EQ(ask(5), 0);
    EXPECT_EQ(ask(-1), -1);
    EXPECT_THAT(medias[0]->decoded(), ElementsAre(0));
}

TEST_F(PictureStoreTest, opensAMediaWhenItIsWantedAndOnce) {
    add({});
    add({});
    openStore();
    EXPECT_EQ(ask(3, 1), 3);
    EXPECT_EQ(ask(4, 1), 4);
    EXPECT_EQ(medias[0]->sourcesMade(), 0u);
    EXPECT_EQ(medias[1]->sourcesMade(), 1u);
    EXPECT_FALSE(store->isKept(wish(3, 0)));
    EXPECT_FALSE(store->isKept(wish(-1, 0)));
}

TEST_F(PictureStoreTest, answersEveryRequestForAMediaThatDoesNotOpenWithItsFailure) {
    std::atomic<int> openings{0};
    PictureStore failing(
        1,
        [&](size_t, std::unique_ptr<PictureSource>&) {
            ++openings;
            return Outcome::failure("gone.mov: no such file");
        },
        1);
    for (int i = 0; i < 3; ++i) {
        PictureStore::Answer answer;
        EXPECT_EQ(failing.picture(wish(i), answer).message(), "gone.mov: no such file");
        EXPECT_FALSE(failing.isKept(wish(i)));
    }
    EXPECT_EQ(openings, 1);
}

TEST_F(PictureStoreTest, refusesAMediaThatItDoesNotHave) {
    openStore();
    PictureStore::Answer answer;
    EXPECT_THAT(store->picture(wish(0, 7), answer).message(), HasSubstr("7"));
    store->prepare({wish(0, 7)});
    EXPECT_FALSE(store->isKept(wish(0, 7)));
}

TEST_F(PictureStoreTest, saysWhyAFrameFailsAndGoesOnWithOthers) {
    FakeMedia::Shape shape;
    shape.group = 10;
    shape.broken = {4};
    add(shape);
    openStore();
    PictureStore::Answer answer;
    EXPECT_EQ(store->picture(wish(4), answer).message(), "fake.mov: frame 4: is broken");
    EXPECT_EQ(answer.picture, nullptr);
    EXPECT_EQ(ask(5), 5);
    EXPECT_EQ(ask(4), -2);
}

TEST_F(PictureStoreTest, doesNotDecodeAheadAgainWhatHasFailed) {
    FakeMedia::Shape shape;
    shape.broken = {4};
    add(shape);
    openStore();
    store->prepare(wishes({4, 5}));
    medias[0]->waitUntilDecoded(5);
    store->prepare(wishes({4, 6}));
    medias[0]->waitUntilDecoded(6);
    EXPECT_EQ(ask(7), 7);
    EXPECT_THAT(medias[0]->decoded(), ElementsAre(4, 5, 6, 7));
}

TEST_F(PictureStoreTest, keepsWhatItPassesSoThatGoingBackwardDecodesEachGroupOnce) {
    FakeMedia::Shape shape;
    shape.group = 10;
    add(shape);
    openStore(12);
    for (int64 frame = 29; frame >= 0; --frame)
        EXPECT_EQ(ask(frame), frame);
    EXPECT_EQ(medias[0]->decoded().size(), 30u);
}

/// Frames from `first` down to 0.
std::vector<int64> downFrom(int64 first) {
    std::vector<int64> numbers = range(0, first);
    std::reverse(numbers.begin(), numbers.end());
    return numbers;
}

TEST_F(PictureStoreTest, decodesTheGroupBeforeTheOneThatIsPlayedBackwardsButNoneBeyond) {
    FakeMedia::Shape shape;
    shape.group = 10;
    FakeMedia& media = add(shape);
    openStore(48);
    store->prepare(wishes(downFrom(99)));
    EXPECT_EQ(ask(99), 99);
    media.waitUntilDecoded(89);
    store->prepare(wishes(downFrom(98)));
    EXPECT_EQ(ask(98), 98);
    const std::vector<int64> decoded = media.decoded();
    EXPECT_THAT(decoded, UnorderedElementsAreArray(range(80, 99)));
    store->prepare(wishes(downFrom(89)));
    media.waitUntilDecoded(79);
    EXPECT_EQ(media.decoded().size(), 30u);
}

TEST_F(PictureStoreTest, playsAGroupThatDoesNotFitIntoTheBudgetBackwardsInStretches) {
    constexpr int64 length = 100;
    constexpr size_t room = 40;
    FakeMedia::Shape shape;
    shape.group = length;
    shape.mostTwins = 2;
    FakeMedia& media = add(shape);
    openStore(room);
    for (int64 frame = length - 1; frame >= 0; --frame) {
        store->prepare(wishes(downFrom(frame)));
        ASSERT_EQ(ask(frame), frame);
        ASSERT_LE(store->sizeInBytes(), room * fakePictureBytes());
    }
    // 100 frames, then 60, 40, 20 for the stretches of half the budget that follow what was kept of the first.
    EXPECT_LE(media.decoded().size(), 300u);
}

TEST_F(PictureStoreTest, decodesOnlyAFewFramesAheadOfForwardPlay) {
    FakeMedia& media = add({});
    add({});
    constexpr int64 enough = 5;  // a 40th of the budget
    openStore(40 * enough);
    store->prepare(wishes(range(0, 60)));
    media.waitUntilDecoded(enough - 1);
    EXPECT_EQ(ask(0, 1), 0);  // gives the threads cause to look again
    EXPECT_THAT(media.decoded(), ElementsAreArray(range(0, enough - 1)));
}

TEST_F(PictureStoreTest, keepsWhatALoopWillNeedLongerThanWhatItHasPassed) {
    FakeMedia& media = add({});
    constexpr int64 length = 12;  // two more than there is room for
    openStore(10);
    const auto loopFrom = [](int64 begin) {
        std::vector<int64> frames;
        for (int64 i = 0; i < length; ++i)
            frames.push_back((begin + i) % length);
        return frames;
    };
    constexpr int64 rounds = 10;
    for (int64 i = 0; i < rounds * length; ++i) {
        store->prepare(wishes(loopFrom(i % length)));
        ASSERT_EQ(ask(i % length), i % length);
    }
    EXPECT_LT(media.decoded().size(), static_cast<size_t>(rounds * length) * 3 / 4) << "most of it is decoded anew";
}

TEST_F(PictureStoreTest, decodesAheadInTheOrderOfTheWishes) {
    add({});
    openStore();
    store->prepare(wishes({5, 3, 9, 3, 1}));
    medias[0]->waitUntilDecoded(1);
    EXPECT_THAT(medias[0]->decoded(), ElementsAre(5, 3, 9, 1));
    for (const int64 frame : {5, 3, 9, 1})
        EXPECT_EQ(ask(frame), frame);
    EXPECT_EQ(medias[0]->decoded().size(), 4u) << "what was decoded ahead is decoded again";
}

TEST_F(PictureStoreTest, opensTheNextMediaBeforeItIsNeeded) {
    add({});
    add({});
    openStore(2);
    std::vector<Wish> cut = wishes(range(0, 9));
    cut.push_back(wish(0, 1));
    store->prepare(cut);
    // The first media alone fills the budget, so that of the second one no picture can be kept; but it can be opened.
    while (medias[1]->sourcesMade() == 0)
        std::this_thread::yield();
    EXPECT_EQ(ask(0, 1), 0);
    EXPECT_EQ(medias[1]->sourcesMade(), 1u);
}

TEST_F(PictureStoreTest, stopsDecodingAheadWhenTheBudgetIsFullOfWhatIsWishedFor) {
    add({});
    add({});
    openStore(4);
    store->prepare(wishes(range(0, 9)));
    medias[0]->waitUntilDecoded(3);
    for (int64 frame = 0; frame < 20; ++frame)
        EXPECT_EQ(ask(frame, 1), frame);  // gives the threads cause to look again
    EXPECT_THAT(medias[0]->decoded(), ElementsAre(0, 1, 2, 3));
    EXPECT_LE(store->sizeInBytes(), 4 * fakePictureBytes());
    for (int64 frame = 0; frame < 4; ++frame)
        EXPECT_TRUE(store->isKept(wish(frame))) << "pushed out by another media";

    store->prepare(wishes(range(2, 11)));
    medias[0]->waitUntilDecoded(5);
    EXPECT_EQ(ask(0, 1), 0);
    EXPECT_THAT(medias[0]->decoded(), ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST_F(PictureStoreTest, letsTheFirstWishBeLargerThanTheBudget) {
    add({});
    openStore(0);
    store->prepare(wishes({3, 4}));
    medias[0]->waitUntilDecoded(3);
    EXPECT_EQ(ask(3), 3);
    EXPECT_THAT(medias[0]->decoded(), ElementsAre(3));
}

TEST_F(PictureStoreTest, dropsWhatIsNoLongerWishedFor) {
    FakeMedia& media = add({});
    openStore();
    media.block(3);
    store->prepare(wishes({3, 4, 5}));
    media.waitUntilBlockedAt(3);
    store->prepare(wishes({20, 21}));
    media.waitUntilUnwantedAt(3);
    media.release(3);
    media.waitUntilDecoded(21);
    EXPECT_THAT(media.decoded(), ElementsAre(3, 20, 21));
}

TEST_F(PictureStoreTest, makesDecodingAheadStepBackForARequestAndTakesItUpAgain) {
    FakeMedia::Shape shape;
    shape.group = 100;
    FakeMedia& media = add(shape);
    openStore();
    media.block(5);
    store->prepare(wishes({9}));
    media.waitUntilBlockedAt(5);
    std::future<int64> request = askOnAThread(102);
    media.waitUntilUnwantedAt(5);
    media.release(5);
    EXPECT_EQ(request.get(), 102);
    media.waitUntilDecoded(9);
    const std::vector<int64> decoded = media.decoded();
    ASSERT_GE(decoded.size(), 9u);
    EXPECT_THAT(std::vector<int64>(decoded.begin(), decoded.begin() + 9), ElementsAre(0, 1, 2, 3, 4, 5, 100, 101, 102));
}

TEST_F(PictureStoreTest, waitsForAPictureThatIsAboutToBePassed) {
    FakeMedia::Shape shape;
    shape.group = 100;
    FakeMedia& media = add(shape);
    openStore();
    media.block(5);
    media.block(15);
    store->prepare(wishes({20}));
    media.waitUntilBlockedAt(5);
    std::future<int64> request = askOnAThread(10);
    media.release(5);
    EXPECT_EQ(request.get(), 10) << "before the frame that it was decoded on the way to";
    media.release(15);
    media.waitUntilDecoded(20);
    EXPECT_THAT(media.decoded(), ElementsAreArray(range(0, 20)));
}

TEST_F(PictureStoreTest, goesOnWhereItGaveUp) {
    FakeMedia::Shape shape;
    shape.group = 100;
    FakeMedia& media = add(shape);
    openStore();
    media.block(5);
    store->prepare(wishes({20}));
    media.waitUntilBlockedAt(5);
    std::future<int64> request = askOnAThread(30);  // lies ahead in the same group
    media.waitUntilUnwantedAt(5);
    media.release(5);
    EXPECT_EQ(request.get(), 30);
    EXPECT_THAT(media.decoded(), ElementsAreArray(range(0, 30)));
}

TEST_F(PictureStoreTest, letsANewerRequestOvertakeAnOlderOneAndAnswersBoth) {
    FakeMedia::Shape shape;
    shape.group = 100;
    FakeMedia& media = add(shape);
    openStore();
    media.block(5);
    std::future<int64> older = askOnAThread(50);
    media.waitUntilBlockedAt(5);
    std::future<int64> newer = askOnAThread(150);
    media.waitUntilUnwantedAt(5);
    media.release(5);
    EXPECT_EQ(newer.get(), 150);
    EXPECT_EQ(older.get(), 50);
    const std::vector<int64> decoded = media.decoded();
    EXPECT_LT(std::find(decoded.begin(), decoded.end(), 150), std::find(decoded.begin(), decoded.end(), 50));
}

TEST_F(PictureStoreTest, decodesTwoPlacesOfOneFileInTurnWithoutStartingOver) {
    FakeMedia::Shape shape;
    shape.group = 100;
    shape.mostTwins = 2;
    FakeMedia& media = add(shape);
    openStore(1);
    for (int64 step = 0; step < 5; ++step) {
        EXPECT_EQ(ask(10 + step), 10 + step);
        EXPECT_EQ(ask(150 + step), 150 + step);
    }
    std::vector<int64> once = range(0, 14);
    for (const int64 frame : range(100, 154))
        once.push_back(frame);
    EXPECT_THAT(media.decoded(), UnorderedElementsAreArray(once));
    EXPECT_EQ(media.sourcesMade(), 2u);
}

TEST_F(PictureStoreTest, takesTheSourceThatWasUsedLeastRecentlyForAThirdPlace) {
    FakeMedia::Shape shape;
    shape.group = 100;
    shape.mostTwins = 2;
    FakeMedia& media = add(shape);
    openStore(1);
    for (const int64 frame : {0, 100, 1, 200})
        EXPECT_EQ(ask(frame), frame);
    const size_t before = media.decoded().size();
    EXPECT_EQ(ask(2), 2);
    EXPECT_EQ(media.decoded().size(), before + 1) << "its source has lost its place";
}

TEST_F(PictureStoreTest, decodesPicturesThatStandAloneSideBySide) {
    FakeMedia::Shape shape;
    shape.mostTwins = 8;
    FakeMedia& media = add(shape);
    openStore();
    media.block(0);
    media.block(1);
    store->prepare(wishes({0, 1, 2, 3}));
    media.waitUntilBlockedAt(0);
    media.waitUntilBlockedAt(1);
    media.release(0);
    media.release(1);
    for (int64 frame = 0; frame < 4; ++frame)
        EXPECT_EQ(ask(frame), frame);
    EXPECT_THAT(media.decoded(), UnorderedElementsAreArray(range(0, 3)));
}

TEST_F(PictureStoreTest, doesNotStartASecondSourceForWhatTheFirstIsAboutToReach) {
    FakeMedia::Shape shape;
    shape.group = 10;
    shape.mostTwins = 2;
    FakeMedia& media = add(shape);
    add({});
    openStore();
    media.block(2);
    store->prepare(wishes(range(2, 15)));
    media.waitUntilBlockedAt(2);
    for (int64 frame = 0; frame < 10; ++frame)
        EXPECT_EQ(ask(frame, 1), frame);  // on the other thread
    media.release(2);
    media.waitUntilDecoded(15);
    EXPECT_THAT(media.decoded(), ElementsAreArray(range(0, 15)));
    EXPECT_EQ(media.sourcesMade(), 1u);
}

TEST_F(PictureStoreTest, putsSourcesToRestWhenManyAreOpen) {
    constexpr size_t many = 60;
    for (size_t i = 0; i < many; ++i)
        add({});
    openStore();
    for (int64 round = 0; round < 2; ++round) {
        for (size_t media = 0; media < many; ++media)
            EXPECT_EQ(ask(round, media), round);
    }
    size_t rests = 0;
    for (auto const& media : medias)
        rests += media->rests();
    constexpr size_t mostThatAreReasonable = 32;
    EXPECT_GE(rests, 2 * many - mostThatAreReasonable);
    for (auto const& media : medias)
        EXPECT_EQ(media->sourcesMade(), 1u) << "opened again";
}

TEST_F(PictureStoreTest, forgetsAllWhenItIsCleared) {
    FakeMedia::Shape shape;
    shape.broken = {4};
    FakeMedia& media = add(shape);
    openStore();
    EXPECT_EQ(ask(3), 3);
    EXPECT_TRUE(store->isKept(wish(3)));
    store->prepare(wishes({4}));
    media.waitUntilDecoded(4);
    store->clear();
    EXPECT_FALSE(store->isKept(wish(3)));
    EXPECT_EQ(store->sizeInBytes(), 0u);
    EXPECT_EQ(ask(3), 3);
    EXPECT_THAT(media.decoded(), ElementsAre(3, 4, 3));
}

TEST_F(PictureStoreTest, doesNotKeepWhatWasBegunBeforeItWasCleared) {
    FakeMedia& media = add({});
    openStore();
    media.block(3);
    std::future<int64> request = askOnAThread(3);
    media.waitUntilBlockedAt(3);
    store->clear();
    media.release(3);
    EXPECT_EQ(request.get(), 3);
    EXPECT_FALSE(store->isKept(wish(3)));
}

TEST_F(PictureStoreTest, appliesANewBudgetAtOnce) {
    add({});
    openStore();
    for (int64 frame = 0; frame < 10; ++frame)
        EXPECT_EQ(ask(frame), frame);
    EXPECT_EQ(store->sizeInBytes(), 10 * fakePictureBytes());
    store->setBudget(3 * fakePictureBytes());
    EXPECT_EQ(store->sizeInBytes(), 3 * fakePictureBytes());
    EXPECT_TRUE(store->isKept(wish(9)));
    EXPECT_FALSE(store->isKept(wish(6)));
    store->setBudget(0);
    EXPECT_EQ(store->sizeInBytes(), fakePictureBytes());
}

TEST_F(PictureStoreTest, failsThoseWhoWaitWhenItEnds) {
    FakeMedia& media = add({});
    openStore();
    media.block(3);
    PictureStore& ending = *store;
    std::future<Outcome> request = std::async(std::launch::async, [&ending] {
        PictureStore::Answer answer;
        return ending.picture(wish(3), answer);
    });
    media.waitUntilBlockedAt(3);
    std::thread end([this] { store.reset(); });
    EXPECT_THAT(request.get().message(), HasSubstr("no longer decoded"));
    media.release(3);
    end.join();
}

TEST_F(PictureStoreTest, answersRightlyWhateverHappensAtTheSameTime) {
    constexpr int askers = 4;
    constexpr int questions = 300;
    constexpr size_t mediaCount = 3;
    add({"alone", 200, 1, 4, {}});
    add({"groups", 200, 12, 2, {}});
    add({"long", 200, 100, 2, {7}});
    openStore(20);
    std::atomic<bool> done{false};
    std::thread disturber([&] {
        std::mt19937 random(81);
        while (!done) {
            const auto first = static_cast<int64>(random() % 190);
            store->prepare(wishes(range(first, first + 9), random() % mediaCount));
            if (random() % 10 == 0) store->clear();
            store->setBudget((random() % 30) * fakePictureBytes());
            (void)store->isKept(wish(first));
            (void)store->sizeInBytes();
        }
    });
    std::vector<std::thread> threads;
    for (unsigned seed = 0; seed < askers; ++seed) {
        threads.emplace_back([this, seed] {
            std::mt19937 random(seed);
            for (int i = 0; i < questions; ++i) {
                const size_t media = random() % mediaCount;
                const auto frame = static_cast<int64>(random() % 210) - 5;
                int64 expected = frame >= 0 && frame < 200 ? frame : -1;
                if (media == 2 && frame == 7) expected = -2;
                ASSERT_EQ(ask(frame, media), expected) << media;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    done = true;
    disturber.join();
}

}  // namespace
}  // namespace qrtplay
