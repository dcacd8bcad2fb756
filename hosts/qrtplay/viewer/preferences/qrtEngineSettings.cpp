#include "viewer/preferences/qrtEngineSettings.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <utility>

#include "foundation/core/qrtPlatform.h"
#include "graph/qrtColourManagement.h"
#include "graph/qrtMediaGraphEngine.h"
#include "playback/qrtFrameReader.h"
#include "playback/qrtPreparedInput.h"
#include "viewer/playing/qrtPlayback.h"
#include "viewer/qrtViewerApplication.h"
#include "viewer/qrtViewerSettings.h"

namespace qrtplay {

namespace {

bool isSameOcio(OcioSettings const& left, OcioSettings const& right) {
    return left.config == right.config && left.display == right.display && left.view == right.view;
}

/// The preferences that have a member of their own.
struct KnownPreference {
    String const* name;
    std::optional<int> PlaySettings::*member;
};

std::array<KnownPreference, 3> knownPreferences() {
    return {{{&Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, &PlaySettings::headFrames},
             {&Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES, &PlaySettings::tailFrames},
             {&MediaGraphEngine::DECODE_CACHE_MIB, &PlaySettings::decodeCacheInMiB}}};
}

PixelFormat depthOf(VideoBufferResolution const& format) {
    if (format.getBitsPerChannel() > 16) return PixelFormat::rgba32f;
    if (format.getBitsPerChannel() > 8) return format.isFloat() ? PixelFormat::rgba16f : PixelFormat::rgba16;
    return PixelFormat::rgba8;
}

void setSegmentBudget(Player& player, unsigned mebibytes) {
    for (const Resource::Type type : {Resource::Type::ram, Resource::Type::vram}) {
        // Always succeeds.
        (void)player.setExternalSegmentCacheConstraint(type, ResourceConstraint::ResizeMode::fixed, mebibytes,
                                                       mebibytes);
    }
}

unsigned segmentBudget(Player const& player) {
    ResourceConstraint::ResizeMode mode{};
    uint64 first = 0;
    uint64 second = 0;
    player.getExternalSegmentCacheConstraint(Resource::Type::vram, mode, first, second);
    return static_cast<unsigned>(std::min<uint64>(second, std::numeric_limits<unsigned>::max()));
}

}  // namespace

QString sentenceOf(std::string const& message) {
    constexpr int longest = 400;  // what a library says may be a whole file
    QString text = QString::fromStdString(message).simplified();
    if (text.size() > longest) text = text.left(longest - 3) + "...";
    const QString word = text.section(' ', 0, 0);
    const auto isPartOfWord = [](QChar each) { return each.isLetter() || each == ':'; };
    // The name of a file stays as it is.
    if (std::all_of(word.begin(), word.end(), isPartOfWord)) text.replace(0, 1, text.left(1).toUpper());
    return text.endsWith('.') ? text : text + '.';
}

/// Carries out a difference between settings on a player.
struct EngineSettings::Change {
    PlaySettings const& present;
    PlaySettings const& wanted;
    std::optional<Presentation> presentation;  // when it is to be another one
    EngineSettings const& engine;

    Status operator()(TimelinePlayer& player) const {
        Status status = changeFormat(player);
        if (status.success() && present.ramOutputs != wanted.ramOutputs)
            status = player.player().setRamOutputs(wanted.ramOutputs);
        for (KnownPreference const& known : knownPreferences()) {
            const std::optional<int> value = wanted.*known.member;
            if (status.success() && present.*known.member != value)
                status = player.player().setPref(*known.name, value.value_or(engine.defaultPreference(*known.name)));
        }
        if (status.success() && presentation) status = player.present(*presentation);
        return status.success() ? changeSegmentBudget(player) : status;
    }

private:
    Status changeFormat(TimelinePlayer& player) const {
        if (present.resolution == wanted.resolution && present.depth == wanted.depth) return Status();
        const QSize size = wanted.resolution.value_or(player.ownResolution());
        return player.player().setVideoResolution(outputFormat(size.width(), size.height(), wanted.depth));
    }

