#pragma once

#include <string>
#include <vector>

#include "graph/qrtFrameCourse.h"
#include "media/qrtPictureStore.h"
#include "qrtClipPlayer.h"

namespace qrtplay {

/// The clip decoded as qrtplay's graph engine has it decoded, and converted as the plain loop does it: what is left of
/// the comparison without textures, rendering and read-back.
class DecodingUnderTest final : public ClipPlayer {
public:
    DecodingUnderTest(std::string const& path, size_t budgetInBytes);

    void play(int64 first, int64 last, Way way) override;
    void stop() override { m_step = 1; }
    FrameView frame(int64 number) override;

private:
    int64 m_step = 1;
    FrameCourse m_course;
    VideoFacts m_facts;
    AvPtr<SwsContext> m_scaler;
    std::vector<std::uint8_t> m_pixels;
    PictureStore m_pictures;
};

}  // namespace qrtplay
