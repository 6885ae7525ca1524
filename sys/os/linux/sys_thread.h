// The identity of the calling thread. This is the header of Linux.
#ifndef SYS_THREAD_H
#define SYS_THREAD_H

#include <cstdint>

/// Unique among the threads that run; never 0 and never -1. It is the address of the thread's descriptor: one load,
/// without a call.
inline std::int64_t sys_thread_self()
{
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(__builtin_thread_pointer()));
}

#endif
