#include "sys/os/sys_os_clock_linux.h"
#include "sys/sys_write.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include <poll.h>
#include <unistd.h>

namespace {

// False if the descriptor has no room before the deadline.
bool wait_for_room(int descriptor, std::int64_t deadline)
{
    pollfd query{descriptor, POLLOUT, 0};
    for (;;) {
        std::int64_t const rest = std::max<std::int64_t>(deadline - sys_os_milliseconds_now(), 0);
        int const count = poll(&query, 1, static_cast<int>(rest));
        if (count > 0)
            return true;
        if (count == 0 || errno != EINTR)
            return false;
    }
}

} // namespace

SYS_WRITTEN sys_write(int descriptor, char const *text, std::size_t size, int milliseconds)
{
    std::int64_t deadline = -1; // of no wait yet
    std::size_t written = 0;
    while (written != size) {
        ssize_t const count = write(descriptor, text + written, size - written);
        if (count > 0) {
            written += static_cast<std::size_t>(count);
            continue;
        }
        int const error = count == 0 ? EIO : errno;
        if (error == EINTR)
            continue;
        if (error != EAGAIN && error != EWOULDBLOCK)
            return {written, error};
        if (deadline < 0)
            deadline = sys_os_milliseconds_now() + milliseconds;
        // A pipe may report room that is too small for the text, over and over.
        if (!wait_for_room(descriptor, deadline) || sys_os_milliseconds_now() > deadline)
            return {written, EAGAIN};
    }
    return {written, 0};
}

int sys_descriptor_of(std::FILE *stream)
{
    return fileno(stream);
}
