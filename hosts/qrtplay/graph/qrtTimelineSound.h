#pragma once

#include <memory>
#include <mutex>

#include "base/qrtKit.h"
#include "foundation/core/qrtSharedPtr.h"
#include "graph/qrtTimelineComposition.h"
#include "sound/qrtHostAudioFormat.h"
#include "sound/qrtSoundMixer.h"

namespace qrtplay {

/// The sound of a composition, in whatever format is asked for. Of media whose sound cannot be opened or decoded the
/// composition is told; it is silent, as is media without sound.
///
/// Threading: any thread may call any method; one request waits for the other.
class TimelineSound final {
public:
    explicit TimelineSound(SharedPtr<TimelineComposition> composition) : m_composition(std::move(composition)) {}

    /// Writes `count` samples of every channel, from sample `first` of the timeline on.
    void fill(HostAudioFormat const& format, int64 first, int64 count, char* bytes);

private:
    SoundMixer& mixerFor(HostAudioFormat const& format);

    const SharedPtr<TimelineComposition> m_composition;
    std::mutex m_mutex;
    // Under m_mutex.
    std::unique_ptr<SoundMixer> m_mixer;  // for the format asked for last
    int32 m_rate = 0;
    int m_channels = 0;
    std::vector<float> m_samples;
};

}  // namespace qrtplay
