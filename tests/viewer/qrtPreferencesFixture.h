#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>

#include "graph/qrtMediaGraphEngine.h"
#include "host/qrtTestClips.h"
#include "playback/qrtFrameReader.h"
#include "viewer/playing/qrtPlayback.h"
#include "viewer/preferences/qrtPreferencesPanel.h"
#include "viewer/preferences/qrtSettingRow.h"
#include "viewer/preferences/qrtSettledSpinBox.h"
#include "viewer/qrtViewerApplication.h"

namespace qrtplay {

// Two displays, the first with two views.
inline constexpr char ocioText[] = R"(ocio_profile_version: 2
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
inline constexpr char timelineText[] = R"({"OTIO_SCHEMA": "Timeline.1", "name": "titled", "tracks": {
  "OTIO_SCHEMA": "Stack.1", "children": [{"OTIO_SCHEMA": "Track.1", "kind": "Video", "children": [
    {"OTIO_SCHEMA": "Clip.1", "source_range": RANGE,
     "media_reference": {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "CLIP"}},
    {"OTIO_SCHEMA": "Clip.1", "source_range": RANGE, "media_reference": {
      "OTIO_SCHEMA": "GeneratorReference.1", "generator_kind": "text", "parameters": {"text": "The End"}}}]}]}})";
inline constexpr char rangeText[] = R"({"OTIO_SCHEMA": "TimeRange.1",
  "start_time": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 0},
  "duration": {"OTIO_SCHEMA": "RationalTime.1", "rate": 24, "value": 24}})";

inline QString writeFile(QTemporaryDir const& folder, QString const& name, QByteArray const& text) {
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

}  // namespace qrtplay
