#include "viewer/preferences/qrtPreferencesPanel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>
#include <cstdlib>

#include "graph/qrtColourManagement.h"
#include "graph/qrtMediaGraphEngine.h"
#include "host/qrtTestClips.h"
#include "playback/qrtFrameReader.h"
#include "viewer/playing/qrtPlayback.h"
#include "viewer/preferences/qrtColourButton.h"
#include "viewer/preferences/qrtFurtherPreferences.h"
#include "viewer/preferences/qrtSettingRow.h"
#include "viewer/preferences/qrtSettledSpinBox.h"
#include "viewer/qrtViewerApplication.h"

namespace qrtplay {
namespace {

// Two displays, the first with two views.
constexpr char ocioText[] = R"(ocio_profile_version: 2
roles:
  default: plain
  scene_linear: plain
file_rules:
  - !<Rule> {name: Default, colorspace: plain}
displays:
  screen:
    - !<View> {name: video, colorspace: plain}
    - !<View> {name: dark, colorspace: dark}
  projector:
    - !<View> {name: cinema, colorspace: plain}
active_displays: [screen, projector]
active_views: [video, dark, cinema]
colorspaces:
  - !<ColorSpace>
    name: plain
  - !<ColorSpace>
    name: dark
    from_scene_reference: !<MatrixTransform> {matrix: [0.25, 0, 0, 0, 0, 0.25, 0, 0, 0, 0, 0.25, 0, 0, 0, 0, 1]}
)";

// A title after a clip, for the cache of what the host draws.
constexpr char timelineText[] = R"({"OTIO_SCHEMA": "Timeline.1", "name": "titled", "tracks": {
  "OTIO_SCHEMA": "Stack.1", "children": [{"OTIO_SCHEMA": "Track.1", "kind": "Video", "children": [
    {"OTIO_SCHEMA": "Clip.1", "source_range": RANGE,
     "media_reference": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "CLIP"}},
    {"OTIO_SCHEMA": "Clip.1", "source_range": RANGE, "media_reference": {
      "OTIO_SCHEMA": "GeneratorReference.1", "generator_kind": "text", "parameters": {"text": "The End"}}}]}]}})";
constexpr char rangeText[] = R"({"OTIO_SCHEMA": "TimeRange.1",
  "start_time": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 0},
  "duration": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 24}})";

