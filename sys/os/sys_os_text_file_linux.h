// The small text files in which Linux describes itself.
#ifndef SYS_OS_TEXT_FILE_LINUX_H
#define SYS_OS_TEXT_FILE_LINUX_H

#include <cerrno>
#include <cstddef>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

/// The first 8 KiB of a file of the system, which is the whole file or at least contains the lines that its readers
/// look for. Empty if the file can't be read. Allocates nothing.
class SYS_OS_TEXT_FILE
{
public:
    explicit SYS_OS_TEXT_FILE(char const *path)
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
    char m_buffer[8192];
    std::size_t m_size = 0;
};

#endif
