#include "playback/qrtTimelinePlayer.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "generators/qrtGeneratorSegments.h"
#include "graph/qrtMediaGraphEngine.h"
#include "playback/qrtFrameReader.h"
#include "sound/qrtHostAudioFormat.h"

namespace qrtplay {

namespace {

Outcome checkResolution(QSize resolution, int most) {
    if (resolution.width() >= 1 && resolution.height() >= 1 && resolution.width() <= most &&
        resolution.height() <= most)
        return Outcome();
    return Outcome::failure("resolution " + sizeText(resolution) + ": width and height have to lie between 1 and " +
                            std::to_string(most) + " here");
}

double machineMemory() {
    return static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// The rest is for the system and for what this program does beside.
bool fitsMachine(double bytes) {
    constexpr double largestShare = 0.8;
    return bytes <= machineMemory() * largestShare;
}

std::string inGiB(double bytes) {
    constexpr double bytesPerGiB = 1 << 30;
    return std::to_string(std::lround(bytes / bytesPerGiB));
}

// The player takes the memory for all its frames at once; a machine that has not got it would end this process without
// a word.
Outcome checkMemory(QSize resolution, PlaySettings const& settings) {
    constexpr int64 framesBeside = 4;  // the current one, the one in the making, and two on their way to a file
    constexpr int usualHead = 2;
    const int64 frames =
        int64{settings.headFrames.value_or(usualHead)} + settings.tailFrames.value_or(0) + framesBeside;
    const VideoBufferResolution format = outputFormat(resolution.width(), resolution.height(), settings.depth);
    const double needed = static_cast<double>(format.getBufferSize()) * static_cast<double>(frames);
    if (fitsMachine(needed)) return Outcome();
    return Outcome::failure("resolution " + sizeText(resolution) + ": " + std::to_string(frames) + " frames need " +
                            inGiB(needed) + " GiB of memory and there are " + inGiB(machineMemory()));
}

}  // namespace

Outcome outcomeOf(Status const& status, std::string const& what) {
    if (status.success()) return Outcome();
    return Outcome::failure(what + ": " + status.toString().c_str());
}

Outcome checkFrames(QSize resolution, PlaySettings const& settings, int largestFrameSide) {
    Outcome outcome = checkResolution(resolution, largestFrameSide);
    return outcome.success() ? checkMemory(resolution, settings) : outcome;
}

Outcome checkBudget(int64 mebibytes) {
    constexpr double bytesPerMiB = 1 << 20;
    const double needed = static_cast<double>(mebibytes) * bytesPerMiB;
    if (fitsMachine(needed)) return Outcome();
    return Outcome::failure(std::to_string(mebibytes) + " MiB are too much: this machine has " +
                            inGiB(machineMemory()) + " GiB of memory");
}

std::string sizeText(QSize size) {
    return std::to_string(size.width()) + "x" + std::to_string(size.height());
}

Outcome TimelinePlayer::open(PreparedInput const& input, PlaySettings const& settings, NativeContext const& native,
                             std::unique_ptr<TimelinePlayer>& opened, OpenFailure& why) {
    const QSize resolution = settings.resolution.value_or(input.ownResolution);
    why = OpenFailure::failed;
    if (Outcome outcome = checkFrames(resolution, settings, native.largestFrameSide); outcome.failed()) return outcome;
    std::unique_ptr<TimelinePlayer> player(new TimelinePlayer(input));
    if (Outcome outcome = player->start(resolution, settings, native, why); outcome.failed()) return outcome;
    opened = std::move(player);
    return Outcome();
}

TimelinePlayer::~TimelinePlayer() {
    if (m_player) (void)m_player->uninitialize();
}

Outcome TimelinePlayer::start(QSize resolution, PlaySettings const& settings, NativeContext const& native,
                              OpenFailure& why) {
    m_player = Player::create(outputFormat(resolution.width(), resolution.height(), settings.depth),
                              &MediaGraphEngine::create);
    if (Outcome outcome = applySettings(settings); outcome.failed()) return outcome;
    why = OpenFailure::no_opengl;
    const Status started = m_player->initialize(native.context, native.window);
    if (Outcome outcome = outcomeOf(started, "the player cannot be started at " + sizeText(resolution));
        outcome.failed())
        return outcome;
    why = OpenFailure::failed;
    return setComposition();
}

// Before the player runs its pools are not there yet and need no second set-up.
Outcome TimelinePlayer::applySettings(PlaySettings const& settings) {
    const auto setPref = [this](String const& name, std::optional<int> value, const char* what) {
        return value ? outcomeOf(m_player->setPref(name, *value), what) : Outcome();
    };
    Outcome outcome = setPref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, settings.headFrames, "frames ahead");
    if (outcome.success())
        outcome = setPref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, settings.tailFrames, "frames behind");
    if (outcome.success())
        outcome = setPref(MediaGraphEngine::DECODE_CACHE_MIB, settings.decodeCacheInMiB, "cache of decoded pictures");
    if (settings.conversion && outcome.success())
        outcome = setPref(MediaGraphEngine::CONVERSION, static_cast<int>(*settings.conversion), "conversion");
    if (outcome.success()) outcome = outcomeOf(m_player->setRamOutputs(settings.ramOutputs), "output in memory");
    for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram}) {
        // Always succeeds; whether segments are cached is decided when the composition is set.
        (void)m_player->setExternalSegmentCacheConstraint(type, ResourceConstraint::ResizeMode::fixed,
                                                          settings.segmentCacheInMiB, settings.segmentCacheInMiB);
    }
    return outcome;
}

