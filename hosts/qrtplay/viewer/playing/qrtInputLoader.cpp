#include "viewer/playing/qrtInputLoader.h"

#include <QMetaObject>

namespace qrtplay {

struct InputLoader::Result {
    quint64 request = 0;
    PreparedInput prepared;
    Outcome outcome;
};

InputLoader::InputLoader(QObject* parent) : QObject(parent) {}

InputLoader::~InputLoader() {
    if (m_thread.joinable()) m_thread.join();
}

// An earlier request is waited for by its successor's thread, never by the window.
void InputLoader::load(PlayInput const& input, PlaySettings const& settings) {
    const quint64 request = ++m_request;
    auto work = [this, input, settings, request, before = std::move(m_thread)]() mutable {
        if (before.joinable()) before.join();
        auto result = std::make_unique<Result>();
        OpenFailure why = OpenFailure::failed;
        result->request = request;
        result->outcome = prepareInput(input, settings, result->prepared, why);
        {
            const std::lock_guard lock(m_mutex);
            m_result = std::move(result);  // in the place of an earlier one, which nobody wants any more
        }
        QMetaObject::invokeMethod(this, "takeResult", Qt::QueuedConnection);
    };
    m_thread = std::thread(std::move(work));
}

void InputLoader::takeResult() {
    std::unique_ptr<Result> result;
    {
        const std::lock_guard lock(m_mutex);
        result = std::move(m_result);
    }
    if (!result || result->request != m_request) return;
    m_finished = m_request;
    if (result->outcome.failed())
        emit failed(QString::fromStdString(result->outcome.message()));
    else
        emit loaded(result->prepared);
}

}  // namespace qrtplay
