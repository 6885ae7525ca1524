// The identity of the calling thread. This is the header of Windows.
#ifndef SYS_THREAD_H
#define SYS_THREAD_H

#include <cstdint>

/// Unique among the threads that run; never 0 and never -1. It is the system's number of the thread.
std::int64_t sys_thread_self();

#endif
