#include "viewer/preferences/qrtFurtherPreferences.h"

#include <QGroupBox>
#include <QVBoxLayout>
#include <limits>

#include "viewer/preferences/qrtSettingRow.h"
#include "viewer/preferences/qrtSettledSpinBox.h"

namespace qrtplay {

namespace {

QVBoxLayout* makeRowsLayout(QWidget* parent) {
    auto* const box = new QGroupBox("Further", parent);
    auto* const around = new QVBoxLayout(parent);
    around->setContentsMargins(0, 0, 0, 0);
    around->addWidget(box);
    auto* const rows = new QVBoxLayout(box);
    rows->setSpacing(10);
    return rows;
}

}  // namespace

FurtherPreferences::FurtherPreferences(QWidget* parent) : QWidget(parent), m_rowsLayout(makeRowsLayout(this)) {
    hide();
}

void FurtherPreferences::showPreferences(std::vector<Preference> const& preferences) {
    QMap<QString, Row> gone = m_rows;
    for (Preference const& preference : preferences)
        gone.remove(preference.name);
    for (auto each = gone.begin(); each != gone.end(); ++each)
        delete m_rows.take(each.key()).row;

    for (Preference const& preference : preferences) {
        if (!m_rows.contains(preference.name)) m_rows.insert(preference.name, addRow(preference.name));
        Row const& row = m_rows[preference.name];
        row.number->showValue(preference.value);
        row.row->setFixedBy(preference.fixedBy);
    }
    setVisible(!m_rows.isEmpty());
}

void FurtherPreferences::setRefusal(QString const& name, QString const& reason) {
    if (m_rows.contains(name)) m_rows[name].row->setRefusal(reason);
}

FurtherPreferences::Row FurtherPreferences::addRow(QString const& name) {
    auto* const number = new SettledSpinBox;
    number->setObjectName(name);
    number->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    // The control below its name: the engine's names are long.
    auto* const row = new SettingRow(QString(), name + ": a number that the engine itself defines.", number, this);
    number->setAccessibleName(name);
    m_rowsLayout->addWidget(row);
    connect(number, &SettledSpinBox::settled, this, [this, name](int value) { emit chosen(name, value); });
    return {row, number};
}

}  // namespace qrtplay
