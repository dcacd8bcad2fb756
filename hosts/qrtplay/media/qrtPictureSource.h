#pragma once

#include <functional>
#include <string>

#include "media/qrtAv.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// Pictures by number: a media file, an image sequence, or a slate that stands for one that is missing.
///
/// Threading: `facts` is constant and may be read by any thread; `frame` is called by one thread at a time.
class PictureSource {
public:
    /// Takes every picture that is decoded on the way to the one asked for, that one included.
    using Keep = std::function<void(int64 frame, FramePtr const& picture)>;
    /// Asked between two pictures: whether the one asked for is still wanted.
    using IsWanted = std::function<bool()>;
    enum class Result { picture, failure, given_up };

    virtual ~PictureSource() = default;

    [[nodiscard]] virtual VideoFacts const& facts() const noexcept = 0;
    /// What messages call it.
    [[nodiscard]] virtual std::string const& path() const noexcept = 0;
    /// Sets `picture` to frame number `frame`, which lies inside; `why` names the file and the frame after a failure.
    [[nodiscard]] virtual Result frame(int64 frame, Keep const& keep, IsWanted const& isWanted, FramePtr& picture,
                                       std::string& why) = 0;
};

}  // namespace qrtplay
