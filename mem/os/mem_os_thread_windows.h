// The inline function of mem_os_thread.h.
#ifndef MEM_OS_THREAD_WINDOWS_H
#define MEM_OS_THREAD_WINDOWS_H

#include "mem/base/mem_thread_count.h"

inline MEM_THREAD_COUNT *mem_os_thread_count_in_place()
{
    return nullptr;
}

#endif
