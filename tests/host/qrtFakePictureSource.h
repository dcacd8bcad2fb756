#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "base/qrtKit.h"
#include "media/qrtPictureSource.h"

namespace qrtplay {

/// A media that exists in a test only: its pictures carry their numbers, it remembers what was decoded, and it stops
/// where it is told to. Its twins share it.
///
/// Threading: any thread may call any method.
class FakeMedia final : public std::enable_shared_from_this<FakeMedia> {
public:
    /// Fixed before the first use.
    struct Shape {
        std::string path = "fake.mov";
        int64 frames = 1000;
        int64 group = 1;  ///< decoding begins at multiples of this
        size_t mostTwins = 1;
        std::set<int64> broken{};
    };

    explicit FakeMedia(Shape shape) : m_shape(std::move(shape)) {}

    [[nodiscard]] Shape const& shape() const noexcept { return m_shape; }
    [[nodiscard]] std::unique_ptr<PictureSource> makeSource();

    /// From now on whoever begins to decode the frame waits.
    void block(int64 frame);
    void release(int64 frame);
    /// Returns when somebody waits at the frame.
    void waitUntilBlockedAt(int64 frame);
    /// Returns when who waits at the frame has been told that its picture is no longer wanted.
    void waitUntilUnwantedAt(int64 frame);
    /// Returns when the frame has been decoded.
    void waitUntilDecoded(int64 frame);
    /// The frames that were decoded, in the order in which that was done.
    [[nodiscard]] std::vector<int64> decoded() const;
    [[nodiscard]] size_t sourcesMade() const;
    [[nodiscard]] size_t rests() const;

    // For the sources.
    void decode(int64 frame, std::function<bool()> const& isWanted);
    void noteRest();

private:
    const Shape m_shape;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    // Under m_mutex.
    std::set<int64> m_blocked;
    std::set<int64> m_waiting;
    std::set<int64> m_unwanted;
    std::vector<int64> m_decoded;
    size_t m_sourcesMade = 0;
    size_t m_rests = 0;
};

/// How much memory a picture of a fake media takes.
size_t fakePictureBytes();
/// The number of a fake picture; -1 without one.
int64 numberOf(FramePtr const& picture);

}  // namespace qrtplay
