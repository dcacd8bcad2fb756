// Generators in a whole player: it renders their frames once, keeps them, and renders them anew when they change.
#include <gtest/gtest.h>

#include <QOpenGLContext>

#include "generators/qrtGeneratorSegments.h"
#include "generators/qrtSegmentRenderer.h"
#include "harness/qrtFakeComposition.h"
#include "host/qrtForwardingSegment.h"
#include "host/qrtGeneratedPicture.h"
#include "player/qrtPlayer.h"

namespace qrtplay {
namespace {

using Kind = Generator::Kind;

constexpr int width = 64;
constexpr int height = 48;

/// A picture is that of the only segment, which has the id "generator".
class SegmentGraphEngine final : public GraphEngineInterface {
public:
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create() {
        return SharedPtr<GraphEngineInterface>(new SegmentGraphEngine);
    }

    Status setComposition(SharedPtr<Composition> const&, List<SharedPtr<ExternalSegment>> const& segments,
                          VideoBufferResolution const&, Rational const&) override {
        m_renderer.setSegments(segments);
        return Status();
    }
    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override {
        const Outcome outcome =
            m_renderer.render(*QOpenGLContext::currentContext()->extraFunctions(), "generator", frame,
                              getVideoFrameRate(), texture, resolution.getWidth(), resolution.getHeight());
        EXPECT_TRUE(outcome.success()) << outcome.message();
        return outcome.success() ? Status::ok : Status::general_failure;
    }

    // What does not matter here.
    Status setPref(String const&, int) override { return Status::invalid_argument; }
    Status getPref(String const&, int&) const override { return Status::invalid_argument; }
    Status getPrefs(Vector<String>&) const override { return Status(); }
    Status setGLContext(QOpenGLContext*) override { return Status(); }
    Status updateComposition(SharedPtr<Composition> const&, String const&) override { return Status(); }
    Status fillAudio(ConstSharedPtr<AudioFormatInterface> const&, char*, size_t, size_t) override { return Status(); }
    Status setVideoFrameRate(Rational const&) override { return Status(); }
    [[nodiscard]] Rational getVideoFrameRate() const override { return {24, 1}; }
    [[nodiscard]] SharedPtr<TokenResolver> getTokenResolver() const override { return {}; }
    Status clearCache() override { return Status(); }
    Status getCacheStats(CacheStats::CacheType, ConstSharedPtr<CacheStats>&) const override { return Status(); }
    Status setStep(int32) override { return Status(); }
    [[nodiscard]] int32 getStep() const override { return 1; }

private:
    SegmentRenderer m_renderer;
};

class GeneratorInPlayer : public ::testing::Test {
protected:
    ~GeneratorInPlayer() override { (void)player->uninitialize(); }

    void start(Generator const& generator, size_t budgetInMiB) {
        for (const auto type : {Resource::Type::ram, Resource::Type::vram}) {
            ASSERT_TRUE(
                player->setExternalSegmentCacheConstraint(type, ResourceConstraint::ResizeMode::fixed, 0, budgetInMiB)
                    .success());
        }
        ASSERT_TRUE(player->setRamOutputs(true).success());
        ASSERT_TRUE(player->initialize(nullptr, nullptr).success());
        segment = makeGeneratorSegment(generator);
        counting = ForwardingSegment::create(segment);
        List<SharedPtr<ExternalSegment>> segments;
        segments.append(counting);
        ASSERT_TRUE(player->setComposition(composition, segments).success());
    }
    /// Produced anew: what the player itself keeps is dropped before.
    GeneratedPicture produce(int64 frame) {
        EXPECT_TRUE(player->updateComposition(composition, "").success());
        GeneratedPicture picture{width, height, {}};
        SharedPtr<VideoBuffer> buffer;
        void* data = nullptr;
        if (player->getVideoBuffer(frame, buffer).failure() || buffer->getData(data).failure()) {
            ADD_FAILURE() << "frame " << frame << " was not produced";
            return picture;
        }
        auto const* const bytes = static_cast<unsigned char const*>(data);
        picture.pixels.assign(bytes, bytes + formatOf(width, height).getBufferSize());
        return picture;
    }

    SharedPtr<Player> player = Player::create(formatOf(width, height), &SegmentGraphEngine::create);
    SharedPtr<Composition> composition = FakeComposition::create(0, 240);
    SharedPtr<ExternalSegment> segment;
    SharedPtr<ForwardingSegment> counting;
};

TEST_F(GeneratorInPlayer, aLeaderIsDrawnOnceForAFrameAndThenComesFromTheCache) {
    TestContext context;
    const Generator leader = generatorOf(Kind::counting_leader);
    start(leader, 4);
    for (int round = 0; round < 3; ++round) {
        for (const int64 frame : {0, 40, 239})
            EXPECT_EQ(produce(frame), draw(context.gl(), leader, width, height, frame));
    }
    EXPECT_EQ(counting->renderCount, 3);
}

TEST_F(GeneratorInPlayer, aTitleIsFilledOnceForAFrameAndThenComesFromTheCache) {
    const Generator title = titleOf("Hello", {1, 0, 0, 0.5});
    start(title, 4);
    for (int round = 0; round < 3; ++round) {
        for (const int64 frame : {0, 40, 239})
            EXPECT_EQ(produce(frame), fill(title, width, height));
    }
    EXPECT_EQ(counting->renderCount, 3);
}

TEST_F(GeneratorInPlayer, isRenderedEachTimeWithoutACache) {
    start(titleOf("Hello"), 0);
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(produce(5), fill(titleOf("Hello"), width, height));
    EXPECT_EQ(counting->renderCount, 3);
}

TEST_F(GeneratorInPlayer, aChangedTitleIsRenderedAnew) {
    start(titleOf("before"), 4);
    for (const int64 frame : {0, 239})
        EXPECT_EQ(produce(frame), fill(titleOf("before"), width, height));
    dynamic_cast<GeneratorSegment&>(*segment).setText("after");
    for (const int64 frame : {0, 239})
        EXPECT_EQ(produce(frame), fill(titleOf("after"), width, height));
    EXPECT_EQ(counting->renderCount, 4);
    (void)produce(0);
    EXPECT_EQ(counting->renderCount, 4) << "and is kept again";
}

TEST_F(GeneratorInPlayer, aChangedColourIsDrawnAnew) {
    TestContext context;
    start(generatorOf(Kind::solid_colour, {1, 0, 0, 1}), 4);
    EXPECT_EQ(produce(9).at(1, 1), (GeneratedPicture::Pixel{255, 0, 0, 255}));
    dynamic_cast<GeneratorSegment&>(*segment).setColour({0, 0, 1, 1});
    EXPECT_EQ(produce(9).at(1, 1), (GeneratedPicture::Pixel{0, 0, 255, 255}));
    EXPECT_EQ(counting->renderCount, 2);
}

TEST_F(GeneratorInPlayer, outlivesThePlayersContext) {
    TestContext context;
    const Generator leader = generatorOf(Kind::counting_leader);
    start(leader, 4);
    const GeneratedPicture first = produce(40);
    ASSERT_TRUE(player->uninitialize().success());
    ASSERT_TRUE(player->initialize(nullptr, nullptr).success());
    List<SharedPtr<ExternalSegment>> segments;
    segments.append(counting);
    ASSERT_TRUE(player->setComposition(composition, segments).success());
    EXPECT_EQ(produce(40), first);
    EXPECT_EQ(counting->renderCount, 2);
}

}  // namespace
}  // namespace qrtplay
