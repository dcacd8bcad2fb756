#pragma once

#include <QObject>
#include <memory>
#include <thread>

#include "playback/qrtPreparedInput.h"

namespace qrtplay {

/// Opens and measures what a user wants to see on a thread of its own, so that the window stays alive meanwhile.
///
/// Only the last request counts: what an earlier one comes to is dropped. Threading: the GUI thread.
class InputLoader final : public QObject {
    Q_OBJECT

public:
    explicit InputLoader(QObject* parent = nullptr) : QObject(parent) {}
    /// Waits for what is under way.
    ~InputLoader() override;

    void load(PlayInput const& input, PlaySettings const& settings);
    /// Drops what is under way; it ends on its own.
    void cancel() noexcept { m_finished = ++m_request; }
    [[nodiscard]] bool isLoading() const noexcept { return m_finished != m_request; }

signals:
    void loaded(qrtplay::PreparedInput const& prepared);
    void failed(QString const& text);

private:
    struct Result;

    void finish(quint64 request, std::shared_ptr<Result> const& result);

    quint64 m_request = 0;
    quint64 m_finished = 0;
    std::thread m_thread;
};

}  // namespace qrtplay
