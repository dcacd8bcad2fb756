#pragma once

#include <QFrame>
#include <QStringList>

class QLabel;

namespace qrtplay {

/// Failures and notices in words, above the picture, until the user closes them or the next ones take their place.
/// The same text is not added twice in a row; of many the latest is shown with a count, the others in the tool tip.
///
/// A long text is cut after a few lines; the tool tip has all of it. Threading: the GUI thread.
class MessageBar final : public QFrame {
    Q_OBJECT

public:
    enum class Kind { notice, failure };
    static constexpr int mostLines = 3;       ///< of the text
    static constexpr int mostInToolTip = 20;  ///< messages; a taller tool tip leaves the screen

    explicit MessageBar(QWidget* parent = nullptr);

    void add(Kind kind, QString const& text);
    void clear();
    [[nodiscard]] QString text() const;  ///< shown at present, uncut; empty when hidden
    [[nodiscard]] int count() const noexcept { return m_count; }

signals:
    void added(QString const& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    class Text;

    void refresh();
    void refreshIcon();
    [[nodiscard]] QString toolTipText() const;

    QStringList m_latest;  // the last ones, at most `mostInToolTip`
    int m_count = 0;
    Kind m_kind = Kind::notice;
    QLabel* m_icon;
    Text* m_text;
    QLabel* m_countText;
};

}  // namespace qrtplay