QString writeFile(QTemporaryDir const& folder, QString const& name, QByteArray const& text) {
    QFile file(folder.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
    return file.fileName();
}

class ScopedVariable final {
public:
    ScopedVariable(char const* name, char const* value) : m_name(name) { setenv(name, value, 1); }
    ~ScopedVariable() { unsetenv(m_name); }
    Q_DISABLE_COPY(ScopedVariable)

private:
    char const* const m_name;
};

/// The panel in a window of its own, beside a playback that can have a real player.
class Preferences : public ::testing::Test {
protected:
    explicit Preferences(ViewerSettings const& settings = {}) {
        QObject::connect(&m_playback, &Playback::frameShown, [this](FetchedFrame const& frame) { m_shown = frame; });
        m_panel.resize(340, 700);
        m_panel.show(settings);
        m_panel.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&m_panel));
        QApplication::setActiveWindow(&m_panel);  // a display without a window manager does not do it
    }
    ~Preferences() override {
        m_shown.reset();
        m_playback.setPlayer(nullptr);
    }

    void open(QString const& file, PlaySettings const& settings = {}) {
        PreparedInput prepared;
        PlayInput input;
        input.files = {file.toStdString()};
        OpenFailure why{};
        NativeContext native;
        Outcome outcome = prepareInput(input, settings, prepared, why);
        if (outcome.success()) outcome = sharedContext(native);
        m_playback.setPlayer(nullptr);
        if (outcome.success()) outcome = TimelinePlayer::open(prepared, settings, native, m_player, why);
        ASSERT_TRUE(outcome.success()) << outcome.message();
        m_playback.setPlayer(m_player.get());
        m_panel.timelineChanged();
        ASSERT_TRUE(QTest::qWaitFor([this] { return m_shown.has_value(); }));
    }
    void openClip(PlaySettings const& settings = {}) {
        open(QString::fromStdString(clipPath("bframes.mp4")), settings);
    }
    void openTitled(PlaySettings const& settings) {
        QByteArray text = timelineText;
        text.replace("RANGE", rangeText).replace("CLIP", clipPath("bframes.mp4").c_str());
        open(writeFile(m_folder, "titled.otio", text), settings);
    }

    template <class Widget>
    [[nodiscard]] Widget& find(char const* name) {
        auto* const widget = m_panel.findChild<Widget*>(name);
        EXPECT_TRUE(widget) << name;
        return *widget;
    }
    [[nodiscard]] SettingRow& rowOf(char const* name) {
        QWidget* row = &find<QWidget>(name);
        while (row && !qobject_cast<SettingRow*>(row))
            row = row->parentWidget();
        return *qobject_cast<SettingRow*>(row);
    }
    [[nodiscard]] QString refusal(char const* name) { return rowOf(name).refusal(); }

    /// As a user does, with the keyboard.
    void choose(char const* name, QString const& text) {
        auto& box = find<QComboBox>(name);
        const int index = box.findText(text, Qt::MatchStartsWith);
        ASSERT_GE(index, 0) << text.toStdString();
        box.setFocus();
        QTest::keyClick(&box, Qt::Key_Home);
        for (int i = 0; i < index; ++i)
            QTest::keyClick(&box, Qt::Key_Down);
    }
    void type(QWidget& field, QString const& text) {
        field.setFocus();
        QTest::keyClick(&field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    }
    void typeNumber(char const* name, int number) { type(find<SettledSpinBox>(name), QString::number(number)); }
    void typeResolution(QString const& text) { type(*find<QComboBox>("resolution").lineEdit(), text); }
    void typeConfig(QString const& path) { type(find<QLineEdit>("ocioConfig"), path); }

    [[nodiscard]] ViewerSettings stored() const {
        ViewerSettings settings;
        m_panel.store(settings);
        return settings;
    }
    [[nodiscard]] Player& player() const { return m_player->player(); }
    [[nodiscard]] int pref(String const& name) const {
        int value = -1;
        EXPECT_TRUE(player().getPref(name, value).success());
        return value;
    }
    [[nodiscard]] uint64 segmentBudget(Resource::Type type) const {
        ResourceConstraint::ResizeMode mode{};
        uint64 first = 0;
        uint64 second = 0;
        player().getExternalSegmentCacheConstraint(type, mode, first, second);
        return second;
    }
    using IsExpected = std::function<bool(VideoBuffer const&)>;
    /// The first frame after `change` that is as expected; null when none comes. One that was under way may come first.
    [[nodiscard]] SharedPtr<VideoBuffer> frameAfter(std::function<void()> const& change, IsExpected const& isExpected) {
        m_shown.reset();
        change();
        EXPECT_TRUE(QTest::qWaitFor([&] { return m_shown && m_shown->buffer && isExpected(*m_shown->buffer); }));
        return m_shown ? m_shown->buffer : nullptr;
    }
    [[nodiscard]] static IsExpected isOf(VideoBufferResolution const& format) {
        return [format](VideoBuffer const& frame) { return frame.getResolution() == format; };
    }
    [[nodiscard]] static IsExpected isOf(unsigned char kind) {
        return [kind](VideoBuffer const& frame) { return frame.getType() == kind; };
    }
    [[nodiscard]] static bool isAny(VideoBuffer const&) { return true; }
    void play() {
        m_playback.setMode(PlayParams::loop);
        m_playback.play(1);
        ASSERT_TRUE(m_playback.isPlaying());
    }

    const QTemporaryDir m_folder;
    WallClock m_clock;
    Playback m_playback{m_clock, nullptr};
    std::unique_ptr<TimelinePlayer> m_player;
    std::optional<FetchedFrame> m_shown;  // one, as the player has few to lend
    PreferencesPanel m_panel{m_playback};
};

