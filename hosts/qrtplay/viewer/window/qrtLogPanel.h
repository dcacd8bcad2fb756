#pragma once

#include <QStringList>
#include <QWidget>
#include <memory>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QToolButton;

namespace qrtplay {

/// The engine's messages as they come, newest at the bottom: a filter, a pause, clear, copy, save.
///
/// Takes the engine's log sink for as long as it lives and switches nothing on by itself: what the engine posts is
/// chosen by its environment variables, of which the panel tells. Messages come from any thread. At most 10,000 lines
/// are kept. Threading: the GUI thread.
class LogPanel final : public QWidget {
    Q_OBJECT

public:
    static constexpr int mostLines = 10000;

    explicit LogPanel(QWidget* parent = nullptr);
    /// Gives the sink back to Qt's message logger.
    ~LogPanel() override;

    /// A line of the host's own, with the time in front.
    void add(QString const& text);
    /// All that is kept, whatever the filter and the pause.
    [[nodiscard]] QStringList lines() const;
    /// What the filter lets through, and was there before the pause.
    [[nodiscard]] QStringList shownLines() const;
    /// Writes what is shown; a failure is told in the panel. False for a failure.
    bool saveTo(QString const& path);

public slots:
    /// Shows only lines with this text, in upper or lower case; empty for all.
    void setFilter(QString const& text);
    /// Lines go on being kept, and are shown when the pause ends.
    void setPaused(bool paused);
    void clear();
    /// The selected lines, or all that are shown.
    void copy();

private:
    class Inbox;

    void makeControls();
    Q_INVOKABLE void take();
    void append(QStringList const& lines);
    void showAll();
    void tell();
    void save();
    [[nodiscard]] bool passes(QString const& line) const;

    const std::shared_ptr<Inbox> m_inbox;
    QStringList m_lines;
    int m_shown = 0;     // of the kept lines; counts those that a pause holds back too
    int m_heldBack = 0;  // the last ones, come during a pause
    bool m_isPaused = false;
    QString m_failure;
    QLineEdit* m_filter;
    QPlainTextEdit* m_view;
    QToolButton* m_pause;
    QLabel* m_hint;
};

}  // namespace qrtplay