    // A budget takes effect at once, except that a player without one has not prepared its segments for a cache.
    Status changeSegmentBudget(TimelinePlayer& player) const {
        if (present.segmentCacheInMiB == wanted.segmentCacheInMiB) return Status();
        const unsigned before = segmentBudget(player.player());
        setSegmentBudget(player.player(), wanted.segmentCacheInMiB);
        if (before > 0 || player.timeline().generators().empty()) return Status();
        const Status status = player.resetComposition();
        if (status.failure()) setSegmentBudget(player.player(), before);
        return status;
    }
};

EngineSettings::EngineSettings(Playback& playback)
    : m_playback(playback),
      m_idle(Player::create(outputFormat(1920, 1080, PixelFormat::rgba8), &MediaGraphEngine::create)) {}

EngineSettings::~EngineSettings() = default;

EngineSettings::Result EngineSettings::change(PlaySettings const& present, PlaySettings const& wanted) {
    if (Outcome outcome = check(present, wanted); outcome.failed()) return {sentenceOf(outcome.message())};
    Change change{present, wanted, {}, *this};
    const bool hasOtherColours = !isSameOcio(present.ocio, wanted.ocio);
    if (hasOtherColours || present.scaling != wanted.scaling) {
        Presentation presentation;
        if (hasOtherColours) {
            if (Outcome outcome = makePresentation(wanted, presentation); outcome.failed())
                return {sentenceOf(outcome.message())};
        }
        if (TimelinePlayer const* const player = m_playback.player()) {
            change.presentation = player->composition().presentation();
            change.presentation->scaling = wanted.scaling;
            if (hasOtherColours) change.presentation->colours = presentation.colours;
        }
    }
    // These are made anew from scratch, and a failure in the middle leaves nothing to play with.
    const bool mayLose = present.resolution != wanted.resolution || present.depth != wanted.depth ||
                         present.ramOutputs != wanted.ramOutputs || present.headFrames != wanted.headFrames ||
                         present.tailFrames != wanted.tailFrames ||
                         present.segmentCacheInMiB != wanted.segmentCacheInMiB;
    Result result = carryOut(change, mayLose);
    // Without a player the input may not have been opened for the very colours that are given up here.
    if (result.success() && hasOtherColours && !m_playback.player()) result.needsReopening = true;
    return result;
}

EngineSettings::Result EngineSettings::setPreference(String const& name, int value) {
    return carryOut([&](TimelinePlayer& player) { return player.player().setPref(name, value); }, false);
}

EngineSettings::Result EngineSettings::carryOut(std::function<Status(TimelinePlayer&)> const& change, bool mayLose) {
    if (!m_playback.player()) return {};
    Status status = Status::general_failure;
    m_playback.reconfigure([&](TimelinePlayer& player) { status = change(player); });
    if (status.success()) return {};
    const QString words = status.toString().c_str();
    if (status == Status::not_while_producing && m_playback.isPlaying())
        return {"Not while playing: " + words + ". Pause first."};
    return {"The player refuses this: " + words + ".",
            mayLose && !(status == Status::not_while_producing) && !(status == Status::invalid_argument)};
}

Outcome EngineSettings::check(PlaySettings const& present, PlaySettings const& wanted) const {
    if (present.decodeCacheInMiB != wanted.decodeCacheInMiB && wanted.decodeCacheInMiB) {
        if (Outcome outcome = checkBudget(*wanted.decodeCacheInMiB); outcome.failed()) return outcome;
    }
    if (present.segmentCacheInMiB != wanted.segmentCacheInMiB) {
        if (Outcome outcome = checkBudget(wanted.segmentCacheInMiB); outcome.failed()) return outcome;
    }
    if (present.resolution == wanted.resolution && present.depth == wanted.depth &&
        present.headFrames == wanted.headFrames && present.tailFrames == wanted.tailFrames)
        return Outcome();
    const QSize size = wanted.resolution.value_or(ownResolution());
    if (!size.isValid()) return Outcome();  // checked when the input is opened
    PlaySettings complete = wanted;
    for (KnownPreference const& known : knownPreferences()) {
        if (!(complete.*known.member) || !fixedBy(*known.name).isEmpty())
            complete.*known.member =
                fixedBy(*known.name).isEmpty() ? defaultPreference(*known.name) : preference(*known.name);
    }
    return checkFrames(size, complete, largestFrameSide());
}

int EngineSettings::largestFrameSide() const {
    NativeContext native;
    if (m_largestFrameSide == 0)
        m_largestFrameSide = sharedContext(native).success() ? native.largestFrameSide : ViewerSettings::mostPixels;
    return m_largestFrameSide;
}

PlaySettings EngineSettings::inUse(PlaySettings settings) const {
    TimelinePlayer const* const player = m_playback.player();
    if (!player) return settings;
    const VideoBufferResolution format = player->player().getVideoResolution();
    const QSize size(format.getWidth(), format.getHeight());
    if (settings.resolution.value_or(player->ownResolution()) != size) settings.resolution = size;
    settings.depth = depthOf(format);
    settings.ramOutputs = player->player().getRamOutputs();
    settings.segmentCacheInMiB = segmentBudget(player->player());
    settings.scaling = player->composition().presentation().scaling;
    for (KnownPreference const& known : knownPreferences()) {
        const int value = preference(*known.name);
        const std::optional<int> kept = settings.*known.member;
        if (fixedBy(*known.name).isEmpty() && kept.value_or(defaultPreference(*known.name)) != value)
            settings.*known.member = value;
    }
    return settings;
}

Prefs const& EngineSettings::prefs() const {
    if (TimelinePlayer const* const player = m_playback.player()) return player->player();
    return *m_idle;
}

int EngineSettings::preference(String const& name) const {
    int value = 0;
    (void)prefs().getPref(name, value);
    return value;
}

int EngineSettings::defaultPreference(String const& name) const {
    int value = 0;
    (void)m_idle->getPref(name, value);
    return value;
}

QStringList EngineSettings::furtherPreferences() const {
    return furtherPreferencesOf(prefs());
}

QStringList EngineSettings::furtherPreferencesOf(Prefs const& prefs) {
    Vector<String> names;
    (void)prefs.getPrefs(names);
    const auto known = knownPreferences();
    QStringList further;
    for (String const& name : names) {
        const bool isKnown =
            std::any_of(known.begin(), known.end(), [&](KnownPreference const& each) { return *each.name == name; });
        if (!isKnown && !(name == MediaGraphEngine::CONVERSION)) further << QString::fromUtf8(name.c_str());
    }
    return further;
}

std::shared_ptr<ColourManagement const> EngineSettings::colours(PlaySettings const& settings) const {
    if (TimelinePlayer const* const player = m_playback.player()) return player->composition().presentation().colours;
    Presentation presentation;
    (void)makePresentation(settings, presentation);  // null when they cannot be had
    return presentation.colours;
}

QSize EngineSettings::ownResolution() const {
    TimelinePlayer const* const player = m_playback.player();
    return player ? player->ownResolution() : QSize();
}

QString EngineSettings::fixedBy(String const& name) {
    const String variable = "QRT_PREF_" + name;
    return Platform::getenv(variable.c_str()) ? QString::fromUtf8(variable.c_str()) : QString();
}

}  // namespace qrtplay
