#include "viewer/preferences/qrtResolutionEdit.h"

#include <QAbstractItemView>
#include <QLineEdit>
#include <QRegularExpression>
#include <QSignalBlocker>

namespace qrtplay {

namespace {

QString pixelsText(QSize size) {
    return QString("%1x%2").arg(size.width()).arg(size.height());
}

std::optional<QSize> sizeIn(QString const& text) {
    static const QRegularExpression pattern(R"(^\s*(\d{1,6})\s*[xX*\x{d7}]\s*(\d{1,6})\s*$)");
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch()) return {};
    return QSize(match.captured(1).toInt(), match.captured(2).toInt());
}

}  // namespace

ResolutionEdit::ResolutionEdit(QWidget* parent) : QComboBox(parent) {
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr);  // would finish "1280x7" with something else
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(8);
    lineEdit()->setAccessibleName("Resolution, width x height");
    connect(this, QOverload<int>::of(&QComboBox::activated), this, [this](int index) { choose(itemText(index)); });
    connect(lineEdit(), &QLineEdit::editingFinished, this, [this] { choose(currentText()); });
    fill();
}

void ResolutionEdit::showResolution(std::optional<QSize> chosen, QSize ofInput) {
    m_chosen = chosen;
    m_ofInput = ofInput;
    fill();
}

void ResolutionEdit::fill() {
    const QSignalBlocker blocker(this);
    clear();
    addItem(m_ofInput.isValid() ? "As the input, " + pixelsText(m_ofInput) : QString("As the input"));
    addItem("HD, 1920x1080", QSize(1920, 1080));
    addItem("UHD, 3840x2160", QSize(3840, 2160));
    const QSize half(qMax(1, m_ofInput.width() / 2), qMax(1, m_ofInput.height() / 2));
    if (m_ofInput.isValid()) addItem("Half of the input, " + pixelsText(half), half);

    constexpr int scrollBar = 24;
    view()->setMinimumWidth(view()->sizeHintForColumn(0) + scrollBar);  // the box itself may be narrower

    int shown = m_chosen ? -1 : 0;
    for (int i = 1; i < count() && m_chosen; ++i) {
        if (itemData(i).toSize() == *m_chosen) shown = i;
    }
    setCurrentIndex(shown);
    m_shown = shown < 0 ? pixelsText(*m_chosen) : itemText(shown);
    setEditText(m_shown);
    lineEdit()->setCursorPosition(0);  // the beginning says what it is when not all of it fits
}

void ResolutionEdit::choose(QString const& text) {
    if (text == m_shown) return;
    const int index = findText(text, Qt::MatchFixedString);
    const std::optional<QSize> size = index > 0 ? itemData(index).toSize() : sizeIn(text);
    const bool isUnderstood = index == 0 || size;
    m_shown = text;  // is told once, whatever Qt emits
    if (isUnderstood)
        emit chosen(size);
    else
        emit misunderstood();
}

}  // namespace qrtplay
