#include "generators/qrtGeneratorSegments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>

#include "foundation/core/qrtNotificationHint.h"
#include "foundation/core/qrtObserver.h"
#include "host/qrtGeneratedPicture.h"

namespace qrtplay {
namespace {

using Kind = Generator::Kind;
using Ranges = std::vector<std::pair<int, int>>;

/// Keeps the ranges of frames that are declared invalid.
class InvalidatedFrames final : public Observer {
public:
    explicit InvalidatedFrames(ExternalSegment& segment) { segment.getSubject()->addObserver(this); }
    ~InvalidatedFrames() override { stopObserving(); }

    void update(Subject*, NotificationHint const& hint) override {
        auto const* const invalidation = dynamic_cast<InvalidationHint const*>(&hint);
        ASSERT_TRUE(invalidation);
        ranges.emplace_back(invalidation->getStartFrame(), invalidation->getEndFrame());
    }

    Ranges ranges;
};

GeneratorSegment& asGenerator(SharedPtr<ExternalSegment> const& segment) {
    return dynamic_cast<GeneratorSegment&>(*segment);
}

TEST(GeneratorSegments, areOneForEachGeneratorInTheirOrder) {
    std::vector<Generator> generators;
    for (const Kind kind : {Kind::title, Kind::smpte_bars, Kind::solid_colour, Kind::counting_leader}) {
        generators.push_back(generatorOf(kind));
        generators.back().id = "generator-" + std::to_string(generators.size());
    }
    std::vector<std::string> ids;
    std::vector<bool> inMemory;
    for (auto const& segment : makeGeneratorSegments(generators)) {
        ids.emplace_back(segment->getId().c_str());
        inMemory.push_back(segment->isRamSegment());
    }
    EXPECT_THAT(ids, ::testing::ElementsAre("generator-1", "generator-2", "generator-3", "generator-4"));
    EXPECT_THAT(inMemory, ::testing::ElementsAre(true, false, false, false));
    EXPECT_TRUE(makeGeneratorSegments({}).empty());
}

TEST(GeneratorSegments, keepNoPictureOfTheirOwn) {
    for (const Kind kind : {Kind::title, Kind::smpte_bars}) {
        const SharedPtr<ExternalSegment> segment = makeGeneratorSegment(generatorOf(kind));
        EXPECT_FALSE(segment->hasOwnBuffers());
        EXPECT_EQ(segment->getOwnRamBuffer(formatOf(8, 8)), nullptr);
        EXPECT_EQ(segment->getOwnTexture(1), 0u);
    }
}

TEST(GeneratorSegments, tellThatAllFramesOfAChangedGeneratorLookDifferent) {
    const SharedPtr<ExternalSegment> title = makeGeneratorSegment(titleOf("before"));
    InvalidatedFrames invalidated(*title);
    asGenerator(title).setText("after");
    EXPECT_EQ(invalidated.ranges, (Ranges{{0, 239}}));
    asGenerator(title).setColour({1, 0, 0, 1});
    EXPECT_EQ(invalidated.ranges, (Ranges{{0, 239}, {0, 239}}));
    EXPECT_EQ(asGenerator(title).generator().text, "after");
    EXPECT_EQ(asGenerator(title).generator().colour, (std::vector<double>{1, 0, 0, 1}));
}

TEST(GeneratorSegments, sayNothingOfAChangeThatCannotBeSeen) {
    const SharedPtr<ExternalSegment> title = makeGeneratorSegment(titleOf("same"));
    InvalidatedFrames ofTitle(*title);
    asGenerator(title).setText("same");
    asGenerator(title).setColour({1, 1, 1, 1});
    EXPECT_EQ(ofTitle.ranges, Ranges());

    const SharedPtr<ExternalSegment> bars = makeGeneratorSegment(generatorOf(Kind::smpte_bars));
    InvalidatedFrames ofBars(*bars);
    asGenerator(bars).setText("bars have none");
    asGenerator(bars).setColour({1, 0, 0, 1});
    EXPECT_EQ(ofBars.ranges, Ranges());
}

TEST(GeneratorSegments, nameFramesThatAHintCanHold) {
    for (const auto& [frameCount, last] : std::vector<std::pair<int64, int>>{{1, 0}, {0, 0}, {INT64_MAX, INT_MAX}}) {
        Generator generator = titleOf("before");
        generator.frameCount = frameCount;
        const SharedPtr<ExternalSegment> segment = makeGeneratorSegment(generator);
        InvalidatedFrames invalidated(*segment);
        asGenerator(segment).setText("after");
        EXPECT_EQ(invalidated.ranges, (Ranges{{0, last}}));
    }
}

TEST(GeneratorSegments, renderTheirNewStateAfterAChange) {
    const auto segment = makeGeneratorSegment(titleOf("before"));
    asGenerator(segment).setText("after");
    GeneratedPicture picture = fill(titleOf(""), 160, 90);
    ASSERT_TRUE(segment
                    ->renderToRam(picture.pixels.data(), static_cast<unsigned int>(picture.pixels.size()),
                                  formatOf(160, 90), Time(0, Rational(24, 1)))
                    .success());
    EXPECT_EQ(picture, fill(titleOf("after"), 160, 90));
}

}  // namespace
}  // namespace qrtplay
