#include "generators/qrtSmpteBars.h"

#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "host/qrtGeneratedPicture.h"

namespace qrtplay {
namespace {

using Pixel = GeneratedPicture::Pixel;

/// A place as a share of the picture, from its left bottom corner on, and the colour that the standard puts there.
struct Field {
    const char* name;
    double x;
    double y;
    Pixel colour;
};

constexpr double barsRow = 0.7;
constexpr double castellationRow = 3.5 / 12;
constexpr double plugeRow = 0.1;

double bar(int number) {
    return (number + 0.5) / 7;
}
/// Strips of the PLUGE, a third of a bar wide, begin under the sixth bar.
double strip(int number) {
    return 5.0 / 7 + (number + 0.5) / 21;
}
double field(int number) {
    return (number + 0.5) * 5 / 28;
}

const std::vector<Field> fields{
    {"grey", bar(0), barsRow, {191, 191, 191, 255}},
    {"yellow", bar(1), barsRow, {191, 191, 0, 255}},
    {"cyan", bar(2), barsRow, {0, 191, 191, 255}},
    {"green", bar(3), barsRow, {0, 191, 0, 255}},
    {"magenta", bar(4), barsRow, {191, 0, 191, 255}},
    {"red", bar(5), barsRow, {191, 0, 0, 255}},
    {"blue", bar(6), barsRow, {0, 0, 191, 255}},
    {"blue below grey", bar(0), castellationRow, {0, 0, 191, 255}},
    {"black below yellow", bar(1), castellationRow, {19, 19, 19, 255}},
    {"magenta below cyan", bar(2), castellationRow, {191, 0, 191, 255}},
    {"black below green", bar(3), castellationRow, {19, 19, 19, 255}},
    {"cyan below magenta", bar(4), castellationRow, {0, 191, 191, 255}},
    {"black below red", bar(5), castellationRow, {19, 19, 19, 255}},
    {"grey below blue", bar(6), castellationRow, {191, 191, 191, 255}},
    {"-I", field(0), plugeRow, {0, 33, 76, 255}},
    {"white", field(1), plugeRow, {255, 255, 255, 255}},
    {"+Q", field(2), plugeRow, {50, 0, 106, 255}},
    {"black", field(3), plugeRow, {19, 19, 19, 255}},
    {"blacker than black", strip(0), plugeRow, {9, 9, 9, 255}},
    {"black between", strip(1), plugeRow, {19, 19, 19, 255}},
    {"lighter than black", strip(2), plugeRow, {29, 29, 29, 255}},
    {"black at the end", bar(6), plugeRow, {19, 19, 19, 255}},
};

TEST(SmpteBars, haveTheColoursOfTheStandardAtItsPlaces) {
    TestContext context;
    const Generator generator = generatorOf(Generator::Kind::smpte_bars);
    for (const auto& [width, height] :
         std::vector<std::pair<int, int>>{{640, 480}, {1920, 1080}, {91, 37}, {50, 400}}) {
        const GeneratedPicture picture = draw(context.gl(), generator, width, height);
        for (Field const& field : fields) {
            const Pixel pixel = picture.at(static_cast<int>(field.x * width), static_cast<int>(field.y * height));
            for (size_t i = 0; i < 4; ++i)
                EXPECT_NEAR(pixel[i], field.colour[i], 1) << field.name << " of " << width << "x" << height;
        }
    }
}

TEST(SmpteBars, changeColourAtTheNearestPixel) {
    TestContext context;
    const GeneratedPicture picture = draw(context.gl(), generatorOf(Generator::Kind::smpte_bars), 840, 120);
    EXPECT_EQ(picture.at(119, 119), (Pixel{191, 191, 191, 255}));
    EXPECT_EQ(picture.at(120, 119), (Pixel{191, 191, 0, 255}));
    EXPECT_EQ(picture.at(0, 40), (Pixel{191, 191, 191, 255}));
    EXPECT_EQ(picture.at(0, 39), (Pixel{0, 0, 191, 255}));
    EXPECT_EQ(picture.at(0, 30), (Pixel{0, 0, 191, 255}));
    EXPECT_EQ(picture.at(0, 29), (Pixel{0, 33, 76, 255}));
    EXPECT_EQ(picture.at(599, 0), (Pixel{19, 19, 19, 255}));
    EXPECT_EQ(picture.at(600, 0), (Pixel{9, 9, 9, 255}));
    EXPECT_EQ(picture.at(640, 0), (Pixel{19, 19, 19, 255}));
    EXPECT_EQ(picture.at(680, 0), (Pixel{29, 29, 29, 255}));
    EXPECT_EQ(picture.at(720, 0), (Pixel{19, 19, 19, 255}));
}

TEST(SmpteBars, coverEachPixelOfAnyPictureOnce) {
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{1, 1}, {2, 3}, {7, 12}, {83, 11}, {3, 500}}) {
        std::map<std::pair<int, int>, int> covered;
        for (ColourPatch const& patch : smpteBars(width, height)) {
            EXPECT_GT(patch.width, 0);
            EXPECT_GT(patch.height, 0);
            for (int y = patch.y; y < patch.y + patch.height; ++y) {
                for (int x = patch.x; x < patch.x + patch.width; ++x)
                    ++covered[{x, y}];
            }
        }
        EXPECT_EQ(covered.size(), static_cast<size_t>(width * height));
        for (auto const& [pixel, count] : covered) {
            EXPECT_LT(pixel.first, width);
            EXPECT_LT(pixel.second, height);
            EXPECT_EQ(count, 1) << pixel.first << "," << pixel.second << " of " << width << "x" << height;
        }
    }
}

}  // namespace
}  // namespace qrtplay
