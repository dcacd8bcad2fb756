// Frames in memory hold the picture, in every format that can be read back.
#include <cmath>
#include <cstring>

#include "harness/qrtPlayerFixture.h"

namespace QRT_0_81 {

namespace {

struct Format {
    char const* name;
    VideoBufferResolution resolution;
};

float halfToFloat(uint16_t half) {
    const int exponent = (half >> 10) & 31;
    const int mantissa = half & 1023;
    const float magnitude = exponent == 0 ? std::ldexp(static_cast<float>(mantissa), -24)
                                          : std::ldexp(static_cast<float>(mantissa + 1024), exponent - 25);
    return (half & 0x8000) != 0 ? -magnitude : magnitude;
}

/// One channel of a block in memory as a number between 0 and 1.
float channelAt(void const* data, VideoBufferResolution const& format, int x, int y, int channel) {
    const auto bytesPerChannel = static_cast<size_t>(format.getBitsPerChannel() / 8);
    const size_t offset =
        static_cast<size_t>(y) * format.getRowSize() +
        (static_cast<size_t>(x) * static_cast<size_t>(format.getNumChannels()) + static_cast<size_t>(channel)) *
            bytesPerChannel;
    auto const* const bytes = static_cast<unsigned char const*>(data) + offset;
    uint16_t sixteen = 0;
    float value = 0.0f;
    switch (format.getBitsPerChannel()) {
        case 8: return static_cast<float>(*bytes) / 255.0f;
        case 16:
            std::memcpy(&sixteen, bytes, sizeof sixteen);
            return format.isFloat() ? halfToFloat(sixteen) : static_cast<float>(sixteen) / 65535.0f;
        default: std::memcpy(&value, bytes, sizeof value); return value;
    }
}

}  // namespace

class PlayerReadBack : public PlayerFixture, public ::testing::WithParamInterface<Format> {};

TEST_P(PlayerReadBack, theBlockEqualsThePicture) {
    const VideoBufferResolution format = GetParam().resolution;
    player = Player::create(format, FakeGraphEngine::create);
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    constexpr int64 frame = 0x2A51;
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(frame % 100, buffer).get(), Status::ok);
    ASSERT_EQ(buffer->getType(), VideoBuffer::memoryKind);
    ASSERT_EQ(buffer->getResolution(), format);
    void* data = nullptr;
    ASSERT_EQ(buffer->getData(data).get(), Status::ok);

