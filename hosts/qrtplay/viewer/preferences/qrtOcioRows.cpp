#include "viewer/preferences/qrtOcioRows.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <QtGlobal>

#include "graph/qrtColourManagement.h"
#include "viewer/preferences/qrtSettingRow.h"

namespace qrtplay {

namespace {

constexpr char configExplanation[] =
    "An OpenColorIO file that says how colours are to be shown. Without one they are converted for a Rec. 709 screen.";

QComboBox* makeNames(char const* objectName) {
    auto* const names = new QComboBox;
    names->setObjectName(objectName);
    names->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    names->setMinimumContentsLength(8);
    return names;
}

void showNames(QComboBox& box, std::vector<std::string> const& names, std::string const& chosen) {
    const QSignalBlocker blocker(&box);
    box.clear();
    for (std::string const& name : names)
        box.addItem(QString::fromStdString(name));
    box.setCurrentIndex(box.findText(QString::fromStdString(chosen)));
    box.setEnabled(!names.empty());
}

}  // namespace

OcioRows::OcioRows(QWidget* parent)
    : QWidget(parent),
      m_display(makeNames("ocioDisplay")),
      m_view(makeNames("ocioView")),
      m_configRow(new SettingRow(QString(), configExplanation, makeConfigControl(), this)),
      m_displayRow(new SettingRow("Display", "The screen, by its name in the configuration.", m_display, this)),
      m_viewRow(new SettingRow("View", "How pictures look on it, by its name in the configuration.", m_view, this)) {
    auto* const rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(10);
    for (SettingRow* const row : {m_configRow, m_displayRow, m_viewRow})
        rows->addWidget(row);
    const auto activated = QOverload<int>::of(&QComboBox::activated);
    connect(m_display, activated, this, [this](int index) { chooseDisplay(m_display->itemText(index)); });
    connect(m_view, activated, this, [this](int index) { chooseView(m_view->itemText(index)); });
    showSettings({}, nullptr);
}

QWidget* OcioRows::makeConfigControl() {
    auto* const control = new QWidget;
    m_config = new QLineEdit(control);
    m_config->setObjectName("ocioConfig");
    m_config->setAccessibleName("Colour configuration");
    m_config->setToolTip(configExplanation);
    auto* const browse = new QPushButton("Browse...", control);
    browse->setObjectName("ocioBrowse");
    browse->setToolTip("Chooses an OpenColorIO configuration in a dialog.");
    m_none = new QPushButton("No colour management", control);
    m_none->setObjectName("ocioNone");
    auto* const label = new QLabel("Configuration", control);
    label->setBuddy(m_config);

    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(browse);
    buttons->addWidget(m_none, 1);
    auto* const column = new QVBoxLayout(control);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(label);
    column->addWidget(m_config);
    column->addLayout(buttons);
    control->setFocusProxy(m_config);

    browse->setAccessibleName("Browse for a colour configuration");
    connect(m_config, &QLineEdit::editingFinished, this, [this] { chooseConfig(m_config->text().trimmed()); });
    connect(browse, &QPushButton::clicked, this, &OcioRows::browse);
    connect(m_none, &QPushButton::clicked, this, [this] { chooseConfig(QString()); });
    return control;
}

void OcioRows::showSettings(OcioSettings const& settings, std::shared_ptr<ColourManagement const> const& colours) {
    m_settings = settings;
    // What the environment names is used whenever nothing else is.
    const QString fromEnvironment = qEnvironmentVariable("OCIO");
    m_config->setText(QString::fromStdString(settings.config));
    m_config->setPlaceholderText(fromEnvironment.isEmpty() ? "No colour management" : "OCIO: " + fromEnvironment);
    m_none->setText(fromEnvironment.isEmpty() ? "No colour management" : "That of OCIO");
    m_none->setAccessibleName(m_none->text());
    m_none->setToolTip(fromEnvironment.isEmpty()
                           ? "Converts the colours for a Rec. 709 screen, without a configuration."
                           : "Takes the configuration that the environment variable OCIO names.");
    m_none->setEnabled(!settings.config.empty() || !settings.display.empty() || !settings.view.empty());
    if (colours) {
        showNames(*m_display, colours->displays(), colours->display());
        showNames(*m_view, colours->views(colours->display()), colours->view());
    } else {
        showNames(*m_display, {}, {});
        showNames(*m_view, {}, {});
    }
}

void OcioRows::setRefusal(QString const& reason) {
    for (SettingRow* const row : {m_configRow, m_displayRow, m_viewRow})
        row->setRefusal(QString());
    if (m_changedRow) m_changedRow->setRefusal(reason);
}

void OcioRows::browse() {
    auto* const dialog =
        new QFileDialog(this, "Colour configuration", QFileInfo(QString::fromStdString(m_settings.config)).path(),
                        "OpenColorIO configurations (*.ocio *.ocioz);;All files (*)");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this, &OcioRows::chooseConfig);
    dialog->open();
}

// Displays and views of one configuration mean nothing in another.
void OcioRows::chooseConfig(QString const& path) {
    const QFileInfo file(path);
    const std::string config = (file.exists() ? file.absoluteFilePath() : path).toStdString();
    const bool isNone = path.isEmpty() && m_none->isEnabled();
    if (config == m_settings.config && !isNone) return;
    m_changedRow = m_configRow;
    emit chosen({config, {}, {}});
}

void OcioRows::chooseDisplay(QString const& name) {
    m_changedRow = m_displayRow;
    emit chosen({m_settings.config, name.toStdString(), {}});
}

void OcioRows::chooseView(QString const& name) {
    m_changedRow = m_viewRow;
    emit chosen({m_settings.config, m_display->currentText().toStdString(), name.toStdString()});
}

}  // namespace qrtplay
