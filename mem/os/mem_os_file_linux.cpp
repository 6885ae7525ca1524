#include "mem/os/mem_os_file.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Opens a file for reading. A pipe doesn't wait for its other end, and a terminal doesn't become that of the process.
class InputFile
{
public:
    explicit InputFile(char const *path)
    {
        do
            m_descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        while (m_descriptor < 0 && errno == EINTR);
    }
    ~InputFile()
    {
        if (is_open())
            close(m_descriptor);
    }
    InputFile(InputFile const &) = delete;
    InputFile &operator=(InputFile const &) = delete;

    bool is_open() const { return m_descriptor >= 0; }
    bool get_status(struct stat &status) const { return fstat(m_descriptor, &status) == 0; }

    // Reads until the end or beyond the largest size; false, with errno, after an error.
    bool read_all(std::string &text, std::size_t largest_size) const
    {
        char block[8192];
        while (text.size() <= largest_size) {
            ssize_t const size = read(m_descriptor, block, sizeof block);
            if (size == 0)
                break;
            if (size > 0)
                text.append(block, static_cast<std::size_t>(size));
            else if (errno != EINTR)
                return false;
        }
        return true;
    }

private:
    int m_descriptor;
};

std::string identity_of(struct stat const &status)
{
    return std::to_string(status.st_dev) + ':' + std::to_string(status.st_ino);
}

MEM_OS_FILE unreadable(int error, struct stat const &status)
{
    return {MEM_OS_FILE_STATE::UNREADABLE, "", std::generic_category().message(error), identity_of(status)};
}

bool says_absent(int error)
{
    return error == ENOENT || error == ENOTDIR || error == EACCES;
}

// A process without a free descriptor gets the same error for a missing file, and a file without permissions the same
// as one in a directory that can't be searched, so the name is looked up again.
MEM_OS_FILE without_open_file(char const *path, int error)
{
    struct stat status;
    bool const is_there = error != ENOENT && stat(path, &status) == 0;
    if (is_there)
        return unreadable(error, status);
    bool const is_absent = says_absent(errno);
    return {is_absent ? MEM_OS_FILE_STATE::ABSENT : MEM_OS_FILE_STATE::UNREADABLE, "",
            std::generic_category().message(is_absent ? errno : error), ""};
}

} // namespace

MEM_OS_FILE mem_os_read_file(char const *path, std::size_t largest_size)
{
    InputFile const file(path);
    if (!file.is_open())
        return without_open_file(path, errno);
    struct stat status;
    if (!file.get_status(status))
        return {MEM_OS_FILE_STATE::UNREADABLE, "", std::generic_category().message(errno), ""};
    if (!S_ISREG(status.st_mode))
        return {MEM_OS_FILE_STATE::UNREADABLE, "", "it is not a regular file", identity_of(status)};
    std::string text;
    if (!file.read_all(text, largest_size))
        return unreadable(errno, status);
    return {MEM_OS_FILE_STATE::READ, std::move(text), "", identity_of(status)};
}
