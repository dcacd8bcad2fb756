#include "viewer/window/qrtLogPanel.h"

#include <QClipboard>
#include <QFileDialog>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSaveFile>
#include <QScrollBar>
#include <QTime>
#include <QToolButton>
#include <algorithm>
#include <mutex>
#include <utility>

#include "base/qrtKit.h"
#include "foundation/core/qrtPlatform.h"
#include "foundation/logger/qrtLogMsg.h"

namespace qrtplay {

namespace {

constexpr char silentHint[] =
    "The engine speaks only when the environment variable QRT_DEBUG_PLAYER is set before the start, as in: "
    "QRT_DEBUG_PLAYER=1 qrtplay clip.mp4";
constexpr char speakingHint[] =
    "The engine tells every step, because the environment variable QRT_DEBUG_PLAYER is set.";
constexpr char hintToolTip[] =
    "TOLLAN_DUMP_VERSION_INFO=1 makes the engine tell its version on the terminal; ZR_DEBUG_OTIO=1 makes it tell there "
    "what it reads in play parameters.";

/// One message is one line, whatever is in it.
QString singleLine(QString const& text) {
    return text.trimmed().replace('\n', ' ');
}

QToolButton* logButton(char const* text, char const* toolTip) {
    auto* const button = new QToolButton;
    button->setText(text);
    button->setToolTip(toolTip);
    button->setAccessibleName(QString(text).remove("…") + " log");
    button->setObjectName(QString("log%1").arg(QString(text).remove("…")));
    return button;
}

}  // namespace

/// Where the posting threads leave their messages, with locks of theirs held: nothing here waits for anything but them.
/// Outlives the panel for as long as a thread is still on its way out of the sink.
class LogPanel::Inbox final {
public:
    explicit Inbox(LogPanel& panel) : m_panel(&panel) {}

    /// The panel is told once about all that comes until it has taken it.
    void put(QString const& text) {
        const std::lock_guard lock(m_mutex);
        m_lines << QTime::currentTime().toString("HH:mm:ss.zzz  ") + text;
        if (m_lines.size() > mostLines) m_lines.removeFirst();
        if (!m_panel || std::exchange(m_hasTold, true)) return;
        QMetaObject::invokeMethod(m_panel, "take", Qt::QueuedConnection);
    }

    [[nodiscard]] QStringList takeAll() {
        const std::lock_guard lock(m_mutex);
        m_hasTold = false;
        return std::exchange(m_lines, {});
    }

