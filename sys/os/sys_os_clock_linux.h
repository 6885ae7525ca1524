// A clock for waits. Linux alone has it.
#ifndef SYS_OS_CLOCK_LINUX_H
#define SYS_OS_CLOCK_LINUX_H

#include <cstdint>

#include <time.h>

/// Milliseconds since some moment. May be called from a signal handler.
inline std::int64_t sys_os_milliseconds_now()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

#endif
