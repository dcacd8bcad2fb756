#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtAv.h"
#include "media/qrtVideoFacts.h"

namespace qrtplay {

/// Pictures by number: a media file, an image sequence, or a slate that stands for one that is missing.
///
/// Threading: `frame` and `rest` are called by one thread at a time; everything else is constant, and any thread may
/// ask.
class PictureSource {
public:
    /// Takes every picture that is decoded on the way to the one asked for, that one included.
    using Keep = std::function<void(int64 frame, FramePtr const& picture)>;
    /// Asked between two pictures: whether a frame is wanted. When the one asked for no longer is, the work is given
    /// up; others on the way to it may be left out, and are, where it saves work.
    using IsWanted = std::function<bool(int64 frame)>;
    enum class Result { picture, failure, given_up };

    virtual ~PictureSource() = default;

    [[nodiscard]] virtual VideoFacts const& facts() const noexcept = 0;
    /// What messages call it.
    [[nodiscard]] virtual std::string const& path() const noexcept = 0;
    /// Sets `picture` to frame number `frame`, which lies inside; `why` names the file and the frame after a failure.
    /// After it has given up, asking again goes on where it was.
    [[nodiscard]] virtual Result frame(int64 frame, Keep const& keep, IsWanted const& isWanted, FramePtr& picture,
                                       std::string& why) = 0;

    /// The first of the frames that have to be decoded for `frame` when decoding starts afresh; `frame` itself where
    /// each picture stands alone.
    [[nodiscard]] virtual int64 runBegin(int64 frame) const noexcept { return frame; }
    /// Another source of the same pictures, which works beside this one; null when there is none to be had.
    [[nodiscard]] virtual std::unique_ptr<PictureSource> twin() const { return nullptr; }
    /// How many twins, this one included, are worth having.
    [[nodiscard]] virtual size_t mostTwins() const noexcept { return 1; }
    /// Lets go of memory and of open files until the next picture is asked for.
    virtual void rest() {}
};

}  // namespace qrtplay
