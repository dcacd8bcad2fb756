// A host's segments that throw, and that lie about their buffers.
#include <atomic>
#include <stdexcept>

#include "faults/qrtFaultsFixture.h"
#include "harness/qrtCompositingGraphEngine.h"
#include "harness/qrtRecordingObserver.h"

namespace QRT_0_81 {

namespace {

/// What a lying segment does; the rest of it is honest.
struct Lie {
    char const* name;
    bool isRam = false;
    bool hasOwnBuffers = true;
    unsigned int (*makeTexture)(QOpenGLExtraFunctions& gl, GLenum target) = nullptr;  ///< 0 without one
    void (*throwIn)(char const* operation) = nullptr;
};

template <GLenum internalFormat, GLenum format, GLenum type, int side>
unsigned int textureOf(QOpenGLExtraFunctions& gl, GLenum target) {
    GLuint texture = 0;
    gl.glGenTextures(1, &texture);
    gl.glBindTexture(target, texture);
    gl.glTexImage2D(target, 0, internalFormat, side, side, 0, format, type, nullptr);
    return texture;
}

class LyingSegment final : public ExternalSegment {
public:
    explicit LyingSegment(Lie const& lie) : m_lie(lie) {}

    [[nodiscard]] String const& getId() const override { return happens("getId"), m_id; }
    [[nodiscard]] Subject* getSubject() override { return happens("getSubject"), nullptr; }
    [[nodiscard]] bool isRamSegment() const override { return happens("isRamSegment"), m_lie.isRam; }
    [[nodiscard]] bool hasOwnBuffers() const override { return happens("hasOwnBuffers"), m_lie.hasOwnBuffers; }
    [[nodiscard]] void* getOwnRamBuffer(VideoBufferResolution const&) override { return nullptr; }
    [[nodiscard]] unsigned int getOwnTexture(unsigned int rectangle) override {
        if (!m_lie.makeTexture) return 0;
        auto& gl = *QOpenGLContext::currentContext()->extraFunctions();
        const unsigned int texture = m_lie.makeTexture(gl, rectangle != 0 ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D);
        return texture;
    }
    Status renderToTexture(unsigned int, unsigned int, VideoBufferResolution const&, Time const&) override {
        return happens("renderToTexture"), Status();
    }
    Status renderToRam(void*, unsigned int, VideoBufferResolution const&, Time const&) override {
        return happens("renderToRam"), Status();
    }

private:
    void happens(char const* operation) const {
        if (m_lie.throwIn) m_lie.throwIn(operation);
    }

    const String m_id{"liar"};
    const Lie m_lie;
};

template <char const* operation>
void throwing(char const* called) {
    if (std::string(called) == operation) throw std::runtime_error("the plug-in has crashed");
}
constexpr char id[] = "getId";
constexpr char subject[] = "getSubject";
constexpr char kind[] = "isRamSegment";
constexpr char buffers[] = "hasOwnBuffers";
constexpr char toTexture[] = "renderToTexture";
constexpr char toRam[] = "renderToRam";

const Lie lies[] = {
    {"memoryThatIsNull", true},
    {"texture0", false},
    {"aTextureThatDoesNotExist", false, true, [](QOpenGLExtraFunctions&, GLenum) { return 3999u; }},
    {"aTextureOfTheOtherTarget", false, true,
     [](QOpenGLExtraFunctions& gl, GLenum target) {
         const GLenum other = target == GL_TEXTURE_2D ? GL_TEXTURE_RECTANGLE : GL_TEXTURE_2D;
         return textureOf<GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, 16>(gl, other);
     }},
    {"throwsInGetId", false, false, nullptr, throwing<id>},
    {"throwsInIsRamSegment", false, false, nullptr, throwing<kind>},
    {"throwsInHasOwnBuffers", false, false, nullptr, throwing<buffers>},
    {"throwsInRenderToTexture", false, false, nullptr, throwing<toTexture>},
    {"throwsInRenderToRam", true, false, nullptr, throwing<toRam>},
};

}  // namespace

class SegmentFaults : public FaultsFixture, public ::testing::WithParamInterface<Lie> {
protected:
    SegmentFaults() { player = Player::create(smallRgba8, CompositingGraphEngine::create); }

