#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "sound/qrtBlockedSoundSource.h"
#include "sound/qrtChannelMapper.h"
#include "sound/qrtSoundFile.h"
#include "sound/qrtSoundRun.h"

namespace qrtplay {

/// The sound of a media file at the file's own sample rate. What the file says is not to be heard, such as the delay of
/// its encoder, is left out; gaps between its timestamps are silent, and so is what cannot be decoded. Of all that
/// `read` finds amiss only the first is told.
///
/// Threading: one thread at a time.
class SoundFileSource final : public BlockedSoundSource {
public:
    /// `file`:     has sound.
    /// `zero`:     when sample 0 is heard, in the file's own counting, to the nearest sample; without: when the sound
    /// begins. `channels`: of the output, 1 to 8. Failures name the file.
    static Outcome open(std::shared_ptr<SoundFile const> const& file, std::optional<ExactTime> const& zero,
                        int channels, std::unique_ptr<SoundFileSource>& source);

protected:
    Outcome makeBlock(int64 first, float* samples) override;

private:
    SoundFileSource(std::shared_ptr<SoundFile const> file, int64 zero, int channels);

    Outcome decode(int64 from, int64 until, float* samples);
    [[nodiscard]] bool copyHeard(int64 from, int64 until, float* samples);
    [[nodiscard]] int64 warmUp() const;
    [[nodiscard]] std::string failureAt(int64 position) const;

    const std::shared_ptr<SoundFile const> m_file;
    const int64 m_zero;  // position of sample 0
    std::unique_ptr<SoundRun> m_run;
    ChannelMapper m_mapper;
    std::vector<float> m_mapped;
    bool m_failureTold = false;
};

}  // namespace qrtplay
