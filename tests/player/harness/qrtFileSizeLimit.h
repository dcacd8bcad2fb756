#pragma once

#include <sys/resource.h>

#include <csignal>

namespace QRT_0_81 {

/// No file of this process grows beyond a size, for one scope: writing more fails as on a full disk.
class FileSizeLimit final {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        (void)std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(FileSizeLimit const&) = delete;
    FileSizeLimit& operator=(FileSizeLimit const&) = delete;

private:
    rlimit m_before{};
    void (*const m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

}  // namespace QRT_0_81