TEST_F(Preferences, setTheResolutionFromTheList) {
    openClip();
    const VideoBufferResolution half = outputFormat(80, 48, PixelFormat::rgba8);
    EXPECT_TRUE(frameAfter([this] { choose("resolution", "Half of the input, 80x48"); }, isOf(half)));
    EXPECT_EQ(player().getVideoResolution(), outputFormat(80, 48, PixelFormat::rgba8));
    EXPECT_EQ(stored().play.resolution, QSize(80, 48));
}

TEST_F(Preferences, setTheResolutionThatIsTypedAndGoBackToThatOfTheInput) {
    openClip();
    QSignalSpy changed(&m_panel, &PreferencesPanel::changed);
    typeResolution("100 x 50");
    EXPECT_EQ(player().getVideoResolution(), outputFormat(100, 50, PixelFormat::rgba8));
    EXPECT_EQ(find<QComboBox>("resolution").currentText(), "100x50");
    EXPECT_EQ(changed.count(), 1);
    typeResolution("As the input, 160x96");
    EXPECT_EQ(player().getVideoResolution(), outputFormat(160, 96, PixelFormat::rgba8));
    EXPECT_EQ(stored().play.resolution, std::nullopt);
}

TEST_F(Preferences, explainAResolutionThatIsNone) {
    openClip();
    typeResolution("wide");
    EXPECT_EQ(refusal("resolution"), "Type width x height, such as 1280x720.");
    EXPECT_EQ(find<QComboBox>("resolution").currentText(), "As the input, 160x96");
    typeResolution("32x32");
    EXPECT_EQ(refusal("resolution"), "");
}

TEST_F(Preferences, refuseAResolutionThatNoTextureCanHave) {
    openClip();
    typeResolution("65000x20");
    EXPECT_TRUE(refusal("resolution").startsWith("Resolution 65000x20: width and height have to lie between 1 and"))
        << refusal("resolution").toStdString();
    typeResolution("0x20");
    EXPECT_TRUE(refusal("resolution").startsWith("Resolution 0x20:")) << refusal("resolution").toStdString();
    EXPECT_EQ(player().getVideoResolution(), outputFormat(160, 96, PixelFormat::rgba8));
    EXPECT_EQ(find<QComboBox>("resolution").currentText(), "As the input, 160x96");
}

// Without a timeline, so that nothing large is really made.
TEST_F(Preferences, refuseFramesThatTheMachineCannotHold) {
    typeResolution("16000x16000");
    ASSERT_EQ(refusal("resolution"), "");
    typeNumber("headFrames", ViewerSettings::mostFrames);
    EXPECT_TRUE(refusal("headFrames").contains("GiB of memory")) << refusal("headFrames").toStdString();
    EXPECT_EQ(stored().play.headFrames, std::nullopt);
    EXPECT_EQ(find<SettledSpinBox>("headFrames").value(), 2);
}

TEST_F(Preferences, refuseABudgetThatTheMachineCannotHold) {
    openClip();
    const int before = pref(MediaGraphEngine::DECODE_CACHE_MIB);
    for (char const* const name : {"decodeCache", "segmentCache"}) {
        typeNumber(name, ViewerSettings::mostMebibytes);
        EXPECT_TRUE(refusal(name).startsWith("1048576 MiB are too much")) << refusal(name).toStdString();
    }
    EXPECT_EQ(pref(MediaGraphEngine::DECODE_CACHE_MIB), before);
    EXPECT_EQ(segmentBudget(Resource::Type::ram), PlaySettings().segmentCacheInMiB);
}

TEST_F(Preferences, setTheFormatOfFrames) {
    openClip();
    const std::pair<char const*, PixelFormat> formats[] = {
        {"16-bit float", PixelFormat::rgba16f}, {"32-bit float", PixelFormat::rgba32f}, {"8-bit", PixelFormat::rgba8}};
    for (auto const& [name, format] : formats) {
        EXPECT_TRUE(frameAfter([this, name = name] { choose("depth", name); }, isOf(outputFormat(160, 96, format))))
            << name;
        EXPECT_EQ(stored().play.depth, format) << name;
    }
}

