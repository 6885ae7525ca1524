// The identity of the calling thread. Every open and close of a profile bin asks for it, so it is inline.
#ifndef GEN_OS_THREAD_H
#define GEN_OS_THREAD_H

#include "sys/os/sys_os_thread.h"

/// The same as thr_thread_self().
inline std::int64_t gen_os_thread_self()
{
    return sys_thread_self();
}

#endif
