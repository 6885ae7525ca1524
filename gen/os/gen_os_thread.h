// The identity of the calling thread, as cheap as the platform gives it: every open and close of a profile bin asks.
#ifndef GEN_OS_THREAD_H
#define GEN_OS_THREAD_H

#include "thr_sys.h"

/// The same as thr_thread_self().
inline std::int64_t gen_os_thread_self()
{
#ifdef _WIN32
    return thr_thread_self();
#else
    // The address of the thread's descriptor, which thr_thread_self() answers too: one load instead of a call.
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(__builtin_thread_pointer()));
#endif
}

#endif