TEST_F(Preferences, setHowFramesAreDelivered) {
    openClip();
    EXPECT_TRUE(frameAfter([this] { choose("delivery", "Memory"); }, isOf(VideoBuffer::memoryKind)));
    EXPECT_TRUE(player().getRamOutputs());
    EXPECT_TRUE(frameAfter([this] { choose("delivery", "Texture"); }, isOf(VideoBuffer::framebufferKind)));
}

TEST_F(Preferences, setTheScaling) {
    openClip();
    choose("scaling", "1:1");
    EXPECT_EQ(m_player->composition().presentation().scaling, Scaling::one_to_one);
    EXPECT_EQ(stored().play.scaling, Scaling::one_to_one);
}

TEST_F(Preferences, setTheCountsAndBudgets) {
    openClip();
    typeNumber("headFrames", 5);
    typeNumber("tailFrames", 3);
    typeNumber("decodeCache", 100);
    typeNumber("segmentCache", 32);
    EXPECT_EQ(pref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES), 5);
    EXPECT_EQ(pref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES), 3);
    EXPECT_EQ(pref(MediaGraphEngine::DECODE_CACHE_MIB), 100);
    EXPECT_EQ(segmentBudget(Resource::Type::ram), 32u);
    EXPECT_EQ(segmentBudget(Resource::Type::vram), 32u);
    EXPECT_EQ(stored().play.headFrames, 5);
    EXPECT_EQ(stored().play.tailFrames, 3);
    EXPECT_EQ(stored().play.decodeCacheInMiB, 100);
    EXPECT_EQ(stored().play.segmentCacheInMiB, 32u);
}

TEST_F(Preferences, carryOutNoHalfTypedNumber) {
    openClip();
    auto& box = find<SettledSpinBox>("headFrames");
    QSignalSpy settled(&box, &SettledSpinBox::settled);
    box.setFocus();
    QTest::keyClick(&box, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&box, "12");
    EXPECT_EQ(settled.count(), 0);
    find<QWidget>("tailFrames").setFocus();
    EXPECT_EQ(settled.count(), 1);
    EXPECT_EQ(pref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES), 12);
}

TEST_F(Preferences, carryOutSeveralStepsAtOnce) {
    openClip();
    auto& box = find<SettledSpinBox>("headFrames");
    QSignalSpy settled(&box, &SettledSpinBox::settled);
    box.setFocus();
    for (int i = 0; i < 3; ++i)
        QTest::keyClick(&box, Qt::Key_Up);
    ASSERT_TRUE(QTest::qWaitFor([&] { return pref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES) == 5; }));
    EXPECT_EQ(settled.count(), 1);
}

TEST_F(Preferences, haveGeneratedPicturesKeptFromTheMomentThatTheyGetMemory) {
    PlaySettings settings;
    settings.segmentCacheInMiB = 0;
    openTitled(settings);
    EXPECT_EQ(find<SettledSpinBox>("segmentCache").value(), 0);
    QSignalSpy changed(&m_panel, &PreferencesPanel::changed);
    EXPECT_TRUE(frameAfter([this] { typeNumber("segmentCache", 16); }, isAny));
    EXPECT_EQ(segmentBudget(Resource::Type::ram), 16u);
    EXPECT_EQ(changed.count(), 1);
}

