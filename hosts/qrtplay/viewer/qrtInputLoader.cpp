#include "viewer/qrtInputLoader.h"

#include <QMetaObject>

namespace qrtplay {

struct InputLoader::Result {
    PreparedInput prepared;
    Outcome outcome;
};

InputLoader::~InputLoader() {
    if (m_thread.joinable()) m_thread.join();
}

// An earlier request is waited for by its successor's thread, never by the window.
void InputLoader::load(PlayInput const& input, PlaySettings const& settings) {
    const quint64 request = ++m_request;
    auto work = [this, input, settings, request, before = std::move(m_thread)]() mutable {
        if (before.joinable()) before.join();
        const auto result = std::make_shared<Result>();
        OpenFailure why = OpenFailure::failed;
        result->outcome = prepareInput(input, settings, result->prepared, why);
        QMetaObject::invokeMethod(this, [this, request, result] { finish(request, result); }, Qt::QueuedConnection);
    };
    m_thread = std::thread(std::move(work));
}

void InputLoader::finish(quint64 request, std::shared_ptr<Result> const& result) {
    if (request != m_request) return;
    m_finished = request;
    if (result->outcome.failed())
        emit failed(QString::fromStdString(result->outcome.message()));
    else
        emit loaded(result->prepared);
}

}  // namespace qrtplay
