#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "harness/qrtHostContext.h"
#include "harness/qrtTestResolutions.h"
#include "harness/qrtTestTexture.h"
#include "qrtExternalSegmentCacheManager.h"

namespace QRT_0_81 {

using ResizeMode = ResourceConstraint::ResizeMode;
using Pixel = TestTexture::Pixel;

inline const VideoBufferResolution oneMebibyte(512, 512, 4, 8, false);
inline const VideoBufferResolution quarterMebibyte(256, 256, 4, 8, false);
inline constexpr auto otherType = static_cast<Resource::Type>(5);

using Block = std::vector<unsigned char>;

[[nodiscard]] inline Block blockOf(VideoBufferResolution const& resolution, unsigned char value) {
    return Block(resolution.getBufferSize(), value);
}

/// A frame cache of external segments, on a thread with an OpenGL context.
class ExternalSegmentCacheFixture : public ::testing::Test {
protected:
    /// Budgets in mebibytes; the other two values stay 0.
    void setBudget(Resource::Type type, size_t budget) {
        ASSERT_EQ(manager.setConstraint(type, ResizeMode::fixed, 0, budget).get(), Status::ok);
    }

    Status putRam(char const* id, int64 frame, unsigned char value = 1, VideoBufferResolution const& format = small) {
        const Block block = blockOf(format, value);
        return manager.putRamFrame(id, frame, format, block.data(), block.size());
    }
    /// Type of the look-up; on success the block must hold `value` throughout.
    int getRam(char const* id, int64 frame, unsigned char value = 1, VideoBufferResolution const& format = small) {
        Block block = blockOf(format, 0xEE);
        const Status status = manager.getRamFrame(id, frame, format, block.data(), block.size());
        if (status.failure()) return status.get();
        EXPECT_EQ(block, blockOf(format, value));
        return status.get();
    }

    Status putTexture(char const* id, int64 frame, Pixel const& colour = {1, 2, 3, 4},
                      VideoBufferResolution const& format = small, bool rectangle = true) {
        TestTexture texture(host.gl(), rectangle, format.getWidth(), format.getHeight());
        texture.fill(colour);
        return manager.putTextureFrame(id, frame, format, rectangle ? 1 : 0, texture.name());
    }
    int getTexture(char const* id, int64 frame, Pixel const& colour = {1, 2, 3, 4},
                   VideoBufferResolution const& format = small, bool rectangle = true) {
        const TestTexture texture(host.gl(), rectangle, format.getWidth(), format.getHeight());
        const Status status = manager.getTextureFrame(id, frame, format, rectangle ? 1 : 0, texture.name());
        if (status.failure()) return status.get();
        EXPECT_EQ(texture.pixel(0, 0), colour);
        EXPECT_EQ(texture.pixel(format.getWidth() - 1, format.getHeight() - 1), colour);
        return status.get();
    }

    HostContext host;
    const SharedPtr<FramebufferReaper> reaper = FramebufferReaper::create();
    ExternalSegmentCacheManager manager{reaper};
};

}  // namespace QRT_0_81
