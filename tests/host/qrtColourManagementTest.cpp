#include "graph/qrtColourManagement.h"

#include <OpenColorIO/OpenColorIO.h>
#include <gmock/gmock.h>

#include <QTemporaryDir>
#include <cmath>
#include <fstream>

#include "host/qrtComposerFixture.h"

namespace qrtplay {
namespace {

namespace ocio = OCIO_NAMESPACE;

// Files ending in .log go through a curve of a table, .exr through a matrix; "film" looks through a cube of a table.
constexpr char configText[] = R"(ocio_profile_version: 2
search_path: .
strictparsing: true
roles:
  default: plain
  scene_linear: light
file_rules:
  - !<Rule> {name: renderings, colorspace: light, pattern: "*", extension: exr}
  - !<Rule> {name: scans, colorspace: log, pattern: "*", extension: dpx}
  - !<Rule> {name: lost, colorspace: lost, pattern: "*", extension: lost}
  - !<Rule> {name: Default, colorspace: plain}
displays:
  screen:
    - !<View> {name: video, colorspace: plain}
    - !<View> {name: film, colorspace: look}
  projector:
    - !<View> {name: cinema, colorspace: light}
active_displays: [screen, projector]
active_views: [video, film, cinema]
colorspaces:
  - !<ColorSpace>
    name: light
  - !<ColorSpace>
    name: plain
    from_scene_reference: !<GroupTransform>
      children:
        - !<MatrixTransform> {matrix: [0.9, 0.1, 0, 0, 0.05, 0.9, 0.05, 0, 0, 0.2, 0.8, 0, 0, 0, 0, 1]}
        - !<ExponentTransform> {value: [2.2, 2.2, 2.2, 1], style: mirror, direction: inverse}
  - !<ColorSpace>
    name: log
    to_scene_reference: !<FileTransform> {src: curve.spi1d, interpolation: linear}
  - !<ColorSpace>
    name: look
    from_scene_reference: !<GroupTransform>
      children:
        - !<CDLTransform> {slope: [1.1, 0.9, 1], offset: [0.01, 0, 0.02], power: [0.8, 1, 0.9], sat: 0.7}
        - !<FileTransform> {src: cube.spi3d, interpolation: linear}
  - !<ColorSpace>
    name: lost
    to_scene_reference: !<FileTransform> {src: missing.spi1d}
)";

/// A configuration with its tables in a folder of its own.
class Config {
public:
    Config() {
        std::ofstream(path()) << configText;
        std::ofstream curve(folder() + "/curve.spi1d");
        curve << "Version 1\nFrom 0.0 1.0\nLength 1024\nComponents 1\n{\n";
        for (int i = 0; i < 1024; ++i)
            curve << std::pow(i / 1023.0, 1.7) << "\n";
        curve << "}\n";
        std::ofstream cube(folder() + "/cube.spi3d");
        constexpr int edge = 9;
        cube << "SPILUT 1.0\n3 3\n" << edge << " " << edge << " " << edge << "\n";
        for (int r = 0; r < edge; ++r) {
            for (int g = 0; g < edge; ++g) {
                for (int b = 0; b < edge; ++b) {
                    cube << r << " " << g << " " << b << " " << std::sqrt(r / 8.0) << " " << (g + b) / 16.0 << " "
                         << b * b / 64.0 << "\n";
                }
            }
        }
    }
    [[nodiscard]] std::string folder() const { return m_folder.path().toStdString(); }
    [[nodiscard]] std::string path() const { return folder() + "/config.ocio"; }

