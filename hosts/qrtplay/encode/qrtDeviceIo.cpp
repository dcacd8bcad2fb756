#include "encode/qrtDeviceIo.h"

#include <cstdio>

namespace qrtplay {

DeviceIo::DeviceIo(QFileDevice& file) : m_file(file) {
    constexpr int bufferSize = 1 << 18;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    if (!buffer) return;
    m_context = avio_alloc_context(buffer, bufferSize, 1, this, nullptr, writeTo, seekIn);
    if (!m_context) av_free(buffer);
}

DeviceIo::~DeviceIo() {
    if (m_context) av_freep(&m_context->buffer);
    avio_context_free(&m_context);
}

int DeviceIo::fail() {
    if (m_error.empty()) m_error = m_file.errorString().toStdString();
    return AVERROR(EIO);
}

int DeviceIo::writeTo(void* self, uint8_t* bytes, int count) {
    DeviceIo& io = *static_cast<DeviceIo*>(self);
    // A disk that is nearly full takes a part; only the next write is told why no more.
    for (qint64 done = 0; done < count;) {
        const qint64 written = io.m_file.write(reinterpret_cast<char const*>(bytes) + done, count - done);
        if (written <= 0) return io.fail();
        done += written;
    }
    return count;
}

int64_t DeviceIo::seekIn(void* self, int64_t offset, int whence) {
    DeviceIo& io = *static_cast<DeviceIo*>(self);
    switch (whence & ~AVSEEK_FORCE) {
        case AVSEEK_SIZE: return io.m_file.size();
        case SEEK_CUR: offset += io.m_file.pos(); break;
        case SEEK_END: offset += io.m_file.size(); break;
        default: break;
    }
    return io.m_file.seek(offset) ? offset : io.fail();
}

}  // namespace qrtplay
