// What the preferences panel shows: refusals, colours, what is fixed, kept or set by others.
#include <QCheckBox>
#include <QColorDialog>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QWheelEvent>

#include "viewer/preferences/qrtColourButton.h"
#include "viewer/qrtPreferencesFixture.h"

namespace qrtplay {
namespace {

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

}  // namespace
}  // namespace qrtplay
