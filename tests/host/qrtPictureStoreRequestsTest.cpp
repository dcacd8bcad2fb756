// Requests that meet one another, sources that are shared, and the store's end.
#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

#include "host/qrtPictureStoreFixture.h"

namespace qrtplay {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAreArray;

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
