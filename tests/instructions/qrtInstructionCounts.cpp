// The work whose instructions are counted. See README.md.
//   qrtInstructionCounts NAME    does the work of that name; what counts happens inside the function NAME
//   qrtInstructionCounts         prints the names, each with how often its work is done
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "harness/qrtEvictionScene.h"
#include "harness/qrtThreadlessEngine.h"

using namespace QRT_0_81;

// Callgrind collects inside these, which it knows by their names.
extern "C" {

[[gnu::noinline]] void cachedFetches(PlayerImpl& engine, int64 first, int64 count) {
    for (int64 frame = first; frame < first + count; ++frame) {
        SharedPtr<VideoBuffer> buffer;
        if (engine.getVideoBuffer(frame, buffer).failure()) throw std::logic_error("the frame is not cached");
    }
}

[[gnu::noinline]] void cachedFetchesProducing(PlayerImpl& engine, int64 first, int64 count) {
    cachedFetches(engine, first, count);
}

/// What playback by one frame asks of the search: the frame that is now missing, its arrival, and that there is no
/// other.
[[gnu::noinline]] void searches(PlayerImpl& engine, int64 current, int64 missing,
                                SharedPtr<VideoBuffer> const& buffer) {
    using Inspector = PlayerImplInspector;
    (void)Inspector::updateCurrentFrameNumber(engine, current);
    if (Inspector::nextFrameToProduce(engine) != missing) throw std::logic_error("another frame was missing");
    (void)Inspector::cachePut(engine, missing, buffer);
    if (Inspector::nextFrameToProduce(engine) != -1) throw std::logic_error("a frame is still missing");
}

[[gnu::noinline]] void evictionsOfOldest(EvictionScene& scene) {
    scene.evict();
}

[[gnu::noinline]] void evictionsOfNewest(EvictionScene& scene) {
    scene.evict();
}

}  // extern "C"

namespace {

constexpr int32 numHeadFrames = 1000;

void doCachedFetches() {
    ThreadlessEngine engine(numHeadFrames, 1001);
    engine.put(0, 999);
    cachedFetches(engine.engine(), 0, 1000);
}

void doCachedFetchesProducing() {
    ThreadlessEngine engine(numHeadFrames, 1001);
    engine.put(0, 999);
    engine.startProducing(0);
    for (int64 first = 0; first < 1000; first += 100) {
        cachedFetchesProducing(engine.engine(), first, 100);
        engine.discardCommands();
    }
}

void doSearches() {
    ThreadlessEngine engine(numHeadFrames, 1102);
    engine.put(0, numHeadFrames);
    engine.startProducing(0);
    for (int64 current = 1; current <= 100; ++current) {
        searches(engine.engine(), current, current + numHeadFrames, engine.newBuffer());
        engine.discardCommands();
    }
}

void doEvictions(EvictionScene::Evictable evictable, void (*evict)(EvictionScene&)) {
    EvictionScene scene(evictable);
    for (int i = 0; i < 10; ++i) {
        evict(scene);
        scene.restore();
    }
}

struct Work {
    char const* name;
    int count;
    void (*run)();
};

const Work works[] = {
    {"cachedFetches", 1000, doCachedFetches},
    {"cachedFetchesProducing", 1000, doCachedFetchesProducing},
    {"searches", 100, doSearches},
    {"evictionsOfOldest", 10, [] { doEvictions(EvictionScene::Evictable::oldest, evictionsOfOldest); }},
    {"evictionsOfNewest", 10, [] { doEvictions(EvictionScene::Evictable::newest, evictionsOfNewest); }},
};

}  // namespace

int main(int argc, char** argv) {
    for (Work const& work : works) {
        if (argc < 2) {
            std::printf("%s %d\n", work.name, work.count);
        } else if (argv[1] == std::string(work.name)) {
            work.run();
            return 0;
        }
    }
    return argc < 2 ? 0 : 2;
}
