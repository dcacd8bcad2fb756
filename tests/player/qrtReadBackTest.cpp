// How a frame gets from the bound framebuffer into memory, and what happens when it cannot.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "harness/qrtHostContext.h"
#include "harness/qrtLogCapture.h"
#include "harness/qrtOtherContext.h"
#include "harness/qrtPixelBufferFaults.h"
#include "harness/qrtPlayerImplInspector.h"
#include "qrtOpenGL.h"

namespace QRT_0_81 {

namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr VideoBufferResolution rgba8(7, 5, 4, 8, false);
constexpr char creationFailed[] = "PlayerImpl::_copyVideoBuffer()-PBO creation failed";
constexpr char bindFailed[] = "PlayerImpl::_copyVideoBuffer()-PBO bind failed";
constexpr char mapFailed[] = "PlayerImpl::_copyVideoBuffer()--PBO map() failed";
constexpr char unmapFailed[] = "PlayerImpl::_copyVideoBuffer()--PBO unmap() failed";
constexpr char unsupported[] = "getOglType() Unsupported QRT::VideoBufferResolution";

/// A frame in memory of the test's own, or with none.
class MemoryFrame final : public VideoBuffer {
public:
    explicit MemoryFrame(size_t size) : bytes(size) {}

    [[nodiscard]] unsigned char getType() const override { return memoryKind; }
    Status getData(void*& data) override { return static_cast<MemoryFrame const&>(*this).getData(data); }
    Status getData(void*& data) const override {
        data = bytes.empty() ? nullptr : bytes.data();
        return dataStatus;
    }
    Status getTexture(unsigned int& texture) const override {
        texture = 0;
        return Status();
    }
    [[nodiscard]] VideoBufferResolution getResolution() const override { return VideoBufferResolution(); }

    mutable std::vector<unsigned char> bytes;
    Status dataStatus;
};

}  // namespace

/// An engine without a thread, which copies on this one with the host's context current.
class ReadBack : public ::testing::Test {
protected:
    ~ReadBack() override {
        host.makeCurrent();
        source.reset();
        engine.reset();
    }

    /// Makes the engine for a format and binds a framebuffer of it, cleared to the colours.
    void prepare(VideoBufferResolution const& format, VideoBufferResolution const& sourceFormat) {
        engine = std::make_unique<PlayerImpl>(format, nullptr);
        ASSERT_EQ(fboPool->setup(1, ResourcePool::SizeUnit::buffers, sourceFormat).get(), Status::ok);
        source = VideoBufferPrivate::create(fboPool, true);
        QOpenGLFramebufferObject* framebuffer = nullptr;
        ASSERT_EQ(source->getFBO(framebuffer).get(), Status::ok);
        ASSERT_TRUE(framebuffer->bind());
        host.gl().glClearColor(1.0f, 0.0f, 0.5f, 1.0f);
        host.gl().glClear(GL_COLOR_BUFFER_BIT);
        destination = memory(static_cast<size_t>(format.getBufferSize()));
    }
    void prepare(VideoBufferResolution const& format) { prepare(format, format); }

    static SharedPtr<MemoryFrame> memory(size_t size) { return SharedPtr<MemoryFrame>(new MemoryFrame(size)); }
    Status copy() { return PlayerImplInspector::copyVideoBuffer(*engine, source, destination); }
    QOpenGLBuffer* pixelBuffer() { return PlayerImplInspector::pixelBuffer(*engine); }
    GLint boundPixelBuffer() {
        GLint name = -1;
        host.gl().glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &name);
        return name;
    }

    HostContext host;
    const SharedPtr<ResourcePoolFBO> fboPool = ResourcePoolFBO::create();
    std::unique_ptr<PlayerImpl> engine;
    SharedPtr<VideoBufferPrivate> source;
    SharedPtr<MemoryFrame> destination;
};

// ---- Success --------------------------------------------------------------------------------------------------------

