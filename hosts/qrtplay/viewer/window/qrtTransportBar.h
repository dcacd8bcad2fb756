#pragma once

#include <QWidget>

class QLabel;

namespace qrtplay {

class ViewerActions;

/// The buttons of a player, where it is, and how fast it plays.
///
/// Threading: the GUI thread.
class TransportBar final : public QWidget {
    Q_OBJECT

public:
    explicit TransportBar(ViewerActions& actions, QWidget* parent = nullptr);

    /// The frame on show and the length of the timeline, in words.
    void setPosition(QString const& position, QString const& length);
    /// What the middle button would do next.
    void setPlaying(bool isPlaying);
    /// Such as "2x", "-1x"; empty while nothing plays.
    void setSpeed(QString const& text);

private:
    ViewerActions& m_actions;
    bool m_isPlaying = false;
    QLabel* m_position;
    QLabel* m_length;
    QLabel* m_speed;
};

}  // namespace qrtplay
