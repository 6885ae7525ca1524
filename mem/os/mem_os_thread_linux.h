// The inline functions of mem_os_thread.h.
#ifndef MEM_OS_THREAD_LINUX_H
#define MEM_OS_THREAD_LINUX_H

#include "mem/base/mem_thread_count.h"
#include "zel_export_sys.h"

// The library is loaded when the process starts, so the records can lie at a fixed distance from the thread pointer.
// __thread promises that a record needs no constructor, which saves the call that would check for one. The variable is
// exported for the operators new and delete alone: a call into the library would cost half as much as the counting.
extern MEM_API __thread MEM_THREAD_COUNT mem_thread_record __attribute__((tls_model("initial-exec")));

inline MEM_THREAD_COUNT *mem_os_thread_count()
{
    return &mem_thread_record;
}

inline MEM_THREAD_COUNT *mem_os_thread_count_in_place()
{
    return &mem_thread_record;
}

#endif
