#include "qrtStressHost.h"

#include <algorithm>

#include "foundation/core/qrtAudioFormatInterface.h"
#include "qrtStressGraphEngine.h"

namespace QRT_0_81 {

namespace {

constexpr int numMaxHeld = 2;
constexpr int generalFailure = Status::general_failure;  // of a graph engine that throws
constexpr int injected = injectedFailure;

class AudioFormat final : public AudioFormatInterface {
public:
    [[nodiscard]] size_t getSizeInBytes(size_t sampleFrames) const override { return sampleFrames * 4; }
    [[nodiscard]] int32 getSampleRate() const override { return 48000; }
};

}  // namespace

StressHost::StressHost(StressWorld& world, Player& player, Segments segments, HostContext const* context, unsigned seed)
    : m_world(world),
      m_player(player),
      m_segments(std::move(segments)),
      m_context(context),
      m_seed(seed),
      m_random(seed),
      m_observer(std::make_unique<StressObserver>(world, player, seed)) {}

void StressHost::call(int numCalls) {
    for (int i = 0; i < numCalls && !m_world.isSpoilt(); ++i, ++m_numCalls)
        callOne();
}

void StressHost::callOne() {
    const int what = upTo(99);
    if (what < 38) return fetch();
    if (what < 46) return lookAtCache();
    if (what < 50) return lookAtPools();
    if (what < 62) return produce();
    if (what < 67) return exchange();
    if (what < 69) return update();
    if (what < 75) return changeFormat();
    if (what < 81) return changeSettings();
    if (what < 90) return ask();
    if (what < 94) return observe();
    if (what < 96) return invalidate();
    if (!m_held.empty()) m_held.erase(m_held.begin() + upTo(static_cast<int>(m_held.size()) - 1));
}

void StressHost::expect(char const* call, Status status, std::initializer_list<int> answers) {
    ++m_world.numCalls;
    if (std::find(answers.begin(), answers.end(), status.get()) != answers.end()) return;
    m_world.complain(std::string(call) + " answers " + status.toString().c_str() + "; host with seed " +
                     std::to_string(m_seed) + ", call " + std::to_string(m_numCalls));
}

// ---- Frames

void StressHost::fetch() {
    const int64 frame = upTo(StressWorld::numFrames + 12) - 6;  // some are out of range
    const uint32 oldest = m_world.exchanged;
    SharedPtr<VideoBuffer> buffer;
    const Status status = m_player.getVideoBuffer(frame, buffer);
    expect("getVideoBuffer", status,
           {Status::ok, Status::out_of_range, Status::no_composition, Status::no_resource, generalFailure, injected});
    // A failure may deliver a frame all the same: when only its step could not be handed to the graph engine.
    m_world.require(status.failure() || buffer, "a frame that was delivered is there");
    if (!buffer) return;
    ++m_world.numDelivered;
    Held held{buffer, {}};
    if (StressPixels pixels = readPixels(*buffer, m_context); !pixels.bytes.empty()) {
        checkPixels(m_world, pixels, frame, oldest, "delivered");
        ++m_world.numChecked;
        held.bytes = std::move(pixels.bytes);
    }
    if (upTo(3) != 0) return;
    m_held.push_back(std::move(held));
    if (m_held.size() <= numMaxHeld) return;
    checkHeld();
    m_held.erase(m_held.begin());
}

void StressHost::checkHeld() {
    for (Held const& held : m_held) {
        const StressPixels now = readPixels(*held.buffer, m_context);
        if (now.bytes.empty() || held.bytes.empty()) continue;
        ++m_world.numChecked;
        m_world.require(now.bytes == held.bytes, "a frame that a host holds stays as it was delivered");
    }
}

std::vector<SharedPtr<VideoBuffer>> StressHost::heldBuffers() const {
    std::vector<SharedPtr<VideoBuffer>> buffers;
    for (Held const& held : m_held)
        buffers.push_back(held.buffer);
    return buffers;
}

// ---- What is inside

void StressHost::lookAtCache() {
    const uint32 oldest = m_world.exchanged;
    for (CachedFrame const& cached : cachedFrames(PlayerInspector::engine(m_player))) {
        const StressPixels pixels = readPixels(*cached.buffer, m_context);
        if (pixels.bytes.empty()) continue;
        checkPixels(m_world, pixels, cached.number, oldest, "cached");
        ++m_world.numCacheChecked;
    }
}

void StressHost::lookAtPools() {
    const auto check = [this](PoolState const& pool, char const* name) {
        m_world.require(pool.numFree + pool.lent.size() == pool.size,
                        std::string(name) + ": " + std::to_string(pool.numFree) + " free and " +
                            std::to_string(pool.lent.size()) + " lent are not " + std::to_string(pool.size));
        ++m_world.numPoolChecks;
    };
    PlayerImpl& engine = PlayerInspector::engine(m_player);
    check(ResourcePoolInspector::stateOf(PlayerImplInspector::fboPool(engine)), "framebuffers");
    check(ResourcePoolInspector::stateOf(PlayerImplInspector::ramPool(engine)), "blocks");
}

// ---- Production

void StressHost::produce() {
    if (upTo(1) == 0) {
        expect("stopProducing", m_player.stopProducing(), {Status::ok, Status::not_producing});
        return;
    }
    const Rational rate(24, 1);
    const int64 first = upTo(StressWorld::numFrames - 1);
    const int64 length = 1 + upTo(StressWorld::numFrames / 2);     // some leave the composition
    const int64 current = first + upTo(static_cast<int>(length));  // one of them leaves the range
    const auto params = PlayParams::create(Time(current, rate), Time(first, rate), Time(length, rate), rate,
                                           upTo(6) - 3, static_cast<PlayParams::PlayMode>(upTo(2)),
                                           static_cast<PlayParams::ProductionMode>(upTo(2)));
    expect("startProducing", m_player.startProducing(params),
           {Status::ok, Status::already_producing, Status::no_composition, Status::invalid_play_params, injected});
}

void StressHost::exchange() {
    const std::lock_guard lock(m_world.exchangeMutex);
    const uint32 generation = ++m_world.announced;
    const SharedPtr<Composition> composition(new StressComposition(generation));
    const Status status = m_player.setComposition(composition, m_segments);
    expect("setComposition", status,
           {Status::ok, Status::composition_incomplete, Status::not_while_producing, generalFailure, injected});
    if (!(status == Status::not_while_producing)) m_world.exchanged = generation;
}

void StressHost::update() {
    const std::lock_guard lock(m_world.exchangeMutex);
    const uint32 generation = ++m_world.announced;
    const SharedPtr<Composition> composition(new StressComposition(generation));
    const Status status = m_player.updateComposition(composition, "something has changed");
    expect("updateComposition", status,
           {Status::ok, Status::no_composition_to_update, Status::not_while_producing, injected});
    if (status.success() || status == injectedFailure) m_world.exchanged = generation;
}

// ---- Settings

void StressHost::changeFormat() {
    switch (upTo(3)) {
        case 0: {
            const bool isValid = upTo(7) != 0;
            const VideoBufferResolution resolution(isValid ? 16 + upTo(2) : -1, 8, 4, 8, false);
            expect("setVideoResolution", m_player.setVideoResolution(resolution),
                   {Status::ok, isValid ? Status::not_while_producing : Status::invalid_argument});
            break;
        }
        case 1:
            expect("setVideoFrameRate", m_player.setVideoFrameRate(Rational(24 + upTo(1), 1)),
                   {Status::ok, Status::not_while_producing, Status::no_composition, injected});
            break;
        default:
            expect("setRamOutputs", m_player.setRamOutputs(upTo(3) != 0), {Status::ok, Status::not_while_producing});
            break;
    }
}

void StressHost::changeSettings() {
    switch (upTo(5)) {
        case 0:
            expect("setPref", m_player.setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, upTo(8) - 1),
                   {Status::ok, Status::not_while_producing, Status::invalid_argument});
            break;
        case 1:
            expect("setPref", m_player.setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, upTo(4) - 1),
                   {Status::ok, Status::not_while_producing, Status::invalid_argument});
            break;
        case 2:
            expect("setPref", m_player.setPref("STRESS", upTo(9)), {Status::ok, Status::not_while_producing, injected});
            break;
        case 3:
            expect(
                "setAudioFormat",
                m_player.setAudioFormat(ConstSharedPtr<AudioFormatInterface>(upTo(3) == 0 ? nullptr : new AudioFormat)),
                {Status::ok, Status::not_while_producing});
            break;
        case 4:
            expect("setDefaultSourceVideoFrameRate", m_player.setDefaultSourceVideoFrameRate(Rational(24 + upTo(6), 1)),
                   {Status::ok});
            break;
        default:
            expect("setExternalSegmentCacheConstraint",
                   m_player.setExternalSegmentCacheConstraint(upTo(1) == 0 ? Resource::Type::ram : Resource::Type::vram,
                                                              ResourceConstraint::ResizeMode::fixed, 0,
                                                              static_cast<uint64>(upTo(1))),
                   {Status::ok});
            break;
    }
}

