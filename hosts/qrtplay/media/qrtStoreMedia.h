#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "base/qrtExactTime.h"
#include "base/qrtKit.h"
#include "base/qrtOutcome.h"
#include "media/qrtPictureSource.h"

namespace qrtplay {

/// Which of two pieces of work goes first: the one with the higher number.
using Urgency = uint64;
/// Of work that nobody waits for.
constexpr Urgency decodingAhead = 0;

/// One source of the pictures of a media, and what it is doing.
struct StoreSource {
    static constexpr int64 nowhere = INT64_MIN;

    explicit StoreSource(std::unique_ptr<PictureSource> source) : pictures(std::move(source)) {}

    const std::unique_ptr<PictureSource> pictures;
    uint64 lastUse = 0;
    bool isAwake = false;    ///< holds memory and an open file
    int64 passed = nowhere;  ///< the last frame that it has come by, from where it can go on
    bool isBusy = false;     ///< what follows has a meaning only then
    int64 target = nowhere;  ///< `nowhere` while it is put to rest
    Urgency urgency = decodingAhead;
    uint64 generation = 0;             ///< of what the store kept when the work began
    std::atomic<bool> givesUp{false};  ///< has been told to stop; the only field that is read without the store's lock
};

/// What the picture store knows of one media: whether it is open, and which of its sources should make a picture.
///
/// Threading: none of its own; the store's lock guards it.
class StoreMedia final {
public:
    enum class State { closed, opening, open, failed };

    [[nodiscard]] State state() const noexcept { return m_state; }
    void beginToOpen() noexcept { m_state = State::opening; }
    void finishOpening(Outcome const& outcome, std::unique_ptr<PictureSource> source);

    // When opening has failed.
    [[nodiscard]] Outcome const& failure() const noexcept { return m_failure; }

    // When open.
    [[nodiscard]] PictureSource const& pictures() const noexcept { return *m_sources.front()->pictures; }
    [[nodiscard]] int64 frameAt(ExactTime const& time) const noexcept;
    [[nodiscard]] bool holds(int64 frame) const noexcept;
    [[nodiscard]] std::vector<std::unique_ptr<StoreSource>> const& sources() const noexcept { return m_sources; }

    /// How much memory a picture has to be expected to take.
    [[nodiscard]] size_t expectedBytes() const noexcept { return m_expectedBytes; }
    void notePicture(size_t bytes) noexcept { m_expectedBytes = std::max(m_expectedBytes, bytes); }
    /// Frames that were tried in vain are not decoded ahead again.
    [[nodiscard]] bool hasFailed(int64 frame) const { return m_failedFrames.contains(frame); }
    void noteFailure(int64 frame) { m_failedFrames.insert(frame); }
    void forgetFailures() { m_failedFrames.clear(); }

    /// Whether work that is under way will come by a frame; it then gets the urgency of who waits for it.
    bool isBeingDecoded(int64 frame, Urgency urgency);
    /// The idle source that should decode a frame; null when it is better to wait for a busy one, which then is told to
    /// give up if what it does is less urgent.
    [[nodiscard]] StoreSource* choose(int64 frame, Urgency urgency);
    /// Notes that a source begins to decode a frame.
    static void begin(StoreSource& source, int64 frame, Urgency urgency);

private:
    struct Way;

    [[nodiscard]] bool isAboutToBeReached(int64 frame) const;
    StoreSource* addTwin();

    State m_state = State::closed;
    Outcome m_failure;
    std::vector<std::unique_ptr<StoreSource>> m_sources;
    size_t m_mostSources = 1;
    size_t m_expectedBytes = 0;
    std::unordered_set<int64> m_failedFrames;
};

}  // namespace qrtplay
