#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "harness/qrtExternalSegmentCacheFixture.h"
#include "harness/qrtFakeSegment.h"
#include "qrtExternalSegmentWrapper.h"

namespace QRT_0_81 {

using Frames = std::vector<int64>;
using Journal = std::vector<std::string>;

inline const Rational rate(24, 1);
inline constexpr FakeSegment::Traits textureTraits{5, false, false, true};
inline constexpr FakeSegment::Traits ramTraits{6, true, false, true};
inline constexpr FakeSegment::Traits ownTextureTraits{7, false, true, true};
inline constexpr FakeSegment::Traits ownMemoryTraits{8, true, true, true};

[[nodiscard]] inline Block filledWith(Pixel const& pixel) {
    Block block(smallSize);
    for (size_t i = 0; i < block.size(); ++i)
        block[i] = static_cast<unsigned char>(pixel[i % 4]);
    return block;
}

/// A wrapper around a segment that a test chooses, in front of a frame cache, on a thread with an OpenGL context.
class ExternalSegmentWrapperFixture : public ::testing::Test {
protected:
    void wrap(FakeSegment::Traits const& traits, char const* id = "clip") {
        wrapper.reset();
        segment = FakeSegment::create(id, traits);
        wrapper = SharedPtr<ExternalSegment>(new ExternalSegmentWrapper(&manager, segment));
        segment->clearJournal();
    }
    void setBudget(Resource::Type type, size_t budget) {
        (void)manager.setConstraint(type, ResourceConstraint::ResizeMode::fixed, 0, budget);
    }
    void switchOn() {
        setBudget(Resource::Type::ram, 1);
        setBudget(Resource::Type::vram, 1);
    }

    int renderToTexture(int64 frame) {
        texture.fill(black);
        return wrapper->renderToTexture(texture.name(), 1, small, Time(frame, rate)).get();
    }
    int renderToRam(int64 frame, unsigned int size = smallSize) {
        block.assign(smallSize, 0);
        return wrapper->renderToRam(block.data(), size, small, Time(frame, rate)).get();
    }
    [[nodiscard]] Pixel pictureOf(int64 frame) const { return segment->pixelOf(frame); }

    HostContext host;
    ExternalSegmentCacheManager manager{FramebufferReaper::create()};
    SharedPtr<FakeSegment> segment;
    SharedPtr<ExternalSegment> wrapper;
    TestTexture texture{host.gl(), true, 16, 8};
    Block block;
};

}  // namespace QRT_0_81
