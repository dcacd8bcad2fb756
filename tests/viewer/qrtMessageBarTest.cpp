#include "viewer/window/qrtMessageBar.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <utility>

namespace qrtplay {
namespace {

constexpr auto notice = MessageBar::Kind::notice;
constexpr auto failure = MessageBar::Kind::failure;

/// A bar above something else, as in the window.
class MessageBars : public ::testing::Test {
protected:
    MessageBars() {
        auto* const column = new QVBoxLayout(&window);
        column->addWidget(&bar);
        column->addStretch(1);
        window.resize(500, 400);
        window.show();
    }
    QString shownText() const { return bar.findChild<QLabel*>("messageText")->text(); }
    QLabel* countLabel() const { return bar.findChild<QLabel*>("messageCount"); }
    /// After the layout has followed.
    int settledHeight() {
        EXPECT_TRUE(QTest::qWaitFor([this] { return bar.height() == bar.heightForWidth(bar.width()); }));
        return bar.height();
    }

    QWidget window;
    MessageBar bar;
};

TEST_F(MessageBars, isHiddenUntilThereIsAMessage) {
    EXPECT_FALSE(bar.isVisible());
    EXPECT_EQ(bar.text(), "");
    bar.add(failure, "clip.mp4: no such file");
    EXPECT_TRUE(bar.isVisible());
    EXPECT_EQ(bar.text(), "clip.mp4: no such file");
    EXPECT_EQ(shownText(), "clip.mp4: no such file");
    EXPECT_FALSE(countLabel()->isVisible());
}

TEST_F(MessageBars, passesOverEmptyTexts) {
    bar.add(notice, " \n");
    EXPECT_FALSE(bar.isVisible());
}

TEST_F(MessageBars, showsTheLatestWithACount) {
    bar.add(failure, "one");
    bar.add(notice, "two");
    bar.add(notice, "three");
    EXPECT_EQ(bar.text(), "three");
    EXPECT_EQ(countLabel()->text(), "(3 messages)");
    EXPECT_TRUE(countLabel()->isVisible());
    for (char const* const text : {"one", "two", "three"})
        EXPECT_TRUE(bar.toolTip().contains(text)) << text;
}

TEST_F(MessageBars, takesTheSameTextOnceInARow) {
    QSignalSpy added(&bar, &MessageBar::added);
    bar.add(failure, "one");
    bar.add(failure, "one");
    EXPECT_EQ(bar.count(), 1);
    EXPECT_EQ(added.count(), 1);
    bar.add(failure, "two");
    bar.add(failure, "one");
    EXPECT_EQ(bar.count(), 3);
    ASSERT_EQ(added.count(), 3);
    EXPECT_EQ(added.last().front().toString(), "one");
}

TEST_F(MessageBars, isPutAwayWithItsButton) {
    bar.add(failure, "one");
    QTest::mouseClick(bar.findChild<QToolButton*>("messageClose"), Qt::LeftButton);
    EXPECT_FALSE(bar.isVisible());
    EXPECT_EQ(bar.text(), "");
    bar.add(failure, "one");
    EXPECT_TRUE(bar.isVisible()) << "what was put away may come again";
    EXPECT_EQ(bar.count(), 1);
}

TEST_F(MessageBars, growsToAFewLinesAndNoFurther) {
    bar.add(notice, "short");
    const int one = settledHeight();
    bar.add(notice, QString("word ").repeated(30));
    const int several = settledHeight();
    EXPECT_GT(several, one);
    bar.add(notice, QString("word ").repeated(2000) + "the end");
    const int cut = settledHeight();
    EXPECT_GE(cut, several);
    EXPECT_GE(bar.findChild<QLabel*>("messageText")->height(), MessageBar::mostLines * bar.fontMetrics().lineSpacing());
    EXPECT_LE(cut, one + (MessageBar::mostLines - 1) * bar.fontMetrics().lineSpacing());
    EXPECT_TRUE(shownText().endsWith("…")) << shownText().right(40).toStdString();
    EXPECT_TRUE(bar.text().endsWith("the end"));
    EXPECT_TRUE(bar.toolTip().contains("the end"));
}

TEST_F(MessageBars, cutsTextsOfManyLines) {
    bar.add(notice, "one\ntwo\nthree\nfour\nfive");
    (void)settledHeight();
    EXPECT_EQ(shownText(), "one\ntwo\nthree…");
    bar.add(notice, "one\ntwo\nthree");
    EXPECT_EQ(shownText(), "one\ntwo\nthree");
}

TEST_F(MessageBars, showsMoreOfTheTextInAWiderWindow) {
    bar.add(notice, QString("word ").repeated(60));
    (void)settledHeight();
    ASSERT_TRUE(shownText().endsWith("…"));
    window.resize(1200, 400);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !shownText().endsWith("…"); }));
}

TEST_F(MessageBars, takesMarkupForText) {
    bar.add(failure, "<b>bold</b>.mp4 & more");
    EXPECT_EQ(shownText(), "<b>bold</b>.mp4 & more");
    EXPECT_TRUE(bar.toolTip().contains("&lt;b&gt;bold&lt;/b&gt;.mp4 &amp; more"));
}

TEST_F(MessageBars, limitsItsToolTipButNotItsCount) {
    for (int i = 0; i < 100; ++i)
        bar.add(failure, QString("message %1.").arg(i));
    EXPECT_EQ(countLabel()->text(), "(100 messages)");
    EXPECT_TRUE(bar.toolTip().contains("… and 80 before these"));
    EXPECT_FALSE(bar.toolTip().contains("message 79."));
    EXPECT_TRUE(bar.toolTip().contains("message 80."));
}

TEST_F(MessageBars, speaksToScreenReaders) {
    bar.add(failure, "clip.mp4: no such file");
    EXPECT_EQ(bar.accessibleName(), "Messages");
    EXPECT_EQ(bar.accessibleDescription(), "clip.mp4: no such file");
}

double luminance(QColor const& colour) {
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

/// How the Web Content Accessibility Guidelines measure it; they want 4.5 for text.
double contrast(QColor const& one, QColor const& other) {
    const double a = luminance(one);
    const double b = luminance(other);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

TEST_F(MessageBars, canBeReadInLightAndInDark) {
    for (auto const& [paper, text] : {std::pair(Qt::white, Qt::black), std::pair(Qt::black, Qt::white)}) {
        QPalette palette;
        palette.setColor(QPalette::Window, paper);
        palette.setColor(QPalette::WindowText, text);
        bar.setPalette(palette);
        for (const auto kind : {notice, failure}) {
            bar.clear();
            bar.add(kind, "text");
            (void)settledHeight();
            const QImage image = bar.grab().toImage();
            const QColor ground = image.pixelColor(image.width() / 2, 2);
            EXPECT_GE(contrast(ground, text), 4.5);
            EXPECT_NE(ground, QColor(paper)) << "stands out from the window";
        }
    }
}

}  // namespace
}  // namespace qrtplay
