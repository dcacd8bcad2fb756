#pragma once

#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "graph/qrtFrameComposer.h"
#include "host/qrtMadePicture.h"
#include "host/qrtTestOpenGL.h"

namespace qrtplay {

/// Red, green, blue and alpha between 0 and 1.
using Colour = std::array<double, 4>;

/// A picture in memory, top row first.
struct Image {
    Image(int imageWidth, int imageHeight, Colour const& colour = {});
    /// The colour of each pixel by its column and row.
    Image(int imageWidth, int imageHeight, std::function<Colour(int x, int y)> const& colourAt);

    [[nodiscard]] Colour& at(int x, int y) { return colours[index(x, y)]; }
    [[nodiscard]] Colour const& at(int x, int y) const { return colours[index(x, y)]; }
    [[nodiscard]] size_t index(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
    }

    int width;
    int height;
    std::vector<Colour> colours;
};

/// An opaque one.
[[nodiscard]] inline Image black(int width, int height) {
    return Image(width, height, Colour{0, 0, 0, 1});
}

/// A picture of 8-bit RGBA with the image's colours.
std::shared_ptr<AVFrame> makeRgba(Image const& image);
/// The same of 32-bit floats, with alpha when `format` has one.
std::shared_ptr<AVFrame> makeFloats(Image const& image, AVPixelFormat format = AV_PIX_FMT_GBRAPF32);

/// Facts of a clip that states nothing but its size.
VideoFacts plainFacts(AVFrame const& picture);

/// A tree's leaves by their number.
class FakeProvider final : public LayerProvider {
public:
    using Generator = std::function<Outcome(GLuint texture, int width, int height)>;

    /// Adds a media; the node that shows it.
    FrameNode add(std::shared_ptr<AVFrame> picture);
    FrameNode add(std::shared_ptr<AVFrame> picture, VideoFacts const& facts, std::string const& path = "clip.mov");
    FrameNode add(Image const& image) { return add(makeRgba(image)); }
    FrameNode addFailing(std::string const& message);
    FrameNode addGenerator(Generator generator);

    Outcome mediaPicture(FrameNode const& node, LayerPicture& picture) override;
    Outcome generatorPicture(FrameNode const& node, GLuint texture, int width, int height) override;

private:
    std::vector<LayerPicture> m_media;
    std::map<size_t, std::string> m_failures;
    std::vector<Generator> m_generators;
};

FrameNode stackOf(std::vector<FrameNode> children);
FrameNode dissolveOf(double mix, FrameNode first, FrameNode second);

/// A composer with a context of its own.
class Composing {
public:
    /// Converts pictures where the program would here by itself.
    Composing();
    ~Composing();
    Q_DISABLE_COPY(Composing)

    /// What is drawn, with 8 bits a channel; a failure is a failure of the test.
    Image compose(FrameNode const& root, int width, int height);
    /// What comes of it, whatever that is.
    Outcome tryToCompose(FrameNode const& root, int width, int height);

    TestContext context;
    FakeProvider provider;
    ReadyPictures ready;
    FrameComposer composer;
};

/// In steps of 8 bits: one rounding to them, after intermediate pictures of floats with 11 bits.
inline constexpr double rounding = 0.75;

/// The largest difference of a channel, in steps of 8 bits; 256 when the sizes are not alike.
double largestDifference(Image const& a, Image const& b);

}  // namespace qrtplay
