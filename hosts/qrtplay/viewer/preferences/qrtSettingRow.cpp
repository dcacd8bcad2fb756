#include "viewer/preferences/qrtSettingRow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "base/qrtColourValue.h"

namespace qrtplay {

namespace {

constexpr int nameWidth = 104;  // leaves the control enough of a dock 320 pixels wide

QLabel* makeNote(QWidget* parent) {
    auto* const note = new QLabel(parent);
    note->setTextFormat(Qt::PlainText);
    note->setWordWrap(true);
    QFont font = note->font();
    font.setPointSizeF(font.pointSizeF() * 0.9);
    note->setFont(font);
    return note;
}

QColor faded(QColor const& one, QColor const& other, double share) {
    const auto mix = [&](double left, double right) {
        return static_cast<ColourValue>(left * share + right * (1 - share));
    };
    return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                            mix(one.blueF(), other.blueF()));
}

void setTextColour(QLabel& label, QColor const& colour) {
    QPalette palette = label.palette();
    if (palette.color(QPalette::WindowText) == colour) return;
    palette.setColor(QPalette::WindowText, colour);
    label.setPalette(palette);
}

}  // namespace

SettingRow::SettingRow(QString const& name, QString const& explanation, QWidget* control, QWidget* parent)
    : QWidget(parent),
      m_control(control),
      m_explanationText(explanation),
      m_explanation(makeNote(this)),
      m_refusal(makeNote(this)) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    auto* const line = new QHBoxLayout;
    line->setSpacing(8);
    if (!name.isEmpty()) {
        auto* const label = new QLabel(name, this);
        label->setMinimumWidth(nameWidth);
        label->setBuddy(control);
        label->setToolTip(explanation);
        line->addWidget(label);
        control->setAccessibleName(name);
    }
    line->addWidget(control, 1);
    column->addLayout(line);
    column->addWidget(m_explanation);
    column->addWidget(m_refusal);
    control->setParent(this);
    control->setToolTip(explanation);
    control->setAccessibleDescription(explanation);
    m_explanation->setText(explanation);
    m_refusal->setObjectName("refusal");
    m_refusal->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_refusal->hide();
    guardWheel(control);
    for (QWidget* const part : control->findChildren<QWidget*>())
        guardWheel(part);
    colourTexts();
}

void SettingRow::setRefusal(QString const& reason) {
    m_refusal->setText(reason);
    m_refusal->setVisible(!reason.isEmpty());
    m_control->setAccessibleDescription(reason.isEmpty() ? m_explanationText : reason);
}

QString SettingRow::refusal() const {
    return m_refusal->text();
}

void SettingRow::setFixedBy(QString const& variable) {
    m_control->setEnabled(variable.isEmpty());
    m_explanation->setText(variable.isEmpty()
                               ? m_explanationText
                               : m_explanationText + "\nFixed by the environment variable " + variable + ".");
    m_control->setToolTip(m_explanation->text());
}

void SettingRow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) colourTexts();
}

// From the palette, so that both can be read on light and on dark ground.
void SettingRow::colourTexts() {
    const QColor text = palette().color(QPalette::Active, QPalette::WindowText);
    const QColor ground = palette().color(QPalette::Active, QPalette::Window);
    const bool isDark = ground.lightness() < text.lightness();
    constexpr double textShare = 0.68;
    setTextColour(*m_explanation, faded(text, ground, textShare));
    setTextColour(*m_refusal, isDark ? QColor(255, 138, 128) : QColor(176, 0, 32));
}

void SettingRow::guardWheel(QWidget* widget) {
    if (widget->focusPolicy() == Qt::WheelFocus) widget->setFocusPolicy(Qt::StrongFocus);
    widget->installEventFilter(this);
}

bool SettingRow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Wheel || static_cast<QWidget*>(watched)->hasFocus()) return false;
    event->ignore();  // for what scrolls
    return true;
}

}  // namespace qrtplay