/// The controls that the engine refuses while it plays.
class RefusedPreference : public Preferences, public ::testing::WithParamInterface<int> {
protected:
    struct Case {
        char const* control;
        std::function<void()> change;
        std::function<int()> asked;  // the engine, in a number that the change changes
    };
    [[nodiscard]] Case chosen() {
        const Case cases[] = {
            {"resolution", [this] { typeResolution("32x20"); },
             [this] { return player().getVideoResolution().getWidth(); }},
            {"depth", [this] { choose("depth", "16-bit"); },
             [this] { return player().getVideoResolution().getBitsPerChannel(); }},
            {"delivery", [this] { choose("delivery", "Memory"); }, [this] { return player().getRamOutputs() ? 1 : 0; }},
            {"scaling", [this] { choose("scaling", "Fill"); },
             [this] { return static_cast<int>(m_player->composition().presentation().scaling); }},
            {"headFrames", [this] { typeNumber("headFrames", 4); },
             [this] { return pref(Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES); }},
            {"tailFrames", [this] { typeNumber("tailFrames", 4); },
             [this] { return pref(Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES); }},
            {"decodeCache", [this] { typeNumber("decodeCache", 40); },
             [this] { return pref(MediaGraphEngine::DECODE_CACHE_MIB); }},
            {"ocioConfig", [this] { typeConfig(writeFile(m_folder, "config.ocio", ocioText)); },
             [this] { return m_player->composition().presentation().colours ? 1 : 0; }},
            {"segmentCache", [this] { typeNumber("segmentCache", 8); },
             [this] { return static_cast<int>(segmentBudget(Resource::Type::ram)); }}};
        return cases[GetParam()];
    }
    [[nodiscard]] QString shown(char const* control) {
        if (auto const* const number = qobject_cast<QSpinBox*>(&find<QWidget>(control)))
            return QString::number(number->value());
        if (auto const* const box = qobject_cast<QComboBox*>(&find<QWidget>(control))) return box->currentText();
        return find<QLineEdit>(control).text();
    }
};

TEST_P(RefusedPreference, isPutBackAndExplainedWhilePlayingAndWorksAfterPausing) {
    const Case tried = chosen();
    PlaySettings settings;
    settings.segmentCacheInMiB = 0;
    openTitled(settings);
    const int before = tried.asked();
    const QString shownBefore = shown(tried.control);
    QSignalSpy changed(&m_panel, &PreferencesPanel::changed);

    play();
    tried.change();
    EXPECT_EQ(refusal(tried.control), "Not while playing: not allowed while producing. Pause first.");
    EXPECT_EQ(tried.asked(), before);
    EXPECT_EQ(shown(tried.control), shownBefore);
    EXPECT_TRUE(rowOf(tried.control).findChild<QLabel*>("refusal")->isVisibleTo(&m_panel));
    EXPECT_EQ(changed.count(), 0);

    m_playback.pause();
    tried.change();
    EXPECT_EQ(refusal(tried.control), "");
    EXPECT_FALSE(rowOf(tried.control).findChild<QLabel*>("refusal")->isVisibleTo(&m_panel));
    EXPECT_NE(tried.asked(), before);
    EXPECT_NE(shown(tried.control), shownBefore);
    EXPECT_EQ(changed.count(), 1);
}

INSTANTIATE_TEST_SUITE_P(Preferences, RefusedPreference, ::testing::Range(0, 9));

TEST_F(Preferences, chooseAColourConfigurationAndWhatItNames) {
    openClip();
    const QString path = writeFile(m_folder, "config.ocio", ocioText);
    EXPECT_FALSE(find<QComboBox>("ocioDisplay").isEnabled());
    typeConfig(path);
    ASSERT_TRUE(m_player->composition().presentation().colours);
    EXPECT_EQ(find<QComboBox>("ocioDisplay").currentText(), "screen");
    EXPECT_EQ(find<QComboBox>("ocioView").currentText(), "video");
    EXPECT_TRUE(frameAfter([this] { choose("ocioView", "dark"); }, isAny));
    EXPECT_EQ(m_player->composition().presentation().colours->view(), "dark");
    choose("ocioDisplay", "projector");
    EXPECT_EQ(m_player->composition().presentation().colours->display(), "projector");
    EXPECT_EQ(find<QComboBox>("ocioView").currentText(), "cinema");
    EXPECT_EQ(stored().play.ocio.config, path.toStdString());
    EXPECT_EQ(stored().play.ocio.display, "projector");

    QTest::mouseClick(&find<QPushButton>("ocioNone"), Qt::LeftButton);
    EXPECT_FALSE(m_player->composition().presentation().colours);
    EXPECT_EQ(stored().play.ocio.config, "");
    EXPECT_EQ(stored().play.ocio.display, "");
    EXPECT_FALSE(find<QComboBox>("ocioView").isEnabled());
}

