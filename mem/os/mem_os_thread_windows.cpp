#include "mem/os/mem_os_thread.h"

#include "sys/sys_module.h"

#include <windows.h>

#include <atomic>
#include <new>

namespace {

// Written by each thread that counts for the first time, always with the same function; null before the first. The exit
// leaves it.
std::atomic<void (*)(MEM_THREAD_COUNT &count)> l_ended{nullptr};

// Its address is in the slot of a thread whose end was reported while destructors may still count. Its content is never
// used.
MEM_THREAD_COUNT l_ended_thread;

// Two slots of each thread. The system calls back for a fiber slot when the thread ends, before the destructors of the
// modules; the plain slot, which holds the record, can be read until the thread is gone. Both are made by the first
// thread that counts, and the exit leaves them.
struct Slots
{
    DWORD record;
    DWORD end;
};

Slots const &slots();

void WINAPI on_thread_exit(void *record)
{
    MEM_THREAD_COUNT *const count = static_cast<MEM_THREAD_COUNT *>(record);
    if (void (*const ended)(MEM_THREAD_COUNT &) = l_ended.load(std::memory_order_relaxed))
        ended(*count);
    TlsSetValue(slots().record, &l_ended_thread);
    HeapFree(GetProcessHeap(), 0, count);
}

Slots const &slots()
{
    static Slots const SLOTS = {TlsAlloc(), FlsAlloc(on_thread_exit)};
    return SLOTS;
}

MEM_THREAD_COUNT *make_record(Slots const &s)
{
    // The fiber slot calls into the library when the thread ends.
    if (!sys_keep_loaded())
        return nullptr;
    void *const memory = HeapAlloc(GetProcessHeap(), 0, sizeof(MEM_THREAD_COUNT));
    if (memory == nullptr)
        return nullptr;
    MEM_THREAD_COUNT *const record = new (memory) MEM_THREAD_COUNT;
    if (TlsSetValue(s.record, record) && FlsSetValue(s.end, record))
        return record;
    TlsSetValue(s.record, nullptr);
    HeapFree(GetProcessHeap(), 0, memory);
    return nullptr;
}

} // namespace

MEM_THREAD_COUNT *mem_os_thread_count()
{
    // Reading a slot clears the thread's last error, which an operator new must not change.
    DWORD const last_error = GetLastError();
    Slots const &s = slots();
    MEM_THREAD_COUNT *count = static_cast<MEM_THREAD_COUNT *>(TlsGetValue(s.record));
    if (count == nullptr)
        count = make_record(s);
    else if (count == &l_ended_thread)
        count = nullptr;
    SetLastError(last_error);
    return count;
}

bool mem_os_watch_thread_end(void (*ended)(MEM_THREAD_COUNT &count))
{
    // The fiber slot was set when the record was made.
    l_ended.store(ended, std::memory_order_relaxed);
    return true;
}