TEST_F(ReadBack, copiesTheBoundFramebufferAndUnbindsThePixelBuffer) {
    prepare(rgba8);
    ASSERT_EQ(copy().get(), Status::ok);
    for (size_t pixel = 0; pixel < destination->bytes.size(); pixel += 4) {
        ASSERT_EQ(destination->bytes[pixel], 255);
        ASSERT_EQ(destination->bytes[pixel + 1], 0);
        ASSERT_NEAR(destination->bytes[pixel + 2], 128, 1);
        ASSERT_EQ(destination->bytes[pixel + 3], 255);
    }
    EXPECT_EQ(boundPixelBuffer(), 0);
    EXPECT_EQ(host.gl().glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(ReadBack, readsWhatIsBoundAndNotTheSource) {
    prepare(rgba8);
    auto const elsewhere = ResourcePoolFBO::create();
    ASSERT_EQ(elsewhere->setup(1, ResourcePool::SizeUnit::buffers, rgba8).get(), Status::ok);
    const auto other = VideoBufferPrivate::create(elsewhere, true);
    QOpenGLFramebufferObject* framebuffer = nullptr;
    ASSERT_EQ(other->getFBO(framebuffer).get(), Status::ok);
    framebuffer->bind();
    host.gl().glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    host.gl().glClear(GL_COLOR_BUFFER_BIT);
    ASSERT_EQ(copy().get(), Status::ok);
    EXPECT_EQ(destination->bytes[0], 0);
    EXPECT_EQ(destination->bytes[1], 255);
}

TEST_F(ReadBack, keepsOnePixelBufferForAllFrames) {
    prepare(rgba8);
    EXPECT_EQ(pixelBuffer(), nullptr);
    ASSERT_EQ(copy().get(), Status::ok);
    QOpenGLBuffer const* const first = pixelBuffer();
    ASSERT_NE(first, nullptr);
    const GLuint name = first->bufferId();
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(copy().get(), Status::ok);
    EXPECT_EQ(pixelBuffer(), first);
    EXPECT_EQ(pixelBuffer()->bufferId(), name);
}

TEST_F(ReadBack, thePixelBufferHoldsExactlyOneFrame) {
    prepare(VideoBufferResolution(7, 5, 3, 8, false));  // 21 bytes a row are padded to 24
    ASSERT_EQ(copy().get(), Status::ok);
    ASSERT_TRUE(pixelBuffer()->bind());
    EXPECT_EQ(pixelBuffer()->size(), 24 * 5);
    EXPECT_EQ(pixelBuffer()->type(), QOpenGLBuffer::PixelPackBuffer);
    pixelBuffer()->release();
}

TEST_F(ReadBack, leavesThePackAlignmentAsItIs) {
    prepare(rgba8);
    for (const GLint alignment : {1, 2, 4}) {
        host.gl().glPixelStorei(GL_PACK_ALIGNMENT, alignment);
        ASSERT_EQ(copy().get(), Status::ok);
        GLint found = 0;
        host.gl().glGetIntegerv(GL_PACK_ALIGNMENT, &found);
        EXPECT_EQ(found, alignment);
    }
}

TEST_F(ReadBack, writesNothingBehindTheFrame) {
    prepare(rgba8);
    const auto size = static_cast<size_t>(rgba8.getBufferSize());
    destination = memory(size + 64);
    std::memset(destination->bytes.data(), 0x77, destination->bytes.size());
    ASSERT_EQ(copy().get(), Status::ok);
    const std::vector<unsigned char> behind(destination->bytes.begin() + static_cast<std::ptrdiff_t>(size),
                                            destination->bytes.end());
    EXPECT_THAT(behind, Each(0x77));
}

// ---- Formats --------------------------------------------------------------------------------------------------------

TEST_F(ReadBack, threeChannelsOf8BitsTravelAsRgbBytes) {
    prepare(VideoBufferResolution(7, 5, 3, 8, false));
    ASSERT_EQ(copy().get(), Status::ok);
    for (size_t row = 0; row < 5; ++row) {
        for (size_t pixel = 0; pixel < 7; ++pixel) {
            unsigned char const* const at = &destination->bytes[row * 24 + pixel * 3];
            ASSERT_EQ(at[0], 255);
            ASSERT_EQ(at[1], 0);
            ASSERT_NEAR(at[2], 128, 1);
        }
    }
}

TEST_F(ReadBack, fourChannelsOf16BitFloatsTravelAsRgbaHalves) {
    prepare(VideoBufferResolution(7, 5, 4, 16, true));
    ASSERT_EQ(copy().get(), Status::ok);
    ASSERT_EQ(destination->bytes.size(), 7u * 5u * 8u);
    const auto channel = [this](size_t index) {
        uint16_t half = 0;
        std::memcpy(&half, &destination->bytes[index * 2], sizeof half);
        return half;
    };
    for (size_t pixel = 0; pixel < 7 * 5; ++pixel) {
        ASSERT_EQ(channel(pixel * 4), 0x3C00);      // 1.0
        ASSERT_EQ(channel(pixel * 4 + 1), 0x0000);  // 0.0
        ASSERT_EQ(channel(pixel * 4 + 2), 0x3800);  // 0.5
        ASSERT_EQ(channel(pixel * 4 + 3), 0x3C00);
    }
}

TEST_F(ReadBack, twoChannelsTravelAsRgba) {
    prepare(VideoBufferResolution(7, 5, 2, 8, false), rgba8);  // no pool makes textures of two channels
    ASSERT_EQ(destination->bytes.size(), 7u * 5u * 4u);
    ASSERT_EQ(copy().get(), Status::ok);
    for (size_t pixel = 0; pixel < 7 * 5; ++pixel) {
        ASSERT_EQ(destination->bytes[pixel * 4], 255);
        ASSERT_EQ(destination->bytes[pixel * 4 + 1], 0);
        ASSERT_NEAR(destination->bytes[pixel * 4 + 2], 128, 1);
        ASSERT_EQ(destination->bytes[pixel * 4 + 3], 255);
    }
}

TEST_F(ReadBack, oneChannelTravelsAsRed) {
    prepare(VideoBufferResolution(7, 5, 1, 8, false), rgba8);
    ASSERT_EQ(destination->bytes.size(), 8u * 5u);
    ASSERT_EQ(copy().get(), Status::ok);
    for (size_t row = 0; row < 5; ++row) {
        for (size_t pixel = 0; pixel < 7; ++pixel)
            ASSERT_EQ(destination->bytes[row * 8 + pixel], 255);
    }
}

TEST_F(ReadBack, twelveBitsPostThatTheyAreUnsupportedAndTravelAsBytes) {
    prepare(VideoBufferResolution(7, 5, 4, 12, false), rgba8);  // no framebuffer of 12 bits is complete
    const LogCapture log;
    ASSERT_EQ(destination->bytes.size(), 7u * 5u * 4u);
    ASSERT_EQ(copy().get(), Status::ok);
    EXPECT_THAT(log.lines(), ElementsAre(unsupported));
    EXPECT_EQ(destination->bytes[0], 255);
    EXPECT_NEAR(destination->bytes[2], 128, 1);
}

// ---- Failures -------------------------------------------------------------------------------------------------------

TEST_F(ReadBack, swappedArgumentsAreType4AndOpenGLIsNotTouched) {
    prepare(rgba8);
    host.doneCurrent();  // whoever touches OpenGL now fails or crashes
    EXPECT_EQ(PlayerImplInspector::copyVideoBuffer(*engine, destination, source).get(), 4);
    EXPECT_EQ(PlayerImplInspector::copyVideoBuffer(*engine, destination, destination).get(), 4);
    EXPECT_EQ(PlayerImplInspector::copyVideoBuffer(*engine, source, source).get(), 4);
    EXPECT_EQ(pixelBuffer(), nullptr);
}

TEST_F(ReadBack, withoutMemoryTheResultIsType260AndOpenGLIsNotTouched) {
    prepare(rgba8);
    host.doneCurrent();
    destination = memory(0);
    EXPECT_EQ(copy().get(), 260);
    destination = memory(static_cast<size_t>(rgba8.getBufferSize()));
    destination->dataStatus = Status::general_failure;
    EXPECT_EQ(copy().get(), 260);
    EXPECT_EQ(pixelBuffer(), nullptr);
}

TEST_F(ReadBack, aMemoryFrameThatGotNoBlockIsType260) {
    prepare(rgba8);
    const auto ramPool = ResourcePoolRAM::create();
    EXPECT_EQ(PlayerImplInspector::copyVideoBuffer(*engine, source, VideoBufferPrivate::create(ramPool, true)).get(),
              260);
}

TEST_F(ReadBack, aPixelBufferThatCannotBeCreatedIsType274AndTheNextCallTriesAgain) {
    prepare(rgba8);
    LogCapture log;
    host.doneCurrent();
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ(copy().get(), 274);
        EXPECT_THAT(log.lines(), ElementsAre(creationFailed));
        EXPECT_EQ(pixelBuffer(), nullptr);
        log.clear();
    }
    host.makeCurrent();
    EXPECT_EQ(copy().get(), Status::ok);
    EXPECT_NE(pixelBuffer(), nullptr);
    EXPECT_EQ(destination->bytes[0], 255);
    EXPECT_TRUE(log.messages().empty());
}

TEST_F(ReadBack, aNewPixelBufferThatCannotBeBoundIsType274AndIsDeleted) {
    prepare(rgba8);
    const LogCapture log;
    {
        const PixelBufferFault fault(PixelBufferFault::Operation::bind);
        EXPECT_EQ(copy().get(), 274);
    }
    EXPECT_THAT(log.lines(), ElementsAre(bindFailed));
    EXPECT_EQ(pixelBuffer(), nullptr);
    EXPECT_EQ(copy().get(), Status::ok);
}

TEST_F(ReadBack, aKnownPixelBufferThatCannotBeBoundIsType274AndIsKept) {
    prepare(rgba8);
    ASSERT_EQ(copy().get(), Status::ok);
    QOpenGLBuffer const* const known = pixelBuffer();
    const LogCapture log;
    OtherContext foreign;
    foreign.makeCurrent();  // the buffer does not exist there
    EXPECT_EQ(copy().get(), 274);
    EXPECT_THAT(log.lines(), ElementsAre(bindFailed));
    EXPECT_EQ(pixelBuffer(), known);
    host.makeCurrent();
    EXPECT_EQ(copy().get(), Status::ok);
    EXPECT_EQ(pixelBuffer(), known);
}

TEST_F(ReadBack, aPixelBufferThatCannotBeMappedIsType274AndIsUnbound) {
    prepare(rgba8);
    ASSERT_EQ(copy().get(), Status::ok);
    ASSERT_TRUE(pixelBuffer()->bind());
    ASSERT_NE(pixelBuffer()->map(QOpenGLBuffer::ReadOnly), nullptr);  // nobody can map it a second time
    pixelBuffer()->release();
    const LogCapture log;
    EXPECT_EQ(copy().get(), 274);
    EXPECT_THAT(log.lines(), ElementsAre(mapFailed));
    EXPECT_EQ(boundPixelBuffer(), 0);
    ASSERT_TRUE(pixelBuffer()->bind());
    ASSERT_TRUE(pixelBuffer()->unmap());
    pixelBuffer()->release();
    drainGlErrors();
    EXPECT_EQ(copy().get(), Status::ok);
}

TEST_F(ReadBack, aFailureToUnmapIsPostedAndTheResultStaysSuccess) {
    prepare(rgba8);
    const LogCapture log;
    {
        const PixelBufferFault fault(PixelBufferFault::Operation::unmap);
        EXPECT_EQ(copy().get(), Status::ok);
    }
    EXPECT_THAT(log.lines(), ElementsAre(unmapFailed));
    EXPECT_EQ(destination->bytes[0], 255);
    EXPECT_EQ(boundPixelBuffer(), 0);
    EXPECT_NE(pixelBuffer(), nullptr);
    EXPECT_EQ(copy().get(), Status::ok);
}

TEST_F(ReadBack, aFrameLargerThanAPixelBufferCanBeIsType274) {
    prepare(rgba8);
    engine =
        std::make_unique<PlayerImpl>(VideoBufferResolution(32768, 32769, 4, 8, false), nullptr);  // 2^32 bytes and more
    const LogCapture log;
    EXPECT_EQ(copy().get(), 274);
    EXPECT_THAT(log.lines(), ElementsAre(creationFailed));
    EXPECT_EQ(pixelBuffer(), nullptr);
}

TEST_F(ReadBack, itsMessagesComeFromTheEngineOnThePlayersChannel) {
    prepare(rgba8);
    const LogCapture log;
    host.doneCurrent();
    EXPECT_EQ(copy().get(), 274);
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(log.messages()[0].channel(), "QRT_PLAYER");
    EXPECT_EQ(log.messages()[0].file(), "src/player/private/qrtPlayerImpl");
    EXPECT_EQ(log.messages()[0].text().rfind("thread_id=", 0), 0u);
}

TEST_F(ReadBack, aDeletedPixelBufferIsMadeAnew) {
    prepare(rgba8);
    ASSERT_EQ(copy().get(), Status::ok);
    PlayerImplInspector::deletePixelBuffer(*engine);
    EXPECT_EQ(pixelBuffer(), nullptr);
    EXPECT_EQ(copy().get(), Status::ok);
    EXPECT_NE(pixelBuffer(), nullptr);
}

// ---- What ends the pixel buffer -------------------------------------------------------------------------------------

TEST_F(ReadBack, aLargerFormatEndsThePixelBufferAndASmallerOneKeepsIt) {
    prepare(rgba8);
    ASSERT_EQ(copy().get(), Status::ok);
    ASSERT_EQ(engine->setVideoResolution(VideoBufferResolution(5, 5, 4, 8, false)).get(), Status::ok);
    EXPECT_NE(pixelBuffer(), nullptr);
    ASSERT_EQ(engine->setVideoResolution(VideoBufferResolution(8, 5, 4, 8, false)).get(), Status::ok);
    EXPECT_EQ(pixelBuffer(), nullptr);
}

TEST_F(ReadBack, switchingMemoryOutputOffEndsThePixelBuffer) {
    prepare(rgba8);
    ASSERT_EQ(engine->setRamOutputs(true).get(), Status::ok);
    ASSERT_EQ(copy().get(), Status::ok);
    ASSERT_EQ(engine->setRamOutputs(false).get(), Status::ok);
    EXPECT_EQ(pixelBuffer(), nullptr);
}

}  // namespace QRT_0_81
