#include "viewer/preferences/qrtFurtherPreferences.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "graph/qrtMediaGraphEngine.h"
#include "viewer/preferences/qrtEngineSettings.h"
#include "viewer/preferences/qrtSettingRow.h"
#include "viewer/preferences/qrtSettledSpinBox.h"

namespace qrtplay {
namespace {

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
