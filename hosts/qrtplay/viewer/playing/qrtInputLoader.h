#pragma once

#include <QObject>
#include <memory>
#include <mutex>
#include <thread>

#include "playback/qrtPreparedInput.h"

namespace qrtplay {

/// Opens and measures what a user wants to see on a thread of its own, so that the window stays alive meanwhile.
///
/// Only the last request counts: what an earlier one comes to is dropped. Threading: the GUI thread.
class InputLoader final : public QObject {
    Q_OBJECT

public:
    explicit InputLoader(QObject* parent = nullptr);
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

    Q_INVOKABLE void takeResult();

    quint64 m_request = 0;
    quint64 m_finished = 0;
    std::thread m_thread;

    std::mutex m_mutex;
    std::unique_ptr<Result> m_result;  // on its way from the thread; under m_mutex
};

}  // namespace qrtplay
