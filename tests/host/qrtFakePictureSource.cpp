#include "host/qrtFakePictureSource.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

#include "media/qrtPictureCache.h"

namespace qrtplay {

namespace {

FramePtr fakePicture(int64 number) {
    AvPtr<AVFrame> frame(av_frame_alloc());
    frame->width = 64;
    frame->height = 64;
    frame->format = AV_PIX_FMT_GRAY8;
    frame->pts = number;
    EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
    return FramePtr(frame.release(), AvDeleter());
}

class FakeSource final : public PictureSource {
public:
    explicit FakeSource(std::shared_ptr<FakeMedia> media) : m_media(std::move(media)) {
        m_facts.width = m_facts.height = 64;
        m_facts.frameRate = Rational(25, 1);
        m_facts.frameCount = m_media->shape().frames;
    }

    [[nodiscard]] VideoFacts const& facts() const noexcept override { return m_facts; }
    [[nodiscard]] std::string const& path() const noexcept override { return m_media->shape().path; }
    [[nodiscard]] int64 runBegin(int64 frame) const noexcept override { return frame - frame % m_media->shape().group; }
    [[nodiscard]] std::unique_ptr<PictureSource> twin() const override { return m_media->makeSource(); }
    [[nodiscard]] size_t mostTwins() const noexcept override { return m_media->shape().mostTwins; }

    [[nodiscard]] Result frame(int64 frame, Keep const& keep, IsWanted const& isWanted, FramePtr& picture,
                               std::string& why) override {
        EXPECT_FALSE(m_isInUse.exchange(true)) << "two threads use one source";
        const Result result = run(frame, keep, isWanted, picture, why);
        m_isInUse = false;
        return result;
    }
    void rest() override {
        EXPECT_FALSE(m_isInUse) << "put to rest while it is in use";
        m_passed = -1;
        m_media->noteRest();
    }

private:
    Result run(int64 frame, Keep const& keep, IsWanted const& isWanted, FramePtr& picture, std::string& why) {
        if (m_passed >= frame || m_passed < runBegin(frame)) m_passed = runBegin(frame) - 1;
        while (m_passed < frame) {
            if (!isWanted(frame)) return Result::given_up;
            const int64 next = m_passed + 1;
            m_media->decode(next, [&] { return isWanted(frame); });
            m_passed = next;
            if (m_media->shape().broken.count(next) != 0) continue;
            picture = fakePicture(next);
            keep(next, picture);
        }
        if (m_media->shape().broken.count(frame) == 0) return Result::picture;
        picture.reset();
        why = path() + ": frame " + std::to_string(frame) + ": is broken";
        return Result::failure;
    }

    const std::shared_ptr<FakeMedia> m_media;
    VideoFacts m_facts;
    int64 m_passed = -1;
    std::atomic<bool> m_isInUse{false};
};

}  // namespace

std::unique_ptr<PictureSource> FakeMedia::makeSource() {
    const std::lock_guard lock(m_mutex);
    ++m_sourcesMade;
    return std::make_unique<FakeSource>(shared_from_this());
}

void FakeMedia::block(int64 frame) {
    const std::lock_guard lock(m_mutex);
    m_blocked.insert(frame);
}

void FakeMedia::release(int64 frame) {
    const std::lock_guard lock(m_mutex);
    m_blocked.erase(frame);
    m_changed.notify_all();
}

void FakeMedia::waitUntilBlockedAt(int64 frame) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_waiting.count(frame) != 0; });
}

void FakeMedia::waitUntilUnwantedAt(int64 frame) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_unwanted.count(frame) != 0; });
}

void FakeMedia::waitUntilDecoded(int64 frame) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return std::find(m_decoded.begin(), m_decoded.end(), frame) != m_decoded.end(); });
}

std::vector<int64> FakeMedia::decoded() const {
    const std::lock_guard lock(m_mutex);
    return m_decoded;
}

size_t FakeMedia::sourcesMade() const {
    const std::lock_guard lock(m_mutex);
    return m_sourcesMade;
}

size_t FakeMedia::rests() const {
    const std::lock_guard lock(m_mutex);
    return m_rests;
}

void FakeMedia::decode(int64 frame, std::function<bool()> const& isWanted) {
    // Nobody tells a source that its picture is no longer wanted; it has to ask.
    constexpr auto askEvery = std::chrono::milliseconds(1);
    std::unique_lock lock(m_mutex);
    while (m_blocked.count(frame) != 0) {
        m_waiting.insert(frame);
        if (!isWanted()) m_unwanted.insert(frame);
        m_changed.notify_all();
        m_changed.wait_for(lock, askEvery);
    }
    m_waiting.erase(frame);
    m_unwanted.erase(frame);
    m_decoded.push_back(frame);
    m_changed.notify_all();
}

void FakeMedia::noteRest() {
    const std::lock_guard lock(m_mutex);
    ++m_rests;
}

size_t fakePictureBytes() {
    return PictureCache::bytesOf(*fakePicture(0));
}

int64 numberOf(FramePtr const& picture) {
    return picture ? picture->pts : -1;
}

}  // namespace qrtplay
