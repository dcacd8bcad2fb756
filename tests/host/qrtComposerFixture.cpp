#include "host/qrtComposerFixture.h"

#include <gtest/gtest.h>

#include <QtGlobal>
#include <cmath>

#include "graph/qrtConversionChoice.h"

namespace qrtplay {

Image::Image(int imageWidth, int imageHeight, Colour const& colour)
    : width(imageWidth),
      height(imageHeight),
      colours(static_cast<size_t>(imageWidth) * static_cast<size_t>(imageHeight), colour) {}

Image::Image(int imageWidth, int imageHeight, std::function<Colour(int x, int y)> const& colourAt)
    : Image(imageWidth, imageHeight) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            at(x, y) = colourAt(x, y);
    }
}

std::shared_ptr<AVFrame> makeRgba(Image const& image) {
    return makePicture(AV_PIX_FMT_RGBA, image.width, image.height, [&image](int component, int x, int y) {
        return image.at(x, y)[static_cast<size_t>(component)] * 255;
    });
}

std::shared_ptr<AVFrame> makeFloats(Image const& image, AVPixelFormat format) {
    return makePicture(format, image.width, image.height, [&image](int component, int x, int y) {
        return image.at(x, y)[static_cast<size_t>(component)];
    });
}

VideoFacts plainFacts(AVFrame const& picture) {
    VideoFacts facts;
    facts.width = picture.width;
    facts.height = picture.height;
    facts.pixelFormat = static_cast<AVPixelFormat>(picture.format);
    facts.colour = completeColour({}, facts.pixelFormat, picture.height);
    return facts;
}

FrameNode FakeProvider::add(std::shared_ptr<AVFrame> picture) {
    const VideoFacts facts = plainFacts(*picture);
    return add(std::move(picture), facts);
}

FrameNode FakeProvider::add(std::shared_ptr<AVFrame> picture, VideoFacts const& facts, std::string const& path) {
    m_media.push_back({std::move(picture), facts, path});
    FrameNode node;
    node.kind = FrameNode::Kind::media;
    node.source = m_media.size() - 1;
    return node;
}

FrameNode FakeProvider::addFailing(std::string const& message) {
    m_failures[m_media.size()] = message;
    return add(nullptr, VideoFacts());
}

FrameNode FakeProvider::addGenerator(Generator generator) {
    m_generators.push_back(std::move(generator));
    FrameNode node;
    node.kind = FrameNode::Kind::generator;
    node.source = m_generators.size() - 1;
    return node;
}

Outcome FakeProvider::mediaPicture(FrameNode const& node, LayerPicture& picture) {
    if (const auto failure = m_failures.find(node.source); failure != m_failures.end())
        return Outcome::failure(failure->second);
    picture = m_media.at(node.source);
    return Outcome();
}

Outcome FakeProvider::generatorPicture(FrameNode const& node, GLuint texture, int width, int height) {
    return m_generators.at(node.source)(texture, width, height);
}

FrameNode stackOf(std::vector<FrameNode> children) {
    FrameNode node;
    node.kind = FrameNode::Kind::stack;
    node.children = std::move(children);
    return node;
}

FrameNode dissolveOf(double mix, FrameNode first, FrameNode second) {
    FrameNode node;
    node.kind = FrameNode::Kind::dissolve;
    node.mix = mix;
    node.children = {std::move(first), std::move(second)};
    return node;
}

Composing::Composing() {
    const int choice = qEnvironmentVariableIntValue("QRT_PREF_QRTPLAY_CONVERSION");
    if (convertsOnCpu(static_cast<ConversionChoice>(choice), context.gl())) composer.setReadyPictures(&ready);
}

Composing::~Composing() {
    composer.release(context.gl());
}

Image Composing::compose(FrameNode const& root, int width, int height) {
    TestTexture texture(context.gl(), width, height);
    const Outcome outcome = composer.compose(context.gl(), root, provider, {texture.name(), width, height});
    EXPECT_TRUE(outcome.success()) << outcome.message();
    EXPECT_EQ(context.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    const std::vector<unsigned char> bytes = texture.pixels();
    return Image(width, height, [&](int x, int y) {
        Colour colour;
        const size_t pixel = static_cast<size_t>(height - 1 - y) * static_cast<size_t>(width) + static_cast<size_t>(x);
        for (size_t channel = 0; channel < 4; ++channel)
            colour[channel] = bytes[pixel * 4 + channel] / 255.0;
        return colour;
    });
}

Outcome Composing::tryToCompose(FrameNode const& root, int width, int height) {
    TestTexture texture(context.gl(), width, height);
    Outcome outcome = composer.compose(context.gl(), root, provider, {texture.name(), width, height});
    EXPECT_EQ(context.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    return outcome;
}

double largestDifference(Image const& a, Image const& b) {
    if (a.width != b.width || a.height != b.height) return 256;
    double largest = 0;
    for (size_t i = 0; i < a.colours.size(); ++i) {
        for (size_t channel = 0; channel < 4; ++channel)
            largest = std::max(largest, std::abs(a.colours[i][channel] - b.colours[i][channel]) * 255);
    }
    return largest;
}

}  // namespace qrtplay