    constexpr float tolerance = 0.001f;  // half floats hold eleven bits
    const float expected[4] = {static_cast<float>(frame % 100) / 255.0f, 0.0f, 0.0f, 1.0f};
    for (int y = 0; y < format.getHeight(); ++y) {
        for (int x = 0; x < format.getWidth(); ++x) {
            for (int channel = 0; channel < format.getNumChannels(); ++channel) {
                const bool isMarker =
                    x == 0 && y == 0;  // the first pixel of the first row is the picture's bottom left
                ASSERT_NEAR(channelAt(data, format, x, y, channel), isMarker ? 1.0f : expected[channel], tolerance)
                    << "pixel " << x << ", " << y << " channel " << channel;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, PlayerReadBack,
                         ::testing::Values(Format{"rgba8", VideoBufferResolution(16, 8, 4, 8, false)},
                                           Format{"rgba8OddWidth", VideoBufferResolution(17, 5, 4, 8, false)},
                                           Format{"rgb8", VideoBufferResolution(16, 8, 3, 8, false)},
                                           Format{"rgb8OddWidth", VideoBufferResolution(17, 5, 3, 8, false)},
                                           Format{"rgba16", VideoBufferResolution(16, 8, 4, 16, false)},
                                           Format{"rgb16OddWidth", VideoBufferResolution(17, 5, 3, 16, false)},
                                           Format{"rgba16Float", VideoBufferResolution(16, 8, 4, 16, true)},
                                           Format{"rgb16FloatOddWidth", VideoBufferResolution(17, 5, 3, 16, true)},
                                           Format{"rgba32Float", VideoBufferResolution(16, 8, 4, 32, true)},
                                           Format{"rgb32FloatOddWidth", VideoBufferResolution(17, 5, 3, 32, true)}),
                         [](const auto& caseInfo) { return caseInfo.param.name; });

class PlayerRamOutputs : public PlayerFixture {};

TEST_F(PlayerRamOutputs, theFramebufferGoesBackToItsPoolWithEveryFrame) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    // Both pools hold four: were framebuffers kept, the fifth frame would need one that the host holds.
    SharedPtr<VideoBuffer> held[4];
    for (int64 frame = 0; frame < 4; ++frame)
        ASSERT_EQ(player->getVideoBuffer(frame, held[frame]).get(), Status::ok);
    ASSERT_EQ(player->setRamOutputs(false).get(), Status::ok);
    SharedPtr<VideoBuffer> textures[4];
    for (int64 frame = 0; frame < 4; ++frame) {
        ASSERT_EQ(player->getVideoBuffer(frame, textures[frame]).get(), Status::ok);
        EXPECT_EQ(frameIn(textures[frame]), frame);
    }
}

TEST_F(PlayerRamOutputs, aGrownResolutionIsReadBackWhole) {
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    for (auto const& resolution :
         {VideoBufferResolution(200, 100, 4, 8, false), VideoBufferResolution(8, 8, 4, 8, false)}) {
        ASSERT_EQ(player->setVideoResolution(resolution).get(), Status::ok);
        ASSERT_EQ(player->getVideoBuffer(9, buffer).get(), Status::ok);
        EXPECT_EQ(buffer->getResolution(), resolution);
        EXPECT_EQ(frameIn(buffer), 9);
    }
}

TEST_F(PlayerRamOutputs, aGraphEngineThatLeavesAnotherFramebufferBoundDoesNotSpoilTheReadBack) {
    start();  // the fake graph engine leaves framebuffer 0 bound
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(33, buffer).get(), Status::ok);
    EXPECT_EQ(frameIn(buffer), 33);
}

TEST_F(PlayerRamOutputs, uninitializeLeavesNoPixelBufferInTheHostsShareGroup) {
    const auto numBuffers = [this] {
        int count = 0;
        for (GLuint name = 1; name <= 4096; ++name)
            count += host.gl().glIsBuffer(name) ? 1 : 0;
        return count;
    };
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(1, buffer).get(), Status::ok);
    EXPECT_EQ(numBuffers(), 1);
    ASSERT_EQ(player->uninitialize().get(), Status::ok);
    EXPECT_EQ(numBuffers(), 0);
}

TEST_F(PlayerRamOutputs, heldFramesKeepEveryPixelThroughResolutionsLivesAndThePlayersDeath) {
    std::vector<std::vector<unsigned char>> pictures;
    std::vector<SharedPtr<VideoBuffer>> held;
    const auto bytesOf = [](SharedPtr<VideoBuffer> const& buffer) {
        void* data = nullptr;
        EXPECT_EQ(buffer->getData(data).get(), Status::ok);
        auto const* const bytes = static_cast<unsigned char const*>(data);
        return std::vector<unsigned char>(bytes, bytes + buffer->getResolution().getBufferSize());
    };
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    for (int life = 0; life < 2; ++life) {
        start();
        for (const int width : {32, 8, 64, 16}) {
            ASSERT_EQ(player->setVideoResolution(VideoBufferResolution(width, 8, 4, 8, false)).get(), Status::ok);
            ASSERT_EQ(player->startProducing(playParams(0, 0, 99)).get(), Status::ok);
            held.emplace_back();
            ASSERT_EQ(player->getVideoBuffer(width + life, held.back()).get(), Status::ok);
            EXPECT_EQ(held.back()->getResolution().getWidth(), width);
            EXPECT_EQ(frameIn(held.back()), width + life);
            pictures.push_back(bytesOf(held.back()));
            waitUntilReady(width + life + 1);
            ASSERT_EQ(player->stopProducing().get(), Status::ok);
        }
        ASSERT_EQ(player->uninitialize().get(), Status::ok);
    }
    player.reset();
    for (size_t i = 0; i < held.size(); ++i)
        EXPECT_EQ(bytesOf(held[i]), pictures[i]) << i;
}

TEST_F(PlayerRamOutputs, aTenBitFormatIsReadAsBytesAndSaysSo) {
    player = Player::create(VideoBufferResolution(16, 8, 4, 10, false), FakeGraphEngine::create);
    start();
    ASSERT_EQ(player->setRamOutputs(true).get(), Status::ok);
    const LogCapture log;
    SharedPtr<VideoBuffer> buffer;
    ASSERT_EQ(player->getVideoBuffer(51, buffer).get(), Status::ok);
    EXPECT_EQ(log.count("getOglType() Unsupported QRT::VideoBufferResolution"), 1u);
    EXPECT_EQ(frameIn(buffer), 51);
}

}  // namespace QRT_0_81
