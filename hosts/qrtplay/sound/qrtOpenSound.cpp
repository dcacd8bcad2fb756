#include "sound/qrtOpenSound.h"

#include "sound/qrtResampledSource.h"
#include "sound/qrtSoundFile.h"
#include "sound/qrtSoundFileSource.h"

namespace qrtplay {

Outcome openSound(std::string const& path, std::optional<ExactTime> const& zero, int sampleRate, int channels,
                  std::unique_ptr<SoundSource>& source) {
    source.reset();
    std::shared_ptr<SoundFile const> file;
    if (Outcome outcome = SoundFile::open(path, file); outcome.failed()) return outcome;
    if (!file->facts().hasSound) return Outcome();

    std::unique_ptr<SoundFileSource> decoded;
    if (Outcome outcome = SoundFileSource::open(file, zero, channels, decoded); outcome.failed()) return outcome;
    if (file->facts().sampleRate == sampleRate)
        source = std::move(decoded);
    else
        source = std::make_unique<ResampledSource>(std::move(decoded), file->facts().sampleRate, sampleRate, channels);
    return Outcome();
}

}  // namespace qrtplay
