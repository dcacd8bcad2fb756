#pragma once

#include <QDialog>
#include <QStringList>
#include <chrono>
#include <memory>

#include "base/qrtKit.h"
#include "viewer/export/qrtExportJob.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace qrtplay {

class ExportProcess;

/// Asks where to, exports with `qrtplay render` in a process of its own, shows how far it has come, and lets the user
/// cancel. What was written whole stays; the viewer plays on meanwhile.
///
/// Never opens a second question on top of itself: files that are there already turn the button "Export" into
/// "Replace", and closing while it runs turns "Close" into "Cancel and close"; the second press does it.
/// Threading: the GUI thread.
class ExportDialog final : public QDialog {
    Q_OBJECT

public:
    /// `program`: the path of `qrtplay`. `folder`: where files are proposed, and what names without a folder belong to.
    ExportDialog(ExportJob job, QString program, QString folder, QWidget* parent = nullptr);
    /// Ends an export that still runs, which may take a moment.
    ~ExportDialog() override;

    /// The file or pattern to be written.
    [[nodiscard]] QString output() const;
    void setOutput(QString const& path);
    [[nodiscard]] bool isRunning() const;
    /// What became of it, in words; empty before.
    [[nodiscard]] QString result() const { return m_result; }
    /// How long a cancelled export may take to end by itself.
    void setPatience(std::chrono::milliseconds patience);

public slots:
    void start();
    void cancel();
    /// Closes the dialog; asks first while it runs.
    void reject() override;

signals:
    void finished(bool success, QString const& text);

private:
    enum class Question { none, replace, close };
    enum class Tone { plain, good, bad };

    void makeControls();
    void makeButtons();
    void layOut();
    void connectControls();
    void fillDepths();
    void browse();
    void chooseEnding();
    void outputChanged();
    void refresh();
    void updateMessage();
    void updateControls();
    void say(QString const& text, Tone tone);
    bool asksToReplace();
    void showProgress();
    void noteEnd();
    void conclude(bool success, QString const& text, Tone tone);
    void openFolder();
    [[nodiscard]] ExportTarget target() const;

    const ExportJob m_job;
    const QString m_program;
    const QString m_folder;
    ExportProcess* m_process;
    Question m_question = Question::none;
    QString m_replaceText;
    bool m_closesAtEnd = false;
    int m_shownFailures = 0;
    QString m_result;
    Tone m_resultTone = Tone::plain;
    QString m_writtenFolder;  ///< empty until something was written

    QLineEdit* m_output;
    QPushButton* m_browse;
    QComboBox* m_format;
    QComboBox* m_depth;
    QCheckBox* m_sound;
    QCheckBox* m_onlyMissing;
    QProgressBar* m_bar;
    QLabel* m_barText;
    QPlainTextEdit* m_failures;
    QLabel* m_icon;
    QLabel* m_message;
    QPushButton* m_openFolder;
    QPushButton* m_start;
    QPushButton* m_cancel;
    QPushButton* m_close;
};

}  // namespace qrtplay
