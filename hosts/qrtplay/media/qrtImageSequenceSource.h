#pragma once

#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtPictureSource.h"
#include "timeline/qrtMediaReference.h"

namespace qrtplay {

/// Pictures that are files of their own, one a frame.
///
/// A frame whose file is not there shows as a marked picture that names it; one whose file cannot be decoded fails.
class ImageSequenceSource final : public PictureSource {
public:
    /// Takes the facts from the first file that exists. Failures name it, or the sequence when there is none.
    static Outcome open(ImageSequenceName const& name, std::unique_ptr<PictureSource>& source);
    /// One picture, which is a sequence of a single frame.
    static Outcome openFile(std::string const& path, std::unique_ptr<PictureSource>& source);

    [[nodiscard]] VideoFacts const& facts() const noexcept override { return m_facts; }
    [[nodiscard]] std::string const& path() const noexcept override { return m_path; }
    [[nodiscard]] Result frame(int64 frame, Keep const& keep, IsWanted const& isWanted, FramePtr& picture,
                               std::string& why) override;
    [[nodiscard]] std::unique_ptr<PictureSource> twin() const override;
    [[nodiscard]] size_t mostTwins() const noexcept override;

private:
    ImageSequenceSource() = default;
    ImageSequenceSource(ImageSequenceSource const&) = default;

    [[nodiscard]] std::string pathOf(int64 frame) const;

    ImageSequenceName m_name;
    std::string m_path;
    bool m_isSingle = false;  // the one file is `m_path`
    VideoFacts m_facts;
};

}  // namespace qrtplay
