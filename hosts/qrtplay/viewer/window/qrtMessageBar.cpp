#include "viewer/window/qrtMessageBar.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QToolButton>

namespace qrtplay {

namespace {

constexpr QRgb noticeColour = 0x3b82c4;
constexpr QRgb failureColour = 0xd03c32;
constexpr int stripWidth = 4;

QColor mixed(QColor const& base, QColor const& tint, qreal share) {
    const auto mix = [share](int from, int to) { return qRound(from + (to - from) * share); };
    return {mix(base.red(), tint.red()), mix(base.green(), tint.green()), mix(base.blue(), tint.blue())};
}

/// `text` in lines of `width` pixels, cut with an ellipsis after `most` of them.
QString cutText(QString const& text, QFontMetrics const& metrics, QFont const& font, int width, int most) {
    QString shown;
    int lines = 0;
    const QStringList paragraphs = text.split('\n');
    for (int i = 0; i < paragraphs.size(); ++i) {
        QTextLayout layout(paragraphs[i], font);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            const int end = line.textStart() + line.textLength();
            if (++lines < most || (end == paragraphs[i].size() && i + 1 == paragraphs.size())) continue;
            const QString rest = paragraphs[i].mid(line.textStart()) + (i + 1 < paragraphs.size() ? "…" : "");
            shown += paragraphs[i].left(line.textStart()) + metrics.elidedText(rest, Qt::ElideRight, width);
            layout.endLayout();
            return shown;
        }
        layout.endLayout();
        shown += paragraphs[i] + (i + 1 < paragraphs.size() ? "\n" : "");
    }
    return shown;
}

}  // namespace

/// Wraps its text, to a limited height; what can be selected is what is seen.
class MessageBar::Text final : public QLabel {
public:
    Text() {
        setTextFormat(Qt::PlainText);
        setWordWrap(true);
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
    }

    void show(QString const& text) {
        m_whole = text;
        cut();
        setAccessibleName(text);
        updateGeometry();
    }
    [[nodiscard]] QString const& whole() const noexcept { return m_whole; }

    // The height of the uncut text, so that it does not depend on what the last width has left of it.
    [[nodiscard]] int heightForWidth(int width) const override {
        const auto heightOf = [this, width](QString const& text) {
            return fontMetrics().boundingRect(0, 0, qMax(1, width), QWIDGETSIZE_MAX, Qt::TextWordWrap, text).height();
        };
        return qMin(heightOf(m_whole), heightOf(QString("\n").repeated(mostLines - 1)));
    }
    [[nodiscard]] QSize sizeHint() const override { return {0, fontMetrics().lineSpacing()}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void resizeEvent(QResizeEvent* event) override {
        QLabel::resizeEvent(event);
        cut();
    }
    void changeEvent(QEvent* event) override {
        QLabel::changeEvent(event);
        if (event->type() == QEvent::FontChange) cut();
    }

private:
    void cut() {
        const QString shown = cutText(m_whole, fontMetrics(), font(), width(), mostLines);
        if (shown != text()) setText(shown);
    }

    QString m_whole;
};

MessageBar::MessageBar(QWidget* parent)
    : QFrame(parent), m_icon(new QLabel), m_text(new Text), m_countText(new QLabel) {
    setAccessibleName("Messages");
    m_text->setObjectName("messageText");
    m_countText->setObjectName("messageCount");
    auto* const close = new QToolButton;
    close->setObjectName("messageClose");
    close->setText("Close");
    close->setAutoRaise(true);
    close->setToolTip("Put these messages away.");
    close->setAccessibleName("Close messages");
    connect(close, &QToolButton::clicked, this, &MessageBar::clear);

    auto* const row = new QHBoxLayout(this);
    constexpr int gap = 6;
    row->setContentsMargins(stripWidth + gap, gap, gap, gap);
    row->addWidget(m_icon);
    row->addWidget(m_text, 1);
    row->addWidget(m_countText);
    row->addWidget(close, 0, Qt::AlignVCenter);
    // Not a fixed height: layouts would take that of one line for it, whatever the width asks for.
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    hide();
}

void MessageBar::add(Kind kind, QString const& text) {
    const QString words = text.trimmed();
    if (words.isEmpty() || (!m_latest.isEmpty() && m_latest.back() == words)) return;
    m_kind = kind;
    m_latest << words;
    if (m_latest.size() > mostInToolTip) m_latest.removeFirst();
    ++m_count;
    refresh();
    show();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
    emit added(words);
}

void MessageBar::clear() {
    m_latest.clear();
    m_count = 0;
    hide();
    refresh();
}

QString MessageBar::text() const {
    return m_text->whole();
}

void MessageBar::refresh() {
    const QString words = m_latest.isEmpty() ? QString() : m_latest.back();
    m_text->show(words);
    m_countText->setText(QString("(%1 messages)").arg(m_count));
    m_countText->setVisible(m_count > 1);
    setAccessibleDescription(words);
    setToolTip(toolTipText());
    refreshIcon();
    update();
}

void MessageBar::refreshIcon() {
    const auto icon = m_kind == Kind::failure ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    m_icon->setPixmap(style()->standardIcon(icon, nullptr, this).pixmap(size, size));
}

QString MessageBar::toolTipText() const {
    if (m_latest.isEmpty()) return {};
    QStringList lines = m_latest;
    if (const auto earlier = m_count - m_latest.size(); earlier > 0)
        lines.prepend(QString("… and %1 before these").arg(earlier));
    // As rich text it is wrapped; what is in the messages is no markup.
    return "<p style=\"white-space:pre-wrap\">" + lines.join('\n').toHtmlEscaped() + "</p>";
}

void MessageBar::paintEvent(QPaintEvent*) {
    // From the palette at every time, so that text and ground fit in light and in dark.
    constexpr qreal tint = 0.18;
    const QColor colour(m_kind == Kind::failure ? failureColour : noticeColour);
    QPainter painter(this);
    painter.fillRect(rect(), mixed(palette().color(QPalette::Window), colour, tint));
    painter.fillRect(0, 0, stripWidth, height(), colour);
}

void MessageBar::changeEvent(QEvent* event) {
    QFrame::changeEvent(event);
    if (event->type() == QEvent::StyleChange) refreshIcon();
}

}  // namespace qrtplay