    Status setSegment(Lie const& lie) {
        List<SharedPtr<ExternalSegment>> segments;
        segments.append(SharedPtr<ExternalSegment>(new LyingSegment(lie)));
        return player->setComposition(FakeComposition::create(0, 100), segments);
    }
    void startWithBudgets() {
        start();
        for (const auto type : {Resource::Type::ram, Resource::Type::vram}) {
            (void)player->setExternalSegmentCacheConstraint(type, ResourceConstraint::ResizeMode::automatic, 1, 1);
        }
    }
};

TEST_P(SegmentFaults, failThePictureAndNotThePlayer) {
    startWithBudgets();
    ASSERT_EQ(setSegment(GetParam()).get(), Status::ok);
    for (int64 frame = 0; frame < 10; ++frame)
        EXPECT_NE(fetch(frame).get(), Status::ok);
    EXPECT_TRUE(isToldOf("getVideoBuffer() failed = "));
    expectWorking();
}

INSTANTIATE_TEST_SUITE_P(Of, SegmentFaults, ::testing::ValuesIn(lies), [](auto const& lie) { return lie.param.name; });

TEST_F(SegmentFaults, aTextureOfIntegersIsToldOfAndCostsNothingElse) {
    startWithBudgets();
    ASSERT_EQ(setSegment({"", false, true, textureOf<GL_RGBA8UI, GL_RGBA_INTEGER, GL_UNSIGNED_BYTE, 16>}).get(),
              Status::ok);
    EXPECT_EQ(fetch(0).get(), Status::ok);
    EXPECT_TRUE(isToldOf("an external segment's texture cannot be copied: OpenGL error 1282"));
    expectWorking();
}

TEST_F(SegmentFaults, oneThatThrowsWhenItIsAskedForItsSubjectMakesNoComposition) {
    startWithBudgets();
    EXPECT_EQ(setSegment({"", false, false, nullptr, throwing<subject>}).get(), Status::general_failure);
    EXPECT_EQ(fetch(0).get(), Status::no_composition);
    expectWorking();
}

/// Its subject has gone with the plug-in when the composition is replaced.
class VanishingSegment final : public ExternalSegment {
public:
    [[nodiscard]] String const& getId() const override { return m_id; }
    [[nodiscard]] Subject* getSubject() override {
        if (hasVanished) throw std::runtime_error("the plug-in has gone");
        return &m_subject;
    }
    [[nodiscard]] bool isRamSegment() const override { return true; }
    [[nodiscard]] bool hasOwnBuffers() const override { return false; }
    [[nodiscard]] void* getOwnRamBuffer(VideoBufferResolution const&) override { return nullptr; }
    [[nodiscard]] unsigned int getOwnTexture(unsigned int) override { return 0; }
    Status renderToTexture(unsigned int, unsigned int, VideoBufferResolution const&, Time const&) override {
        return Status();
    }
    Status renderToRam(void*, unsigned int, VideoBufferResolution const&, Time const&) override { return Status(); }

    std::atomic<bool> hasVanished{false};

private:
    const String m_id{"insert"};
    Subject m_subject;
};

TEST_F(SegmentFaults, oneThatThrowsWhenItIsLeftKeepsNoFrameOfTheOldComposition) {
    player = Player::create(smallRgba8, FaultyGraphEngine::create);
    start();
    const SharedPtr<VanishingSegment> segment(new VanishingSegment);
    List<SharedPtr<ExternalSegment>> segments;
    segments.append(segment);
    ASSERT_EQ(player->setComposition(FakeComposition::create(0, 100), segments).get(), Status::ok);
    ASSERT_EQ(fetch(7).get(), Status::ok);
    RecordingObserver observer;
    player->addObserver(&observer);
    segment->hasVanished = true;
    EXPECT_EQ(setComposition(FakeComposition::create(0, 100)).get(), Status::ok);
    EXPECT_FALSE(player->isVideoBufferReady(7));
    EXPECT_EQ(observer.count(), 1u);
    EXPECT_TRUE(isToldOf("leaving an external segment failed: the plug-in has gone"));
    segment->hasVanished = false;  // or it would be the test's own that throws
}

TEST_F(SegmentFaults, aTextureThatIsTooSmallFillsItsPartOfThePicture) {
    startWithBudgets();
    ASSERT_EQ(setSegment({"", false, true, textureOf<GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, 2>}).get(), Status::ok);
    EXPECT_EQ(fetch(0).get(), Status::ok);
    expectWorking();
}

}  // namespace QRT_0_81
