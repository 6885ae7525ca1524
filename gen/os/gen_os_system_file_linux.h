// The small text files by which the system tells of itself.
#ifndef GEN_OS_SYSTEM_FILE_LINUX_H
#define GEN_OS_SYSTEM_FILE_LINUX_H

#include <cerrno>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

/// What a file of the system begins with, which is all of it or all that is looked for; empty if it can't be read.
class GEN_OS_SYSTEM_FILE
{
public:
    explicit GEN_OS_SYSTEM_FILE(char const *path)
    {
        int const descriptor = open(path, O_RDONLY | O_CLOEXEC);
        if (descriptor < 0)
            return;
        ssize_t count;
        do
            count = read(descriptor, m_buffer, sizeof m_buffer);
        while (count < 0 && errno == EINTR);
        close(descriptor);
        if (count > 0)
            m_size = static_cast<std::size_t>(count);
    }

    std::string_view text() const { return {m_buffer, m_size}; }

private:
    char m_buffer[4096];
    std::size_t m_size = 0;
};

#endif