Outcome TimelinePlayer::setComposition() {
    const ConstSharedPtr<AudioFormatInterface> sound(
        new HostAudioFormat(soundRate, soundChannels, SampleKind::float32));
    if (Outcome outcome = outcomeOf(m_player->setAudioFormat(sound), "sound"); outcome.failed()) return outcome;
    return outcomeOf(resetComposition(), m_name);
}

Status TimelinePlayer::resetComposition() {
    return m_player->setComposition(m_composition, makeGeneratorSegments(timeline().generators()));
}

Status TimelinePlayer::present(Presentation presentation) {
    const auto shown = m_composition->presentedAs(std::move(presentation));
    const Status status = m_player->updateComposition(shown, "presentation");
    if (status.success()) m_composition = shown;
    return status;
}

bool TimelinePlayer::hasSound() const {
    auto const& tracks = timeline().tracks();
    return std::any_of(tracks.begin(), tracks.end(), [](TrackView const& track) {
        return track.kind == TrackView::Kind::audio &&
               std::any_of(track.items.begin(), track.items.end(), [](TrackItem const& item) {
                   return item.kind == TrackItem::Kind::clip || item.kind == TrackItem::Kind::stack;
               });
    });
}

int64 TimelinePlayer::sampleCount() const {
    return timeline().duration().frameFrom(Rational(soundRate, 1));
}

SharedPtr<PlayParams> TimelinePlayer::parameters(int64 first, int64 last, int64 current, int step,
                                                 PlayParams::PlayMode mode) const {
    const auto production = hasSound() ? PlayParams::all : PlayParams::video_only;
    SharedPtr<PlayParams> params =
        PlayParams::create(Time(0, rate()), Time(0, rate()), Time(1, rate()), rate(), step, mode, production);
    // Set by number: a way through times would have to round.
    params->setStartFrame(first);
    params->setEndFrame(last);
    params->setCurrentFrame(current);
    return params;
}

std::string TimelinePlayer::failureText(int64 frame, Status const& status) const {
    const std::string known = m_composition->failureOf(frame);
    return known.empty() ? m_name + ": frame " + std::to_string(frame) + ": " + status.toString().c_str() : known;
}

Outcome TimelinePlayer::readSound(int64 first, int64 count, float* samples) const {
    const uint64 bytes = static_cast<uint64>(count) * soundChannels * sizeof(float);
    const Status status =
        m_player->fillAudioBuffer(reinterpret_cast<char*>(samples), bytes, static_cast<uint64>(first));
    return outcomeOf(status, m_name + ": sound from sample " + std::to_string(first) + " on");
}

}  // namespace qrtplay
