#include "viewer/export/qrtExportDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QUrl>
#include <array>
#include <utility>

#include "encode/qrtOutputFormat.h"
#include "playback/qrtTimecode.h"
#include "viewer/export/qrtExportProcess.h"

namespace qrtplay {

namespace {

struct OfferedFormat {
    FileKind kind;
    char const* ending;
    char const* text;
};
constexpr std::array offeredFormats{
    OfferedFormat{FileKind::mp4, ".mp4", "H.264 movie (.mp4)"},
    OfferedFormat{FileKind::mov, ".mov", "ProRes movie (.mov)"},
    OfferedFormat{FileKind::mkv, ".mkv", "FFV1 movie, loses nothing (.mkv)"},
    OfferedFormat{FileKind::png, ".png", "PNG images (.png)"},
    OfferedFormat{FileKind::tiff, ".tif", "TIFF images (.tif)"},
    OfferedFormat{FileKind::exr, ".exr", "OpenEXR images, linear light (.exr)"},
    OfferedFormat{FileKind::jpeg, ".jpg", "JPEG images (.jpg)"},
};

QString textOfDepth(PixelFormat depth) {
    switch (depth) {
        case PixelFormat::rgba8: return "8 bits";
        case PixelFormat::rgba16: return "16 bits";
        case PixelFormat::rgba16f: return "16 bits, floating point";
        case PixelFormat::rgba32f: break;
    }
    return "32 bits, floating point";
}

QString textOfRange(ExportJob const& job) {
    if (job.frameCount() == 1) return QString("Frame %1, 1 frame").arg(job.range.first);
    return QString("Frames %1 to %2, %3").arg(job.range.first).arg(job.range.last).arg(framesText(job.frameCount()));
}

/// For finding a control, for seeing what it does, and for hearing it.
template <class Control>
Control* named(Control* control, char const* objectName, QString const& accessibleName, QString const& toolTip) {
    control->setObjectName(objectName);
    control->setAccessibleName(accessibleName);
    control->setToolTip(toolTip);
    return control;
}

}  // namespace

ExportDialog::ExportDialog(ExportJob job, QString program, QString folder, QWidget* parent)
    : QDialog(parent),
      m_job(std::move(job)),
      m_program(std::move(program)),
      m_folder(std::move(folder)),
      m_process(new ExportProcess(this)) {
    setWindowTitle("Export");
    setModal(false);
    makeControls();
    makeButtons();
    layOut();
    connectControls();
    setOutput(proposedOutput(m_job, m_folder));
}

ExportDialog::~ExportDialog() {
    // Its end shall not be told to widgets that are half gone.
    m_process->disconnect(this);
}

void ExportDialog::makeControls() {
    m_output = named(new QLineEdit, "exportOutput", "File to export to",
                     "The file to write. Images are numbered where it has ####; the ending says what is written.");
    m_browse = named(new QPushButton("Browse…"), "exportBrowse", "Browse for the file", "Choose folder and name.");
    m_format = named(new QComboBox, "exportFormat", "Format", "What is written. Changes the ending of the name.");
    for (OfferedFormat const& format : offeredFormats)
        m_format->addItem(format.text, format.ending);
    m_depth = named(new QComboBox, "exportDepth", "Bit depth", "Bits per colour channel of the exported frames.");
    m_sound = named(new QCheckBox("With sound"), "exportSound", "With sound", "Movies get the sound of the timeline.");
    m_sound->setChecked(true);
    m_onlyMissing = named(new QCheckBox("Only missing frames"), "exportOnlyMissing", "Only missing frames",
                          "Frames whose files are there already are left as they are.");
    m_bar = named(new QProgressBar, "exportProgress", "Progress", "How much is exported.");
    m_bar->setTextVisible(false);
    m_barText =
        named(new QLabel, "exportProgressText", "Progress in words", "How much is exported, and the time it takes.");
    m_failures = named(new QPlainTextEdit, "exportFailures", "Frames that failed",
                       "Frames that could not be had, and why. The others are exported.");
    m_failures->setReadOnly(true);
    m_failures->setMaximumBlockCount(ExportReport::mostFailures);
    constexpr int severalLines = 90;
    m_failures->setMinimumHeight(severalLines);
    m_failures->hide();
    m_icon = new QLabel;
    m_icon->setAlignment(Qt::AlignTop);
    m_message = named(new QLabel, "exportMessage", "Message", "");
    m_message->setTextFormat(Qt::PlainText);
    m_message->setWordWrap(true);
    m_message->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
}

void ExportDialog::makeButtons() {
    m_openFolder = named(new QPushButton("Open folder"), "exportOpenFolder", "Open folder",
                         "Show the folder with what was exported.");
    m_start = named(new QPushButton, "exportStart", "Export", "Begin to export.");
    m_cancel = named(new QPushButton("Cancel export"), "exportCancel", "Cancel export",
                     "End the export after the frames that are being written. What is whole stays.");
    m_close = named(new QPushButton, "exportClose", "Close", "Close this window.");
    for (QPushButton* const button : {m_browse, m_openFolder, m_cancel, m_close})
        button->setAutoDefault(false);
    m_start->setDefault(true);
}

void ExportDialog::layOut() {
    auto* const outputRow = new QHBoxLayout;
    outputRow->addWidget(m_output, 1);
    outputRow->addWidget(m_browse);
    auto* const optionRow = new QHBoxLayout;
    optionRow->addWidget(m_sound);
    optionRow->addWidget(m_onlyMissing);
    optionRow->addStretch(1);
    auto* const range = named(new QLabel(textOfRange(m_job)), "exportRange", "Range",
                              "From the in point to the out point, both included.");
    auto* const form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow("&File", outputRow);
    form->addRow("F&ormat", m_format);
    form->addRow("&Bit depth", m_depth);
    form->addRow("Range", range);
    form->addRow("", optionRow);
    static_cast<QLabel*>(form->labelForField(outputRow))->setBuddy(m_output);

    auto* const messageRow = new QHBoxLayout;
    messageRow->addWidget(m_icon);
    messageRow->addWidget(m_message, 1);
    auto* const buttonRow = new QHBoxLayout;
    buttonRow->addWidget(m_openFolder);
    buttonRow->addStretch(1);
    for (QPushButton* const button : {m_cancel, m_close, m_start})
        buttonRow->addWidget(button);

    auto* const all = new QVBoxLayout(this);
    all->addLayout(form);
    all->addWidget(m_bar);
    all->addWidget(m_barText);
    all->addWidget(m_failures, 1);
    all->addLayout(messageRow);
    all->addStretch(0);
    all->addLayout(buttonRow);
    constexpr int wideEnoughForPaths = 620;
    constexpr int narrowest = 480;
    constexpr int usualHeight = 310;
    setMinimumWidth(narrowest);
    resize(wideEnoughForPaths, usualHeight);
}

void ExportDialog::connectControls() {
    connect(m_output, &QLineEdit::textChanged, this, &ExportDialog::outputChanged);
    connect(m_browse, &QPushButton::clicked, this, &ExportDialog::browse);
    connect(m_format, qOverload<int>(&QComboBox::activated), this, &ExportDialog::chooseEnding);
    connect(m_onlyMissing, &QCheckBox::toggled, this, &ExportDialog::outputChanged);
    connect(m_start, &QPushButton::clicked, this, &ExportDialog::start);
    connect(m_cancel, &QPushButton::clicked, this, &ExportDialog::cancel);
    connect(m_close, &QPushButton::clicked, this, &ExportDialog::reject);
    connect(m_openFolder, &QPushButton::clicked, this, &ExportDialog::openFolder);
    connect(m_process, &ExportProcess::progressed, this, &ExportDialog::showProgress);
    connect(m_process, &ExportProcess::ended, this, &ExportDialog::noteEnd);
}

QString ExportDialog::output() const {
    QString path = m_output->text().trimmed();
    if (path.isEmpty()) return {};
    if (path == "~" || path.startsWith("~/")) path.replace(0, 1, QDir::homePath());
    return QDir::cleanPath(QDir(m_folder).absoluteFilePath(path));
}

void ExportDialog::setOutput(QString const& path) {
    m_output->setText(path);
    outputChanged();
}

bool ExportDialog::isRunning() const {
    return m_process->isRunning();
}

void ExportDialog::setPatience(std::chrono::milliseconds patience) {
    m_process->setPatience(patience);
}

ExportTarget ExportDialog::target() const {
    ExportTarget target;
    target.output = output();
    target.depth = static_cast<PixelFormat>(m_depth->currentData().toInt());
    target.withSound = m_sound->isChecked();
    target.onlyMissing = m_onlyMissing->isChecked();
    return target;
}

void ExportDialog::browse() {
    auto* const dialog = new QFileDialog(this, "Export to", QFileInfo(output()).path(), "All files (*)");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setOption(QFileDialog::DontConfirmOverwrite);  // this dialog asks itself
    dialog->selectFile(QFileInfo(output()).fileName());
    connect(dialog, &QFileDialog::fileSelected, this, [this](QString const& path) {
        const std::optional<FileKind> kind = fileKindOf(path.toStdString());
        const QString ending = kind ? path.mid(path.lastIndexOf('.')) : m_format->currentData().toString();
        setOutput(withEnding(path, ending, m_job.frameCount()));
    });
    dialog->open();
}

void ExportDialog::chooseEnding() {
    setOutput(withEnding(m_output->text().trimmed(), m_format->currentData().toString(), m_job.frameCount()));
}

void ExportDialog::outputChanged() {
    m_question = Question::none;
    m_result.clear();
    if (const std::optional<FileKind> kind = fileKindOf(output().toStdString()))
        for (size_t i = 0; i < offeredFormats.size(); ++i)
            if (offeredFormats[i].kind == *kind) m_format->setCurrentIndex(static_cast<int>(i));
    fillDepths();
    refresh();
}

void ExportDialog::fillDepths() {
    const std::vector<PixelFormat> depths = depthsOf(output());
    std::vector<PixelFormat> shown;
    shown.reserve(static_cast<size_t>(m_depth->count()));
    for (int i = 0; i < m_depth->count(); ++i)
        shown.push_back(static_cast<PixelFormat>(m_depth->itemData(i).toInt()));
    if (depths.empty() || depths == shown) return;  // what the user chose is kept
    m_depth->clear();
    for (const PixelFormat depth : depths)
        m_depth->addItem(textOfDepth(depth), static_cast<int>(depth));
    m_depth->setCurrentIndex(m_depth->findData(static_cast<int>(suitableDepth(output(), m_job.play.depth))));
}

bool ExportDialog::asksToReplace() {
    const ExportTarget wanted = target();
    const bool keepsFiles = !wanted.isMovie() && wanted.onlyMissing;
    if (keepsFiles || m_question == Question::replace) return false;
    const int64 existing = countExisting(m_job, wanted);
    if (existing == 0) return false;
    m_question = Question::replace;
    m_replaceText = wanted.fileName() + " is there already. \"Replace\" writes it anew.";
    if (m_job.frameCount() > 1 && !wanted.isMovie())
        m_replaceText = QString(
                            "%1 of the %2 %3 there already. \"Replace\" writes them anew; \"Only missing frames\" "
                            "keeps them.")
                            .arg(existing)
                            .arg(framesText(m_job.frameCount()), existing == 1 ? "is" : "are");
    return true;
}

void ExportDialog::start() {
    if (isRunning()) return;
    if (const QString problem = problemOf(m_job, output()); !problem.isEmpty()) {
        conclude(false, problem, Tone::bad);
        return;
    }
    if (!asksToReplace()) {
        m_question = Question::none;
        m_result.clear();
        m_writtenFolder.clear();
        m_failures->clear();
        m_failures->hide();
        m_shownFailures = 0;
        m_process->start(m_program, renderArguments(m_job, target()));
    }
    refresh();
}

void ExportDialog::cancel() {
    m_process->cancel();
    refresh();
}

void ExportDialog::reject() {
    if (!isRunning()) {
        QDialog::reject();
    } else if (m_question == Question::close || m_process->isCancelled()) {
        m_closesAtEnd = true;
        cancel();
    } else {
        m_question = Question::close;
        refresh();
    }
}

void ExportDialog::showProgress() {
    ExportReport const& report = m_process->report();
    constexpr int unknown = 0;
    m_bar->setRange(0, report.hasBegun() ? qMax(1, static_cast<int>(report.total())) : unknown);
    m_bar->setValue(static_cast<int>(report.done()));
    QString text = report.hasBegun() ? QString("%1 of %2").arg(report.done()).arg(framesText(report.total()))
                                     : QString("Opening…");
    if (const auto left = report.secondsLeft(); left && isRunning())
        text += ", " + QString::fromStdString(durationText(*left)) + " left";
    m_barText->setText(text);
    QStringList const& failures = report.failures();
    if (failures.size() == m_shownFailures) return;
    m_failures->appendPlainText(failures.mid(m_shownFailures).join('\n'));
    m_failures->show();
    m_shownFailures = static_cast<int>(failures.size());
}

void ExportDialog::noteEnd() {
    const ExportTarget wanted = target();
    const ExportSummary summary = summaryOf(m_process->report(), m_process->end(), wanted);
    if (summary.hasWritten) m_writtenFolder = QFileInfo(wanted.output).path();
    if (summary.canGoOn) {
        const QSignalBlocker blocker(m_onlyMissing);
        m_onlyMissing->setChecked(true);
    }
    QString text = summary.text;
    for (QString const& warning : m_process->report().warnings())
        text += "\nNote: " + warning;
    conclude(summary.success, text, summary.success ? Tone::good : m_process->isCancelled() ? Tone::plain : Tone::bad);
}

void ExportDialog::conclude(bool success, QString const& text, Tone tone) {
    m_question = Question::none;
    m_result = text;
    m_resultTone = tone;
    refresh();
    if (std::exchange(m_closesAtEnd, false)) QDialog::reject();
    emit finished(success, text);
}

void ExportDialog::refresh() {
    updateControls();
    updateMessage();
}

void ExportDialog::updateControls() {
    const bool runs = isRunning();
    const bool isProblem = !problemOf(m_job, output()).isEmpty();
    const bool isMovie = target().isMovie();
    for (QWidget* const control : {static_cast<QWidget*>(m_output), static_cast<QWidget*>(m_browse),
                                   static_cast<QWidget*>(m_format), static_cast<QWidget*>(m_depth)})
        control->setEnabled(!runs);
    m_sound->setEnabled(!runs && isMovie);
    m_onlyMissing->setEnabled(!runs && !isMovie);
    m_start->setText(m_question == Question::replace ? "Replace" : "Export");
    m_start->setAccessibleName(m_start->text());
    m_start->setEnabled(!runs && !isProblem);
    m_cancel->setEnabled(runs && !m_process->isCancelled());
    m_close->setText(m_question == Question::close ? "Cancel and close" : "Close");
    m_close->setAccessibleName(m_close->text());
    m_openFolder->setVisible(!m_writtenFolder.isEmpty() && !runs);
    m_bar->setVisible(runs);
    m_barText->setVisible(runs);
    if (runs) showProgress();
}

void ExportDialog::updateMessage() {
    if (isRunning()) {
        if (m_process->isCancelled())
            say("Cancelling: the frames that are being written are finished first.", Tone::plain);
        else if (m_question == Question::close)
            say("The export still runs. \"Cancel and close\" ends it; otherwise just wait.", Tone::bad);
        else
            say("", Tone::plain);
    } else if (m_question == Question::replace) {
        say(m_replaceText, Tone::bad);
    } else if (!m_result.isEmpty()) {
        say(m_result, m_resultTone);
    } else {
        say(problemOf(m_job, output()), Tone::plain);
    }
}

void ExportDialog::say(QString const& text, Tone tone) {
    constexpr QStyle::StandardPixmap icons[] = {QStyle::SP_MessageBoxInformation, QStyle::SP_DialogApplyButton,
                                                QStyle::SP_MessageBoxWarning};
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    m_icon->setPixmap(style()->standardIcon(icons[static_cast<int>(tone)], nullptr, this).pixmap(size, size));
    m_icon->setVisible(!text.isEmpty());
    m_message->setVisible(!text.isEmpty());
    m_message->setText(text);
    m_message->setAccessibleDescription(text);
}

void ExportDialog::openFolder() {
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(m_writtenFolder)))
        say("The folder cannot be shown on this system. It is " + m_writtenFolder, Tone::bad);
}

}  // namespace qrtplay
