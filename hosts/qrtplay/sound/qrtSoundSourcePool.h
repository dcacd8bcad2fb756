#pragma once

#include <functional>
#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtSoundSource.h"

namespace qrtplay {

/// The sound of the media of a timeline: opened when it is first asked for, the least recently used closed again.
///
/// Threading: one thread at a time.
class SoundSourcePool final {
public:
    /// Sets `source` to the sound of a media, or to null when it has none; failures name the media.
    using Open = std::function<Outcome(size_t media, std::unique_ptr<SoundSource>& source)>;

    static constexpr size_t mostOpen = 16;

    explicit SoundSourcePool(Open open) : m_open(std::move(open)) {}

    /// Null when the media has no sound or does not open; then it is not tried again.
    [[nodiscard]] SoundSource* get(size_t media);
    /// Remembers what is wrong with a media; only the first time for each.
    void noteFailure(size_t media, std::string const& why);
    /// One line each; they are told once.
    [[nodiscard]] std::vector<std::string> takeFailures();

private:
    struct Entry {
        size_t media;
        std::unique_ptr<SoundSource> source;
    };

    const Open m_open;
    std::list<Entry> m_entries;  // most recently used first
    std::set<size_t> m_silent;
    std::set<size_t> m_failed;
    std::vector<std::string> m_failures;  // not taken yet
};

}  // namespace qrtplay
