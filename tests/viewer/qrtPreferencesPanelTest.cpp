// What the preferences panel carries out.
#include "viewer/qrtPreferencesFixture.h"

namespace qrtplay {
namespace {

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

}  // namespace
}  // namespace qrtplay
