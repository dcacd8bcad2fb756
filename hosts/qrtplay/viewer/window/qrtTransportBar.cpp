#include "viewer/window/qrtTransportBar.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include "viewer/window/qrtTransportIcons.h"
#include "viewer/window/qrtViewerActions.h"

namespace qrtplay {

namespace {

QLabel* makeLabel(QString const& name, QString const& toolTip, QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setAccessibleName(name);
    label->setToolTip(toolTip);
    return label;
}

}  // namespace

TransportBar::TransportBar(ViewerActions& actions, QWidget* parent)
    : QWidget(parent),
      m_actions(actions),
      m_position(makeLabel("Position", "The frame on show", this)),
      m_length(makeLabel("Length", "The length of what is open", this)),
      m_speed(makeLabel("Speed", "How fast it plays", this)) {
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(8, 2, 8, 2);
    row->setSpacing(2);
    row->addWidget(m_position);
    row->addStretch();
    const auto add = [&](ViewerCommand command, TransportShape shape) {
        QAction& action = actions[command];
        action.setIcon(transportIcon(shape, palette().color(QPalette::ButtonText)));
        auto* const button = new QToolButton(this);
        button->setDefaultAction(&action);
        button->setAutoRaise(true);
        button->setIconSize({20, 20});
        button->setFocusPolicy(Qt::TabFocus);
        button->setAccessibleName(action.text().remove('&'));
        row->addWidget(button);
    };
    add(ViewerCommand::go_to_start, TransportShape::to_start);
    add(ViewerCommand::step_back, TransportShape::frame_back);
    add(ViewerCommand::shuttle_back, TransportShape::backwards);
    add(ViewerCommand::toggle_play, TransportShape::play);
    add(ViewerCommand::shuttle_forward, TransportShape::forwards);
    add(ViewerCommand::step_forward, TransportShape::frame_on);
    add(ViewerCommand::go_to_end, TransportShape::to_end);
    row->addSpacing(8);
    row->addWidget(m_speed);
    row->addStretch();
    row->addWidget(m_length);
    m_speed->setMinimumWidth(m_speed->fontMetrics().horizontalAdvance("-8x ping-pong"));
}

void TransportBar::setPosition(QString const& position, QString const& length) {
    m_position->setText(position);
    m_length->setText(length);
}

void TransportBar::setPlaying(bool isPlaying) {
    if (isPlaying == m_isPlaying) return;
    m_isPlaying = isPlaying;
    QAction& action = m_actions[ViewerCommand::toggle_play];
    const auto shape = isPlaying ? TransportShape::pause : TransportShape::play;
    action.setIcon(transportIcon(shape, palette().color(QPalette::ButtonText)));
    action.setText(isPlaying ? "&Pause" : "&Play");
}

void TransportBar::setSpeed(QString const& text) {
    m_speed->setText(text);
}

}  // namespace qrtplay
