#include "tests/support/file_size_limit.h"

#include <csignal>

#include <sys/resource.h>

struct FileSizeLimit::Former
{
    rlimit limit{};
    void (*handler)(int) = SIG_DFL;
};

FileSizeLimit::FileSizeLimit(std::size_t size_bytes) : m_former(new Former)
{
    if (getrlimit(RLIMIT_FSIZE, &m_former->limit) != 0) {
        m_former = nullptr;
        return;
    }
    m_former->handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit const limit{size_bytes, m_former->limit.rlim_max};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
        std::signal(SIGXFSZ, m_former->handler);
        m_former = nullptr;
    }
}

FileSizeLimit::~FileSizeLimit()
{
    if (m_former == nullptr)
        return;
    setrlimit(RLIMIT_FSIZE, &m_former->limit);
    std::signal(SIGXFSZ, m_former->handler);
}

bool FileSizeLimit::is_set() const
{
    return m_former != nullptr;
}
