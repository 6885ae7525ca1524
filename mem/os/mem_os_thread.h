// The place of each thread's record of its allocations. It is reached in a few instructions, and never through the
// operators new and delete, which use it themselves.
#ifndef MEM_OS_THREAD_H
#define MEM_OS_THREAD_H

#include "mem/base/mem_thread_count.h"
#include "zel_export_sys.h"

/// The record of the calling thread; null if the thread has none, or none any more. The caller counts elsewhere then.
MEM_THREAD_COUNT *mem_os_thread_count();

/// The record of the calling thread if it is reached without a call into the library, else null. For the operators.
MEM_THREAD_COUNT *mem_os_thread_count_in_place();

/// Makes the system call `ended` with the record of the calling thread, on that thread, when the thread ends.
/// Destructors that run later on the thread still find the record, or null. `ended` is the same function in every call.
///
/// @return false if it can't be called. Even otherwise it is not called for threads that the system kills.
bool mem_os_watch_thread_end(void (*ended)(MEM_THREAD_COUNT &count));

#include "mem/os/mem_os_thread_platform.h"

#endif
