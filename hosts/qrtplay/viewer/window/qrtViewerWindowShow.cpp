// What the window shows: frames, positions, states and caches.

#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QStatusBar>

#include "base/qrtPrintable.h"
#include "base/qrtProgramVersion.h"
#include "playback/qrtTimecode.h"
#include "viewer/picture/qrtPictureView.h"
#include "viewer/playing/qrtPlaybackReport.h"
#include "viewer/timeline/qrtTimelineView.h"
#include "viewer/window/qrtMessageBar.h"
#include "viewer/window/qrtTransportBar.h"
#include "viewer/window/qrtViewerWindow.h"

namespace qrtplay {

namespace {

std::vector<FrameSpan> cachedSpans(Player& player, CacheStats::CacheType type) {
    ConstSharedPtr<CacheStats> stats;
    std::vector<FrameSpan> spans;
    if (player.getCacheStats(type, stats).failure() || !stats) return spans;
    for (CacheStats::FrameRange const& range : stats->getFrameRanges())
        spans.push_back({range.first, range.last});
    return spans;
}

QString withOthers(QString const& first, size_t others) {
    return others == 0 ? first : QString("%1 and %2 more").arg(first).arg(others);
}

}  // namespace

void ViewerWindow::showFetched(FetchedFrame const& frame) {
    m_shown = frame;
    m_timeline->setFrame(frame.frame);
    m_picture->showFrame(frame.buffer);
    m_picture->setMessage(QString::fromStdString(frame.failure));
    if (!frame.failure.empty()) m_messages->add(MessageBar::Kind::failure, QString::fromStdString(frame.failure));
    showTexts();
}

void ViewerWindow::showState() {
    const auto check = [this](ViewerCommand command, bool checked) { (*m_actions)[command].setChecked(checked); };
    check(ViewerCommand::toggle_play, m_playback->isPlaying());
    check(ViewerCommand::mode_single, m_playback->mode() == PlayParams::single);
    check(ViewerCommand::mode_loop, m_playback->mode() == PlayParams::loop);
    check(ViewerCommand::mode_ping_pong, m_playback->mode() == PlayParams::ping_pong);
    for (auto const& [command, frames] : strides)
        check(command, m_playback->stride() == frames);
    check(ViewerCommand::real_time, m_playback->policy() == PacePolicy::real_time);
    check(ViewerCommand::mute, m_playback->isMuted());
    m_transport->setPlaying(m_playback->isPlaying());
    for (const ViewerCommand command : {ViewerCommand::reload, ViewerCommand::close, ViewerCommand::save_snapshot,
                                        ViewerCommand::copy_snapshot, ViewerCommand::export_range})
        (*m_actions)[command].setEnabled(m_player != nullptr);
    (*m_actions)[ViewerCommand::drop_frame].setEnabled(m_numbering.hasDropFrame());
    showTexts();
}

void ViewerWindow::showRange() {
    m_timeline->setRange(m_playback->inPoint(), m_playback->outPoint());
    showTexts();
}

void ViewerWindow::showTexts() {
    const bool dropFrame = (*m_actions)[ViewerCommand::drop_frame].isChecked();
    const auto text = [&](int64 frame) { return m_numbering.text(frame, m_settings.numbering, dropFrame); };
    const FrameSpan range = m_playback->range();
    if (m_player) {
        const bool isPart = m_playback->inPoint() || m_playback->outPoint();
        const QString length = isPart ? text(range.first) + " - " + text(range.last) : text(m_playback->whole().last);
        m_transport->setPosition(text(m_playback->frame()), length);
    } else {
        m_transport->setPosition({}, {});
    }
    m_transport->setSpeed(speedText(*m_playback));
    m_status->setText(statusText(*m_playback));
    const bool hasOverlay = m_player && (*m_actions)[ViewerCommand::overlay].isChecked();
    m_picture->setOverlay(hasOverlay ? overlayLines(*m_playback, m_numbering, m_shown) : QStringList());
    m_timeline->setNumbering(m_settings.numbering, dropFrame);
}

QString ViewerWindow::titleOf(PlayInput const& input) {
    if (input.files.empty()) return {};
    const QString path = QString::fromStdString(printable(input.files.front()));
    return withOthers(QFileInfo(path).fileName(), input.files.size() - 1);
}

void ViewerWindow::showTitle() {
    QString title = QString("qrtplay %1 (Qt %2").arg(versionNumber, qVersion());
    const QString openGl = QString::fromStdString(m_openGl).section(' ', 0, 1);
    title += openGl.isEmpty() ? ")" : ", " + openGl + ")";
    setWindowTitle(m_input.files.empty() ? title : titleOf(m_input) + " - " + title);
    if (!m_player) return;
    const VideoBufferResolution format = m_player->player().getVideoResolution();
    statusBar()->showMessage(QString("%1 x %2, %3 frames/s, %4 frames%5")
                                 .arg(format.getWidth())
                                 .arg(format.getHeight())
                                 .arg(QString::fromStdString(rateText(m_player->rate())))
                                 .arg(m_player->frameCount())
                                 .arg(m_player->hasSound() ? ", sound" : ""));
}

void ViewerWindow::showCaches() {
    if (!m_player) return;
    m_timeline->setCached(cachedSpans(m_player->player(), CacheStats::CacheType::producer),
                          cachedSpans(m_player->player(), CacheStats::CacheType::graph_engine));
}

void ViewerWindow::showRecentFiles() {
    m_recentFiles->clear();
    m_recentFiles->setEnabled(!m_settings.recentFiles.isEmpty());
    for (QString const& entry : m_settings.recentFiles) {
        const QStringList files = entry.split('\n');
        QString text = withOthers(files.first(), static_cast<size_t>(files.size() - 1));
        m_recentFiles->addAction(text.replace('&', "&&"), this, [this, files] {
            PlayInput input;
            for (QString const& file : files)
                input.files.push_back(file.toStdString());
            open(input);
        });
    }
}

}  // namespace qrtplay