    void close() {
        const std::lock_guard lock(m_mutex);
        m_panel = nullptr;
    }

private:
    std::mutex m_mutex;
    // Under m_mutex.
    LogPanel* m_panel;
    QStringList m_lines;
    bool m_hasTold = false;
};

LogPanel::LogPanel(QWidget* parent) : QWidget(parent), m_inbox(std::make_shared<Inbox>(*this)) {
    makeControls();
    tell();
    LogMsg::setSink([inbox = m_inbox](LogMsg const& message) {
        QString line = singleLine(QString::fromStdString(message.text()));
        if (!message.channel().empty()) line.prepend(QString::fromStdString(message.channel()) + "  ");
        inbox->put(line);
    });
}

LogPanel::~LogPanel() {
    LogMsg::setSink({});
    m_inbox->close();
}

void LogPanel::makeControls() {
    m_filter = new QLineEdit;
    m_filter->setObjectName("logFilter");
    m_filter->setPlaceholderText("Filter");
    m_filter->setClearButtonEnabled(true);
    m_filter->setAccessibleName("Filter log");
    m_filter->setToolTip("Show only lines with this text, in upper or lower case.");
    m_pause = logButton("Pause", "Hold the display; lines go on being kept.");
    m_pause->setCheckable(true);
    QToolButton* const clearButton = logButton("Clear", "Forget all lines.");
    QToolButton* const copyButton = logButton("Copy", "Copy the selected lines, or all that are shown.");
    QToolButton* const saveButton = logButton("Save…", "Save the lines that are shown to a file.");
    m_view = new QPlainTextEdit;
    m_view->setObjectName("logView");
    m_view->setAccessibleName("Log");
    m_view->setToolTip("Messages, the newest at the bottom.");
    m_view->setReadOnly(true);
    m_view->setUndoRedoEnabled(false);
    m_view->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_view->setMaximumBlockCount(mostLines);
    m_view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_hint = new QLabel;
    m_hint->setObjectName("logHint");
    m_hint->setAccessibleName("About the log");
    m_hint->setToolTip(hintToolTip);
    m_hint->setWordWrap(true);
    m_hint->setTextFormat(Qt::PlainText);
    m_hint->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* const row = new QHBoxLayout;
    row->addWidget(m_filter, 1);
    for (QToolButton* const button : {m_pause, clearButton, copyButton, saveButton})
        row->addWidget(button);
    auto* const all = new QVBoxLayout(this);
    all->addLayout(row);
    all->addWidget(m_view, 1);
    all->addWidget(m_hint);

    connect(m_filter, &QLineEdit::textChanged, this, [this] { showAll(); });
    connect(m_pause, &QToolButton::toggled, this, &LogPanel::setPaused);
    connect(clearButton, &QToolButton::clicked, this, &LogPanel::clear);
    connect(copyButton, &QToolButton::clicked, this, &LogPanel::copy);
    connect(saveButton, &QToolButton::clicked, this, &LogPanel::save);
}

void LogPanel::add(QString const& text) {
    m_inbox->put(singleLine(text));
    take();
}

QStringList LogPanel::lines() const {
    return m_lines;
}

QStringList LogPanel::shownLines() const {
    QStringList shown;
    for (int i = 0; i < m_lines.size() - m_heldBack; ++i)
        if (passes(m_lines[i])) shown << m_lines[i];
    return shown;
}

bool LogPanel::passes(QString const& line) const {
    return m_filter->text().isEmpty() || line.contains(m_filter->text(), Qt::CaseInsensitive);
}

void LogPanel::take() {
    if (const QStringList lines = m_inbox->takeAll(); !lines.isEmpty()) append(lines);
}

void LogPanel::append(QStringList const& lines) {
    const auto counts = [this](QString const& line) { return passes(line); };
    m_lines << lines;
    const int surplus = std::max(0, static_cast<int>(m_lines.size()) - mostLines);
    m_shown += static_cast<int>(std::count_if(lines.begin(), lines.end(), counts) -
                                std::count_if(m_lines.begin(), m_lines.begin() + surplus, counts));
    m_lines.erase(m_lines.begin(), m_lines.begin() + surplus);
    if (m_isPaused) {
        m_heldBack = static_cast<int>(std::min(m_heldBack + lines.size(), m_lines.size()));
        tell();
        return;
    }
    QStringList added;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(added), counts);
    constexpr int unlimited = 0;
    m_view->setMaximumBlockCount(unlimited);
    if (!added.isEmpty()) m_view->appendPlainText(added.join('\n'));
    // The view drops from its top what is kept no longer, which is less than is kept while a filter hides lines.
    m_view->setMaximumBlockCount(std::max(1, m_shown));
    if (m_shown == 0) m_view->clear();
}

void LogPanel::showAll() {
    m_shown = static_cast<int>(
        std::count_if(m_lines.begin(), m_lines.end(), [this](QString const& line) { return passes(line); }));
    m_view->setMaximumBlockCount(mostLines);
    m_view->setPlainText(shownLines().join('\n'));
    m_view->verticalScrollBar()->setValue(m_view->verticalScrollBar()->maximum());
    tell();
}

void LogPanel::tell() {
    QString text = Platform::getenv("QRT_DEBUG_PLAYER") ? speakingHint : silentHint;
    if (m_isPaused) text = QString("Paused. Held back: %1").arg(m_heldBack);
    if (!m_failure.isEmpty()) text = m_failure;
    m_hint->setText(text);
}

void LogPanel::setFilter(QString const& text) {
    m_filter->setText(text);
}

void LogPanel::setPaused(bool paused) {
    if (paused == m_isPaused) return;
    take();  // what was posted before the pause belongs before it
    m_isPaused = paused;
    m_heldBack = 0;
    m_pause->setChecked(paused);
    m_pause->setText(paused ? "Go on" : "Pause");
    showAll();
}

void LogPanel::clear() {
    (void)m_inbox->takeAll();
    m_lines.clear();
    m_heldBack = 0;
    m_failure.clear();
    showAll();
}

void LogPanel::copy() {
    const QString selected = m_view->textCursor().selectedText().replace(QChar::ParagraphSeparator, '\n');
    QGuiApplication::clipboard()->setText(selected.isEmpty() ? shownLines().join('\n') : selected);
}

bool LogPanel::saveTo(QString const& path) {
    QSaveFile file(path);
    const QByteArray bytes = (shownLines().join('\n') + '\n').toUtf8();
    const bool isSaved = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    m_failure = isSaved ? QString() : QString("%1 cannot be written: %2").arg(path, file.errorString());
    tell();
    return isSaved;
}

void LogPanel::save() {
    auto* const dialog = new QFileDialog(this, "Save the log", {}, "Text (*.txt *.log);;All files (*)");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix("txt");
    connect(dialog, &QFileDialog::fileSelected, this, &LogPanel::saveTo);
    dialog->open();
}

}  // namespace qrtplay
