#pragma once

#include <QFileDevice>
#include <memory>
#include <string>

#include "base/qrtKit.h"
#include "media/qrtAv.h"

namespace qrtplay {

/// Lets a muxer write into a file that Qt has opened, which outlives this.
class DeviceIo final {
public:
    explicit DeviceIo(QFileDevice& file);
    ~DeviceIo();
    DeviceIo(DeviceIo const&) = delete;
    DeviceIo& operator=(DeviceIo const&) = delete;

    /// What a muxer takes; null when there is no memory.
    [[nodiscard]] AVIOContext* context() const noexcept { return m_context; }
    /// Why the file did not take what was written first; empty when it took all. The file itself forgets it with its
    /// next success.
    [[nodiscard]] std::string const& error() const noexcept { return m_error; }

private:
    static int writeTo(void* self, uint8_t* bytes, int count);
    static int64_t seekIn(void* self, int64_t offset, int whence);
    int fail();

    QFileDevice& m_file;
    std::string m_error;
    AVIOContext* m_context = nullptr;
};

}  // namespace qrtplay
