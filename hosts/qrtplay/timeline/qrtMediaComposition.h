#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "foundation/composition/qrtComposition.h"
#include "foundation/core/qrtSharedPtr.h"
#include "base/qrtKit.h"
#include "media/qrtMediaFile.h"
#include "base/qrtOutcome.h"

namespace qrtplay {

/// A timeline that is one media file from its first frame to its last: it begins at time 0 and counts in frames of the clip.
///
/// Threading: any thread may call any method.
class MediaComposition final : public Composition {
public:
    /// Failures name the file.
    static Outcome open(std::string const& path, SharedPtr<MediaComposition>& composition);

    Status getStartTime(Time& start) const override;
    Status getDuration(Time& duration) const override;

    [[nodiscard]] std::shared_ptr<MediaFile const> const& file() const noexcept { return m_file; }

    /// A `Status` carries no text, so the graph engine leaves here why an output frame failed. Only the last few hundred
    /// are kept.
    void noteFailure(int64 frame, std::string const& why);
    /// What was noted last for the frame; empty when nothing was.
    [[nodiscard]] std::string failureOf(int64 frame) const;

private:
    explicit MediaComposition(std::shared_ptr<MediaFile const> file) : m_file(std::move(file)) {}

    const std::shared_ptr<MediaFile const> m_file;
    mutable std::mutex m_mutex;
    std::map<int64, std::string> m_failures;  // under m_mutex
};

}  // namespace qrtplay
