#include "mem/os/mem_os.h"

#include "mem/os/mem_os_thread.h"

#include <windows.h>

#include <atomic>
#include <new>
#include <psapi.h>

namespace {

bool read_counters(PROCESS_MEMORY_COUNTERS *counters)
{
    return K32GetProcessMemoryInfo(GetCurrentProcess(), counters, sizeof *counters) != 0;
}

// Threads set it as they count for the first time, always alike. Null: nothing was ever counted.
std::atomic<void (*)(MEM_THREAD_COUNT &count)> l_ended{nullptr};

// What a thread's slot holds after its end has been told, when destructors may still count. Never dereferenced.
MEM_THREAD_COUNT l_ended_thread;

// A fiber slot for its callback alone, which comes at the end of a thread before the destructors of the modules, and a
// plain slot for the record, which can be asked until the thread is gone.
struct Slots
{
    DWORD record;
    DWORD end;
};

Slots const &slots();

void WINAPI thread_ends(void *record)
{
    MEM_THREAD_COUNT *const count = static_cast<MEM_THREAD_COUNT *>(record);
    if (void (*const ended)(MEM_THREAD_COUNT &) = l_ended.load(std::memory_order_relaxed))
        ended(*count);
    TlsSetValue(slots().record, &l_ended_thread);
    HeapFree(GetProcessHeap(), 0, count);
}

Slots const &slots()
{
    static Slots const SLOTS = {TlsAlloc(), FlsAlloc(thread_ends)};
    return SLOTS;
}

MEM_THREAD_COUNT *make_record(Slots const &s)
{
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

bool mem_os_working_set(std::size_t *bytes)
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (!read_counters(&counters))
        return false;
    *bytes = counters.WorkingSetSize;
    return true;
}

bool mem_os_peak_working_set(std::size_t *bytes)
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (!read_counters(&counters))
        return false;
    *bytes = counters.PeakWorkingSetSize;
    return true;
}

bool mem_os_peak_virtual(std::size_t *bytes)
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (!read_counters(&counters))
        return false;
    *bytes = counters.PeakPagefileUsage;
    return true;
}

bool mem_os_working_set_and_mark(std::size_t *bytes, std::size_t *mark_bytes)
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (!read_counters(&counters))
        return false;
    *bytes = counters.WorkingSetSize;
    *mark_bytes = counters.PeakWorkingSetSize;
    return true;
}

bool mem_os_is_last_thread_of_exit()
{
    using QUESTION = BOOLEAN(NTAPI *)();
    HMODULE const library = GetModuleHandleA("ntdll.dll");
    FARPROC const function = library == nullptr ? nullptr : GetProcAddress(library, "RtlDllShutdownInProgress");
    auto const question = reinterpret_cast<QUESTION>(reinterpret_cast<void *>(function));
    return question != nullptr && question() != FALSE;
}

bool mem_os_watch_forks(void (*)(), void (*)(), void (*)())
{
    return true;
}

MEM_THREAD_COUNT *mem_os_thread_count()
{
    // Reading a slot clears the thread's last error, which an operator new must not touch.
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
    // The end of the thread is watched since its record was made.
    l_ended.store(ended, std::memory_order_relaxed);
    return true;
}
