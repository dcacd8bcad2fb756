// A host that renders a stretch of the timeline itself: a caption over frames 2 to 4. The player keeps what was
// rendered, until the host says that it no longer holds.
//
//   external_segment_host
#include <QGuiApplication>
#include <cstdlib>
#include <iostream>

#include "common/bar_graph_engine.h"
#include "common/check.h"
#include "foundation/core/qrtNotificationHint.h"
#include "foundation/core/qrtSubject.h"
#include "player/qrtPlayer.h"

using namespace examples;

namespace {

/// What the host renders.
class Caption final : public ExternalSegment {
public:
    [[nodiscard]] String const& getId() const override { return m_id; }
    [[nodiscard]] Subject* getSubject() override { return &m_subject; }
    [[nodiscard]] bool isRamSegment() const override { return false; }
    // The picture goes where the caller wants it, and nowhere else.
    [[nodiscard]] bool hasOwnBuffers() const override { return false; }
    [[nodiscard]] void* getOwnRamBuffer(VideoBufferResolution const&) override { return nullptr; }
    [[nodiscard]] unsigned int getOwnTexture(unsigned int) override { return 0; }

    /// Player thread, its context current.
    Status renderToTexture(unsigned int texture, unsigned int rectangle, VideoBufferResolution const& resolution,
                           Time const& time) override {
        if (rectangle == 0) return Status::invalid_argument;
        std::cout << " renders " << time.getNbTicks();
        fill(texture, {0, 0, resolution.getWidth(), resolution.getHeight()}, {0, 0, 0});
        fill(texture, {0, 0, resolution.getWidth(), resolution.getHeight() / 4}, {1, 1, 1});
        return Status();
    }
    Status renderToRam(void*, unsigned int, VideoBufferResolution const&, Time const&) override {
        return Status::invalid_argument;
    }

private:
    const String m_id = "caption";
    Subject m_subject;
};

/// What the graph engine has to know: which segment stands where. It may be handed another object than the host's own,
/// which it knows by the identifier.
class CaptionedClip final : public Clip {
public:
    using Clip::Clip;
    [[nodiscard]] bool isCaptioned(int64 frame) const { return frame >= 2 && frame <= 4; }
};

class CaptionedGraphEngine final : public BarGraphEngine {
public:
    [[nodiscard]] static SharedPtr<GraphEngineInterface> create() {
        return SharedPtr<GraphEngineInterface>(new CaptionedGraphEngine);
    }

    Status setComposition(SharedPtr<Composition> const& composition, List<SharedPtr<ExternalSegment>> const& segments,
                          VideoBufferResolution const& resolution, Rational const& rate) override {
        m_caption.reset();
        for (auto const& segment : segments) {
            if (segment->getId() == String("caption")) m_caption = segment;
        }
        return BarGraphEngine::setComposition(composition, segments, resolution, rate);
    }

    Status renderFrame(VideoBufferResolution const& resolution, int64 frame, uint32 texture) override {
        const SharedPtr<CaptionedClip> clip = dynamicPtrCast<CaptionedClip>(m_composition);
        if (!clip || !m_caption || !clip->isCaptioned(frame)) {
            return BarGraphEngine::renderFrame(resolution, frame, texture);
        }
        constexpr unsigned int isRectangle = 1;
        return m_caption->renderToTexture(texture, isRectangle, resolution, Time(frame, frameRate));
    }

private:
    SharedPtr<ExternalSegment> m_caption;  // player thread
};

void fetchAll(Player& player, int64 numFrames, char const* when) {
    std::cout << when << ":" << std::flush;
    for (int64 frame = 0; frame < numFrames; ++frame) {
        SharedPtr<VideoBuffer> buffer;
        check(player.getVideoBuffer(frame, buffer));
    }
    std::cout << std::endl;
}

}  // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    constexpr int64 numFrames = 8;

    const SharedPtr<Player> player =
        Player::create(VideoBufferResolution(640, 360, 4, 8, false), CaptionedGraphEngine::create);
    constexpr uint64 mebibytes = 16;
    check(player->setExternalSegmentCacheConstraint(Resource::Type::vram, ResourceConstraint::ResizeMode::fixed, 0,
                                                    mebibytes));
    check(player->initialize(nullptr, nullptr));

    const SharedPtr<Composition> clip(new CaptionedClip(numFrames));
    const SharedPtr<ExternalSegment> caption(new Caption);
    List<SharedPtr<ExternalSegment>> segments;
    segments.append(caption);
    check(player->setComposition(clip, segments));
    fetchAll(*player, numFrames, "the first time");

    check(player->updateComposition(clip, "anything but the caption"));  // drops the frames that the player holds
    fetchAll(*player, numFrames, "the second time");

    caption->getSubject()->notify(InvalidationHint(3, 3));  // drops them too, and what the caption was in frame 3
    fetchAll(*player, numFrames, "with another caption in frame 3");

    check(player->uninitialize());
    return EXIT_SUCCESS;
}
