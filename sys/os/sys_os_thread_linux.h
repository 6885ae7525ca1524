// The inline function of sys_os_thread.h.
#ifndef SYS_OS_THREAD_LINUX_H
#define SYS_OS_THREAD_LINUX_H

#include <cstdint>

// The address of the thread's descriptor: one load instead of a call.
inline std::int64_t sys_thread_self()
{
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(__builtin_thread_pointer()));
}

#endif
