#pragma once

#include <QComboBox>
#include <QSize>
#include <optional>

namespace qrtplay {

/// Chooses a resolution: that of the input, a usual one, or one that is typed as width x height.
///
/// Threading: the GUI thread.
class ResolutionEdit final : public QComboBox {
    Q_OBJECT

public:
    explicit ResolutionEdit(QWidget* parent = nullptr);

    /// Shows a choice, nothing for that of the input, without telling it. `ofInput` is invalid when there is no input.
    void showResolution(std::optional<QSize> chosen, QSize ofInput);

signals:
    void chosen(std::optional<QSize> resolution);
    /// What was typed is no resolution.
    void misunderstood();

private:
    void choose(QString const& text);
    void fill();

    std::optional<QSize> m_chosen;
    QSize m_ofInput;
    QString m_shown;
};

}  // namespace qrtplay
