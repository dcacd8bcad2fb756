#include "foundation/logger/qrtLogMsg.h"

#include <QLoggingCategory>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace QRT_0_81 {

namespace {

using Sink = std::function<void(LogMsg const&)>;

/// Qt's categories by channel. Qt keeps pointers to a category and to its name, so neither may move or die; both live
/// for the whole process, since messages are posted from destructors of static objects too.
class QtCategories {
public:
    [[nodiscard]] QLoggingCategory const& of(std::string const& channel) {
        const std::lock_guard lock(m_mutex);
        auto& slot = m_byChannel[channel];
        if (!slot.category) {
            slot.name = channel.empty() ? "default" : channel;
            slot.category = std::make_unique<QLoggingCategory>(slot.name.c_str());
        }
        return *slot.category;
    }

private:
    struct Slot {
        std::string name;
        std::unique_ptr<QLoggingCategory> category;
    };
    std::mutex m_mutex;
    std::map<std::string, Slot> m_byChannel;
};

void postToQt(LogMsg const& message) {
    static auto* const categories = new QtCategories;
    QLoggingCategory const& category = categories->of(message.channel());
    if (!category.isDebugEnabled()) return;
    QMessageLogger(message.file().c_str(), message.line(), nullptr, category.categoryName())
        .debug("%s", message.text().c_str());
}

struct SinkHolder {
    std::mutex mutex;
    std::shared_ptr<const Sink> sink = std::make_shared<const Sink>(postToQt);
};

SinkHolder& holder() {
    static auto* const instance = new SinkHolder;
    return *instance;
}

}  // namespace

LogMsg::LogMsg(std::string channel, std::string file, int line, std::string text)
    : m_channel(std::move(channel)), m_file(std::move(file)), m_line(line), m_text(std::move(text)) {}

void LogMsg::postDebug(LogMsg const& message) {
    std::shared_ptr<const Sink> sink;
    {
        const std::lock_guard lock(holder().mutex);
        sink = holder().sink;
    }
    (*sink)(message);
}

void LogMsg::setSink(std::function<void(LogMsg const&)> sink) {
    auto replacement = std::make_shared<const Sink>(sink ? std::move(sink) : Sink(postToQt));
    const std::lock_guard lock(holder().mutex);
    holder().sink.swap(replacement);
}

}  // namespace QRT_0_81
