#pragma once

#include <QSize>
#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "media/qrtPictureSource.h"

namespace qrtplay {

/// One still picture for any frame from 0 on: what is shown in the place of a media that cannot be.
class SlateSource final : public PictureSource {
public:
    SlateSource(std::string path, FramePtr picture, Rational const& rate);

    /// `facts().frameCount` is `endlessFrameCount`.
    [[nodiscard]] VideoFacts const& facts() const noexcept override { return m_facts; }
    [[nodiscard]] std::string const& path() const noexcept override { return m_path; }
    [[nodiscard]] Result frame(int64 frame, Keep const& keep, IsWanted const& isWanted, FramePtr& picture,
                               std::string& why) override;

private:
    const std::string m_path;
    const FramePtr m_picture;
    VideoFacts m_facts;
};

/// A slate that says what is missing and why. A size that pictures cannot have becomes the nearest that they can, an
/// empty one 1920 x 1080; a rate that is not positive becomes 24. Null when memory does not suffice.
[[nodiscard]] std::unique_ptr<PictureSource> makeMissingSlate(std::string const& name, std::string const& reason,
                                                              QSize size, Rational const& rate);

}  // namespace qrtplay