TEST_F(Preferences, keepTheColoursWhenAConfigurationCannotBeRead) {
    openClip();
    const QString path = writeFile(m_folder, "config.ocio", ocioText);
    typeConfig(path);
    const auto colours = m_player->composition().presentation().colours;
    const QString broken = writeFile(m_folder, "broken.ocio", "eggs, milk, butter");
    typeConfig(broken);
    EXPECT_TRUE(refusal("ocioConfig").contains("broken.ocio")) << refusal("ocioConfig").toStdString();
    EXPECT_EQ(find<QLineEdit>("ocioConfig").text(), path);
    EXPECT_EQ(m_player->composition().presentation().colours, colours);
    typeConfig("/nowhere/config.ocio");
    EXPECT_TRUE(refusal("ocioConfig").contains("/nowhere/config.ocio")) << refusal("ocioConfig").toStdString();
    choose("ocioView", "dark");
    EXPECT_EQ(refusal("ocioConfig"), "");
}

TEST_F(Preferences, takeTheColoursOfTheEnvironmentWhereNoneAreChosen) {
    const ScopedVariable variable("OCIO", writeFile(m_folder, "config.ocio", ocioText).toUtf8().constData());
    openClip();
    EXPECT_TRUE(find<QLineEdit>("ocioConfig").placeholderText().startsWith("OCIO: "));
    EXPECT_EQ(find<QComboBox>("ocioDisplay").currentText(), "screen");
    choose("ocioDisplay", "projector");
    EXPECT_EQ(m_player->composition().presentation().colours->display(), "projector");
    QTest::mouseClick(&find<QPushButton>("ocioNone"), Qt::LeftButton);
    EXPECT_EQ(m_player->composition().presentation().colours->display(), "screen");
}

TEST_F(Preferences, showWhatTheEnvironmentFixes) {
    const ScopedVariable head("QRT_PREF_PRODUCER_CACHE_NB_HEAD_FRAMES", "2");
    const ScopedVariable decoded("QRT_PREF_QRTPLAY_DECODE_CACHE_MIB", "77");
    ViewerSettings settings;
    settings.play.headFrames = 9;
    m_panel.show(settings);
    openClip(settings.play);
    EXPECT_FALSE(find<SettledSpinBox>("headFrames").isEnabled());
    EXPECT_EQ(find<SettledSpinBox>("headFrames").value(), 2);
    EXPECT_TRUE(find<SettledSpinBox>("headFrames").toolTip().contains("QRT_PREF_PRODUCER_CACHE_NB_HEAD_FRAMES"));
    EXPECT_FALSE(find<SettledSpinBox>("decodeCache").isEnabled());
    EXPECT_EQ(find<SettledSpinBox>("decodeCache").value(), 77);
    EXPECT_TRUE(find<SettledSpinBox>("tailFrames").isEnabled());
    EXPECT_EQ(stored().play.headFrames, 9) << "kept for when nothing fixes it any more";
    EXPECT_EQ(stored().play.decodeCacheInMiB, std::nullopt);
}

TEST_F(Preferences, keepWhatIsChosenWithoutATimelineForTheNextOne) {
    EXPECT_EQ(find<SettledSpinBox>("headFrames").value(), 2);
    QSignalSpy changed(&m_panel, &PreferencesPanel::changed);
    typeResolution("40x30");
    choose("depth", "16-bit float");
    choose("delivery", "Memory");
    typeNumber("tailFrames", 6);
    EXPECT_GE(changed.count(), 4);
    ASSERT_EQ(stored().play.resolution, QSize(40, 30));
    const auto chosen = stored();
    openClip(chosen.play);
    EXPECT_EQ(player().getVideoResolution(), outputFormat(40, 30, PixelFormat::rgba16f));
    EXPECT_EQ(find<QComboBox>("resolution").currentText(), "40x30");
    EXPECT_EQ(find<SettledSpinBox>("tailFrames").value(), 6);
    EXPECT_TRUE(stored().play.ramOutputs);
}