    [[nodiscard]] std::shared_ptr<ColourManagement const> open(std::string const& display = "",
                                                               std::string const& view = "") const {
        std::shared_ptr<ColourManagement const> management;
        const Outcome outcome = ColourManagement::create(path(), display, view, management);
        EXPECT_TRUE(outcome.success()) << outcome.message();
        return management;
    }
    [[nodiscard]] std::string failureOf(std::string const& display, std::string const& view) const {
        std::shared_ptr<ColourManagement const> management;
        return ColourManagement::create(path(), display, view, management).message();
    }

private:
    QTemporaryDir m_folder;
};

/// The colours by OpenColorIO's own arithmetic on the processor.
Image managed(Config const& config, std::string const& space, std::string const& view, Image image) {
    const auto transform = ocio::DisplayViewTransform::Create();
    transform->setSrc(space.c_str());
    transform->setDisplay("screen");
    transform->setView(view.c_str());
    const auto processor =
        ocio::Config::CreateFromFile(config.path().c_str())->getProcessor(transform)->getDefaultCPUProcessor();
    for (Colour& colour : image.colours) {
        float rgb[3] = {static_cast<float>(colour[0]), static_cast<float>(colour[1]), static_cast<float>(colour[2])};
        processor->applyRGB(rgb);
        for (size_t i = 0; i < 3; ++i)
            colour[i] = std::clamp(double{rgb[i]}, 0.0, 1.0);
    }
    return image;
}

Image testColours(double gain) {
    return Image(16, 8, [=](int x, int y) {
        return Colour{gain * x / 15.0, gain * y / 7.0, gain * ((x * 5 + y * 3) % 16) / 15.0, 1};
    });
}

struct ManagedCase {
    const char* name;
    const char* file;
    const char* space;
    const char* view;
};

class ManagedColours : public ::testing::TestWithParam<ManagedCase> {};

TEST_P(ManagedColours, areThoseOfTheConfiguration) {
    const Config config;
    Composing drawing;
    drawing.composer.setColourManagement(config.open("screen", GetParam().view));
    // Light above white must reach the transformation; a transfer that the clip states must not be applied as well.
    const Image image = testColours(1.5);
    const auto picture = makeFloats(image);
    picture->color_trc = AVCOL_TRC_LINEAR;
    const FrameNode node = drawing.provider.add(picture, plainFacts(*picture), GetParam().file);
    // Tables are looked up with the precision of a texture unit.
    EXPECT_LE(
        largestDifference(drawing.compose(node, 16, 8), managed(config, GetParam().space, GetParam().view, image)),
        1.5);
}

INSTANTIATE_TEST_SUITE_P(Views, ManagedColours,
                         ::testing::Values(ManagedCase{"byRule", "plates/a.exr", "light", "video"},
                                           ManagedCase{"byTheDefaultRule", "a.mov", "plain", "film"},
                                           ManagedCase{"throughACurve", "scan.dpx", "log", "video"},
                                           ManagedCase{"throughACube", "a.exr", "light", "film"},
                                           ManagedCase{"throughBoth", "b.dpx", "log", "film"}),
                         [](const auto& caseInfo) { return caseInfo.param.name; });

TEST(ColourManagement, transformsEachFileOfATimelineByItsOwnSpace) {
    const Config config;
    Composing drawing;
    drawing.composer.setColourManagement(config.open("screen", "film"));
    const Image image = testColours(1);
    const auto picture = makeRgba(image);
    const FrameNode rendering = drawing.provider.add(picture, plainFacts(*picture), "a.exr");
    const FrameNode scan = drawing.provider.add(picture, plainFacts(*picture), "a.dpx");
    for (int round = 0; round < 2; ++round) {
        EXPECT_LE(largestDifference(drawing.compose(rendering, 16, 8), managed(config, "light", "film", image)), 1.5);
        EXPECT_LE(largestDifference(drawing.compose(scan, 16, 8), managed(config, "log", "film", image)), 1.5);
    }
}

TEST(ColourManagement, takesColoursBeforeTheyAreMultipliedWithAlpha) {
    const Config config;
    Composing drawing;
    drawing.composer.setColourManagement(config.open("screen", "video"));
    const Colour colour{0.4, 0.6, 0.2, 0.6};
    const FrameNode node =
        drawing.provider.add(makeRgba(Image(2, 2, colour)), plainFacts(*makeRgba(Image(2, 2))), "a.exr");
    const Image expected = managed(config, "light", "video", Image(2, 2, colour));
    const Image drawn = drawing.compose(node, 2, 2);
    for (size_t channel = 0; channel < 3; ++channel)
        EXPECT_NEAR(drawn.at(0, 0)[channel], expected.at(0, 0)[channel] * 0.6, 1.25 / 255);
}

TEST(ColourManagement, leavesGeneratorsAlone) {
    const Config config;
    Composing drawing;
    drawing.composer.setColourManagement(config.open("screen", "film"));
    QOpenGLExtraFunctions& gl = drawing.context.gl();
    const FrameNode node = drawing.provider.addGenerator([&gl](GLuint texture, int width, int height) {
        const std::vector<unsigned char> grey(static_cast<size_t>(width * height) * 4, 77);
        gl.glBindTexture(GL_TEXTURE_RECTANGLE, texture);
        gl.glTexSubImage2D(GL_TEXTURE_RECTANGLE, 0, 0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, grey.data());
        return Outcome();
    });
    EXPECT_NEAR(drawing.compose(node, 4, 4).at(1, 1)[0] * 255, 77, 0.01);
}

TEST(ColourManagement, deletesItsTables) {
    const Config config;
    Composing drawing;
    QOpenGLExtraFunctions& gl = drawing.context.gl();
    const auto living = [&gl] {
        int count = 0;
        for (GLuint name = 1; name < 128; ++name)
            count += gl.glIsTexture(name) == GL_TRUE;
        return count;
    };
    const int before = living();
    drawing.composer.setColourManagement(config.open("screen", "film"));
    const auto picture = makeRgba(testColours(1));
    (void)drawing.compose(drawing.provider.add(picture, plainFacts(*picture), "a.dpx"), 16, 8);
    EXPECT_GE(living(), before + 3);  // the picture, the curve, the cube
    drawing.composer.release(gl);
    EXPECT_EQ(living(), before);
}

TEST(ColourManagement, tellsDisplaysAndViewsToChooseFrom) {
    const Config config;
    const auto management = config.open();
    EXPECT_EQ(management->display(), "screen");
    EXPECT_EQ(management->view(), "video");
    EXPECT_THAT(management->displays(), ::testing::ElementsAre("screen", "projector"));
    EXPECT_THAT(management->views("screen"), ::testing::ElementsAre("video", "film"));
    EXPECT_THAT(management->views("wall"), ::testing::IsEmpty());
    EXPECT_EQ(config.open("projector")->view(), "cinema");
}

TEST(ColourManagement, namesWhatThereIsInsteadOfWhatIsNot) {
    const Config config;
    EXPECT_EQ(config.failureOf("wall", ""),
              config.path() + ": no display is called 'wall'; there are: screen, projector");
    EXPECT_EQ(config.failureOf("screen", "cinema"),
              config.path() + ": no view of the display 'screen' is called 'cinema'; there are: video, film");
}

TEST(ColourManagement, takesTheConfigurationOfTheEnvironment) {
    const Config config;
    std::shared_ptr<ColourManagement const> management;
    const QByteArray before = qgetenv("OCIO");
    qputenv("OCIO", config.path().c_str());
    EXPECT_TRUE(ColourManagement::create("", "", "", management).success());
    EXPECT_TRUE(management != nullptr);
    qunsetenv("OCIO");
    EXPECT_EQ(ColourManagement::create("", "", "", management).message(),
              "colour management: no configuration is named, and the environment variable OCIO is not set");
    if (!before.isEmpty()) qputenv("OCIO", before);
}

TEST(ColourManagement, namesAConfigurationThatCannotBeRead) {
    const Config config;
    std::shared_ptr<ColourManagement const> management;
    const std::string missing = config.folder() + "/missing.ocio";
    const std::string broken = config.folder() + "/broken.ocio";
    std::ofstream(broken) << "This is a shopping list: eggs, milk, butter.\n";
    for (std::string const& path : {missing, broken}) {
        const Outcome outcome = ColourManagement::create(path, "", "", management);
        EXPECT_EQ(outcome.message().find(path + ": "), 0u) << outcome.message();
        EXPECT_EQ(outcome.message().find('\n'), std::string::npos) << outcome.message();
    }
}

TEST(ColourManagement, failsForAFileWhoseTableIsMissing) {
    const Config config;
    Composing drawing;
    drawing.composer.setColourManagement(config.open());
    const auto picture = makeRgba(testColours(1));
    const FrameNode node = drawing.provider.add(picture, plainFacts(*picture), "a.lost");
    const std::string message = drawing.tryToCompose(node, 16, 8).message();
    EXPECT_EQ(message.find("a.lost: colour management with " + config.path() + ": "), 0u) << message;
    EXPECT_NE(message.find("missing.spi1d"), std::string::npos) << message;
}

}  // namespace
}  // namespace qrtplay
