// Which pictures are decoded and kept.
#include <algorithm>
#include <atomic>
#include <thread>

#include "host/qrtPictureStoreFixture.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;

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

}  // namespace
}  // namespace qrtplay
