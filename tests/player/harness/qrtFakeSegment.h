#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "foundation/core/qrtExternalSegment.h"
#include "foundation/core/qrtSharedPtr.h"
#include "foundation/core/qrtSubject.h"

namespace QRT_0_81 {

/// A host's segment that really renders: into textures with OpenGL, into memory byte by byte. Formats of four channels
/// of 8 bits only. Keeps a journal of what it was asked.
///
/// The picture is of one colour: red is the frame number, green the segment's tag, blue its revision, alpha is opaque.
class FakeSegment final : public ExternalSegment {
public:
    struct Traits {
        std::uint8_t tag = 0;
        bool isRam = false;
        bool hasOwnBuffers = false;  ///< the picture stays in the segment's own storage; the caller's is not touched
        bool hasSubject = true;
    };
    using Pixel = std::vector<int>;

    FakeSegment(char const* id, Traits const& traits);
    ~FakeSegment() override;
    [[nodiscard]] static SharedPtr<FakeSegment> create(char const* id, Traits const& traits) {
        return SharedPtr<FakeSegment>(new FakeSegment(id, traits));
    }

    // What tests ask and set
    /// The colour of a frame in the present revision.
    [[nodiscard]] Pixel pixelOf(int64 frame) const;
    [[nodiscard]] std::vector<std::string> journal() const;
    void clearJournal();
    /// The frames rendered so far, into textures and memory alike.
    [[nodiscard]] std::vector<int64> renderedFrames() const;
    void callBeforeRender(std::function<void(int64)> hook);

    std::atomic<int> revision{0};
    std::atomic<int> renderStatus{0};        ///< the type that the render operations answer with
    mutable std::atomic<int> numIdCalls{0};  ///< how often `getId` was called
    Subject subject;

    // ExternalSegment
    [[nodiscard]] String const& getId() const override;
    [[nodiscard]] Subject* getSubject() override;
    [[nodiscard]] bool isRamSegment() const override;
    [[nodiscard]] bool hasOwnBuffers() const override;
    [[nodiscard]] void* getOwnRamBuffer(VideoBufferResolution const& resolution) override;
    [[nodiscard]] unsigned int getOwnTexture(unsigned int rectangle) override;
    Status renderToTexture(unsigned int texture, unsigned int rectangle, VideoBufferResolution const& resolution,
                           Time const& time) override;
    Status renderToRam(void* buffer, unsigned int size, VideoBufferResolution const& resolution,
                       Time const& time) override;

private:
    void note(std::string const& entry) const;
    /// Notes the frame and runs the hook; the scripted status.
    Status beginRender(std::string const& entry, int64 frame);

    const String m_id;
    const Traits m_traits;
    unsigned int m_ownTexture = 0;           // rendering thread
    std::vector<unsigned char> m_ownMemory;  // rendering thread
    mutable std::mutex m_mutex;
    mutable std::vector<std::string> m_journal;  // under m_mutex
    std::vector<int64> m_renderedFrames;         // under m_mutex
    std::function<void(int64)> m_beforeRender;   // under m_mutex
};

}  // namespace QRT_0_81