// ---- Questions

void StressHost::ask() {
    int value = 0;
    uint64 sizes[2] = {};
    ResourceConstraint::ResizeMode mode{};
    Vector<String> names;
    ConstSharedPtr<CacheStats> stats;
    char samples[64];
    switch (upTo(7)) {
        case 0: (void)m_player.isVideoBufferReady(upTo(StressWorld::numFrames)); break;
        case 1:
            expect("getPref", m_player.getPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, value), {Status::ok});
            m_world.require(value >= 0, "no count of frames is negative");
            break;
        case 2:
            expect("getPrefs", m_player.getPrefs(names), {Status::ok});
            m_world.require(names.size() == 2, "there are two preferences");
            break;
        case 3:
            expect("fillAudioBuffer", m_player.fillAudioBuffer(samples, sizeof samples, 0), {Status::ok, injected});
            break;
        case 4:
            expect("getCacheStats", m_player.getCacheStats(CacheStats::CacheType::producer, stats), {Status::ok});
            m_world.require(stats.get() != nullptr, "there are statistics");
            break;
        case 5:
            m_player.getExternalSegmentCacheConstraint(Resource::Type::vram, mode, sizes[0], sizes[1]);
            (void)m_player.getTokenResolver();
            break;
        case 6:
            (void)m_player.getVideoFrameRate();
            (void)m_player.getDefaultSourceVideoFrameRate();
            (void)m_player.getAudioFormat();
            break;
        default:
            m_world.require(m_player.getVideoResolution().isValid(), "the resolution is valid at any moment");
            (void)m_player.getRamOutputs();
            break;
    }
    ++m_world.numCalls;
}

// ---- Notifications

void StressHost::observe() {
    ++m_world.numCalls;
    switch (upTo(2)) {
        case 0: m_observer->add(); break;
        case 1: m_observer->remove(); break;
        default:
            m_observer->remove();
            m_observer = std::make_unique<StressObserver>(m_world, m_player, m_seed);
            break;
    }
}

void StressHost::invalidate() {
    ++m_world.numCalls;
    const int first = upTo(StressWorld::numFrames);
    for (auto const& segment : m_segments)
        segment->getSubject()->notify(InvalidationHint(first, first + upTo(9)));
}

void StressHost::leave() {
    m_observer->remove();
}

}  // namespace QRT_0_81