TEST_F(Preferences, wantTheInputOpenedAgainForOtherColoursWithoutATimeline) {
    QSignalSpy reopen(&m_panel, &PreferencesPanel::reopenWanted);
    typeConfig("/nowhere/config.ocio");
    EXPECT_NE(refusal("ocioConfig"), "");
    EXPECT_EQ(reopen.count(), 0);
    typeConfig(writeFile(m_folder, "config.ocio", ocioText));
    EXPECT_EQ(reopen.count(), 1);
    EXPECT_EQ(find<QComboBox>("ocioDisplay").count(), 2);
}

TEST_F(Preferences, showWhatThePlayerWasOpenedWith) {
    PlaySettings settings;
    settings.resolution = QSize(20, 10);
    settings.depth = PixelFormat::rgba32f;
    settings.scaling = Scaling::fill;
    settings.headFrames = 3;
    settings.segmentCacheInMiB = 5;
    openClip(settings);
    EXPECT_EQ(find<QComboBox>("resolution").currentText(), "20x10");
    EXPECT_EQ(find<QComboBox>("depth").currentText(), "32-bit float");
    EXPECT_EQ(find<QComboBox>("scaling").currentIndex(), 1);
    EXPECT_EQ(find<SettledSpinBox>("headFrames").value(), 3);
    EXPECT_EQ(find<SettledSpinBox>("segmentCache").value(), 5);
}

TEST_F(Preferences, showSettingsWithoutCarryingThemOut) {
    openClip();
    QSignalSpy changed(&m_panel, &PreferencesPanel::changed);
    ViewerSettings settings;
    settings.play.resolution = QSize(30, 20);
    settings.muted = true;
    settings.volume = 0.4;
    settings.policy = PacePolicy::every_frame;
    m_panel.show(settings);
    EXPECT_EQ(player().getVideoResolution(), outputFormat(160, 96, PixelFormat::rgba8));
    EXPECT_FALSE(m_playback.isMuted());
    EXPECT_EQ(m_playback.policy(), PacePolicy::real_time);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_TRUE(find<QCheckBox>("mute").isChecked());
    EXPECT_EQ(find<QSlider>("volume").value(), 40);
    EXPECT_EQ(find<QComboBox>("policy").currentText(), "Show every frame");
}

TEST_F(Preferences, setSoundAndPolicyAndFollowThem) {
    openClip();
    QTest::mouseClick(&find<QCheckBox>("mute"), Qt::LeftButton, {}, {8, 8});
    EXPECT_TRUE(m_playback.isMuted());
    m_playback.setMuted(false);
    EXPECT_FALSE(find<QCheckBox>("mute").isChecked());
    choose("policy", "Show every frame");
    EXPECT_EQ(m_playback.policy(), PacePolicy::every_frame);
    m_playback.setPolicy(PacePolicy::real_time);
    EXPECT_EQ(find<QComboBox>("policy").currentText(), "Stay in real time");
    EXPECT_EQ(stored().policy, PacePolicy::real_time);
    find<QSlider>("volume").setFocus();
    QTest::keyClick(&find<QSlider>("volume"), Qt::Key_PageDown);
    EXPECT_DOUBLE_EQ(stored().volume, 0.9);
}

TEST_F(Preferences, chooseTheBackground) {
    QSignalSpy changed(&m_panel, &PreferencesPanel::changed);
    auto& button = find<ColourButton>("background");
    QTest::mouseClick(&button, Qt::LeftButton);
    auto* const dialog = button.findChild<QColorDialog*>();
    ASSERT_TRUE(dialog);
    dialog->setCurrentColor(QColor(10, 20, 30));
    dialog->accept();
    EXPECT_EQ(stored().background, QColor(10, 20, 30));
    EXPECT_EQ(changed.count(), 1);
}

