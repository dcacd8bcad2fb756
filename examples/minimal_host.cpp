// A host without a window: has the frames of a composition rendered into memory, and prints the middle row of each.
//
//   minimal_host [FRAMES]
#include <QGuiApplication>
#include <cstdlib>
#include <iostream>

#include "common/bar_graph_engine.h"
#include "common/check.h"
#include "common/row_text.h"
#include "player/qrtPlayer.h"

using namespace examples;

namespace {

std::string middleRow(VideoBuffer const& buffer) {
    void* data = nullptr;
    check(buffer.getData(data));  // bottom row first
    const VideoBufferResolution resolution = buffer.getResolution();
    const uint64 offset = resolution.getRowSize() * static_cast<uint64>(resolution.getHeight() / 2);
    return rowText(static_cast<unsigned char const*>(data) + offset, resolution.getWidth());
}

}  // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);  // the player reaches the display through it
    const int64 numFrames = argc > 1 ? std::atoi(argv[1]) : 8;

    const SharedPtr<Player> player =
        Player::create(VideoBufferResolution(640, 360, 4, 8, false), BarGraphEngine::create);
    check(player->setRamOutputs(true));           // memory, not textures
    check(player->initialize(nullptr, nullptr));  // no context to share with

    const SharedPtr<Composition> composition(new Clip(numFrames));
    check(player->setComposition(composition, List<SharedPtr<ExternalSegment>>()));

    const Time start(0, frameRate);
    const Time duration(numFrames, frameRate);
    check(player->startProducing(
        PlayParams::create(start, start, duration, frameRate, 1, PlayParams::single, PlayParams::video_only)));

    for (int64 frame = 0; frame < numFrames; ++frame) {
        SharedPtr<VideoBuffer> buffer;  // lent until the last reference to it goes
        check(player->getVideoBuffer(frame, buffer));
        std::cout << "frame " << frame << ": " << middleRow(*buffer) << std::endl;
    }

    check(player->stopProducing());
    check(player->uninitialize());
    return EXIT_SUCCESS;
}
