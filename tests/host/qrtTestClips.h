#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "media/qrtAv.h"
#include "media/qrtMediaFile.h"
#include "media/qrtVideoDecoder.h"

namespace qrtplay {

/// The path of a clip that make-test-clips.sh has made.
std::string clipPath(std::string const& name);

/// The frames of a clip as FFmpeg's own program decodes them: NAME.raw beside NAME.EXTENSION.
class ReferenceFrames final {
public:
    /// `clip`: whose frames, for example "bframes.mp4".
    ReferenceFrames(std::string const& clip, AVPixelFormat format, int width, int height);

    [[nodiscard]] int64 count() const;
    /// The bytes of a frame, planes one after the other, rows without padding.
    [[nodiscard]] std::vector<unsigned char> frame(int64 number) const;

private:
    size_t m_frameSize;
    std::vector<unsigned char> m_bytes;
};

/// The bytes of a picture in the order of `ReferenceFrames::frame`.
std::vector<unsigned char> bytesOf(AVFrame const& picture);

/// A clip that is expected to open; a failure is a failure of the test, and `decoder` is then null.
struct OpenClip {
    explicit OpenClip(std::string const& name) : OpenClip(at(clipPath(name))) {}
    [[nodiscard]] static OpenClip at(std::string const& path);

    [[nodiscard]] VideoFacts const& facts() const { return file->facts(); }
    Outcome picture(int64 frame, FramePtr& picture);
    /// The frame's bytes; empty when it fails.
    std::vector<unsigned char> bytes(int64 frame);

    std::shared_ptr<MediaFile const> file;
    std::unique_ptr<VideoDecoder> decoder;
    std::map<int64, FramePtr> passed;  ///< what the last call came by
    std::set<int64> told;              ///< what any call came by

private:
    OpenClip() = default;
};

}  // namespace qrtplay