TEST_F(Preferences, keepWhatOthersSet) {
    ViewerSettings settings;
    settings.overlay = true;
    settings.recentFiles = QStringList{"a.mov"};
    settings.play.outputRate = Rational(30, 1);
    m_panel.store(settings);
    EXPECT_TRUE(settings.overlay);
    EXPECT_EQ(settings.recentFiles.size(), 1);
    EXPECT_TRUE(settings.play.outputRate);
}

TEST_F(Preferences, nameAndExplainEveryControl) {
    for (char const* const name : {"resolution", "depth", "delivery", "scaling", "background", "headFrames",
                                   "tailFrames", "decodeCache", "segmentCache", "ocioConfig", "ocioBrowse", "ocioNone",
                                   "ocioDisplay", "ocioView", "volume", "mute", "policy"}) {
        EXPECT_FALSE(find<QWidget>(name).toolTip().isEmpty()) << name;
        EXPECT_FALSE(find<QWidget>(name).accessibleName().isEmpty()) << name;
    }
}

TEST_F(Preferences, fitANarrowDock) {
    m_panel.resize(320, 600);
    auto const* const scroll = m_panel.findChild<QScrollArea*>();
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_panel.width() == 320; }));
    EXPECT_LE(m_panel.minimumSizeHint().width(), 320);
    EXPECT_LE(scroll->widget()->minimumSizeHint().width(), scroll->viewport()->width());
}

TEST_F(Preferences, areChangedByTheWheelOnlyWithTheFocus) {
    auto& box = find<QComboBox>("depth");
    find<QWidget>("mute").setFocus();
    QWheelEvent wheel(QPointF(5, 5), box.mapToGlobal(QPoint(5, 5)), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&box, &wheel);
    EXPECT_EQ(box.currentIndex(), 0);
    EXPECT_FALSE(wheel.isAccepted()) << "it is for what scrolls";
    box.setFocus();
    QApplication::sendEvent(&box, &wheel);
    EXPECT_EQ(box.currentIndex(), 1);
}

/// An engine that knows more than the viewer does.
class FakePrefs final : public Prefs {
public:
    Status setPref(String const&, int) override { return Status(); }
    Status getPref(String const&, int&) const override { return Status(); }
    Status getPrefs(Vector<String>& names) const override {
        for (String const& name : {MediaGraphEngine::DECODE_CACHE_MIB, String("QUALITY"),
                                   Prefs::PRODUCER_CACHE_NB_HEAD_FRAMES, Prefs::PRODUCER_CACHE_NB_TAIL_FRAMES})
            names.push_back(name);
        return Status();
    }
};

TEST(FurtherPreferencesTest, areThoseThatHaveNoSettingOfTheirOwn) {
    EXPECT_EQ(EngineSettings::furtherPreferencesOf(FakePrefs()), QStringList{"QUALITY"});
}

TEST(FurtherPreferencesTest, areListedByNameAndNumber) {
    FurtherPreferences list;
    QSignalSpy chosen(&list, &FurtherPreferences::chosen);
    list.showPreferences({{"QUALITY", 3, ""}, {"SPEED", -1, "QRT_PREF_SPEED"}});
    auto* const quality = list.findChild<SettledSpinBox*>("QUALITY");
    ASSERT_TRUE(quality);
    EXPECT_EQ(quality->value(), 3);
    EXPECT_FALSE(list.findChild<SettledSpinBox*>("SPEED")->isEnabled());
    QTest::keyClick(quality, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(quality, "-70");
    QTest::keyClick(quality, Qt::Key_Return);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen[0], QVariantList({"QUALITY", -70}));
    list.setRefusal("QUALITY", "No.");
    EXPECT_EQ(list.findChildren<SettingRow*>().first()->refusal(), "No.");
    list.showPreferences({});
    EXPECT_TRUE(list.isHidden());
    EXPECT_FALSE(list.findChild<SettledSpinBox*>("QUALITY"));
}

}  // namespace
}  // namespace qrtplay
