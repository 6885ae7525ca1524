// The identity of the calling thread, as cheap as the platform allows, since every open and close of a profile bin
// reads it.
#ifndef SYS_OS_THREAD_H
#define SYS_OS_THREAD_H

#include <cstdint>

/// Unique among the threads that run; never 0 and never -1.
std::int64_t sys_thread_self();

#include "sys/os/sys_os_thread_platform.h"

#endif
