#include "viewer/playing/qrtInputLoader.h"

#include <gtest/gtest.h>

#include "viewer/qrtViewerFixture.h"

namespace qrtplay {
namespace {

const std::string film = QRT_PAINTED_MEDIA "/film.mkv";
const std::string pal = QRT_PAINTED_MEDIA "/pal.mkv";

class InputLoading : public ::testing::Test {
protected:
    InputLoading() {
        QObject::connect(&loader, &InputLoader::loaded, &loader, [this](PreparedInput const& prepared) {
            names.push_back(prepared.name);
            frames.push_back(prepared.composition->frameCount());
        });
        QObject::connect(&loader, &InputLoader::failed, &loader,
                         [this](QString const& text) { failures.push_back(text.toStdString()); });
    }
    void load(std::string const& file) { loader.load({{file}, {}, Rational(24, 1)}, {}); }

    std::vector<std::string> names;
    std::vector<int64> frames;
    std::vector<std::string> failures;
    InputLoader loader;  // ends before what it tells
};

TEST_F(InputLoading, preparesWhatIsNamed) {
    load(film);
    EXPECT_TRUE(loader.isLoading());
    EXPECT_TRUE(waitUntil([&] { return !loader.isLoading(); }));
    EXPECT_EQ(names, std::vector<std::string>{film});
    EXPECT_EQ(frames, std::vector<int64>{240});
}

TEST_F(InputLoading, aNewerRequestOvertakesAnOlderOne) {
    load(film);
    load("/nowhere.mov");
    load(pal);
    EXPECT_TRUE(waitUntil([&] { return !loader.isLoading(); }));
    EXPECT_EQ(names, std::vector<std::string>{pal});
    EXPECT_TRUE(failures.empty());
}

TEST_F(InputLoading, aFailureNamesTheFile) {
    load("/nowhere.mov");
    EXPECT_TRUE(waitUntil([&] { return !loader.isLoading(); }));
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_NE(failures.front().find("/nowhere.mov"), std::string::npos);
}

TEST_F(InputLoading, whatIsCancelledIsNotHeardOf) {
    load(film);
    loader.cancel();
    EXPECT_FALSE(loader.isLoading());
    load(pal);  // comes after the cancelled one
    EXPECT_TRUE(waitUntil([&] { return !loader.isLoading(); }));
    EXPECT_EQ(names, std::vector<std::string>{pal});
}

TEST(InputLoader, mayEndWhileItLoads) {
    InputLoader loader;
    loader.load({{film}, {}, Rational(24, 1)}, {});
}

}  // namespace
}  // namespace qrtplay
