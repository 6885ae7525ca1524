#include "mem/os/mem_os.h"

#include "mem/tracking/mem_proc_text.h"
#include "mem/os/mem_os_thread.h"

#include <atomic>
#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// /proc/self/statm, -1 while it isn't open. Kept: opening it costs four times as much as reading it. Any thread may
// open it; it stays open until the process ends.
std::atomic<int> l_statm{-1};

// The descriptor of a parent goes on telling about the parent. It isn't closed: if something in the process has
// closed it before, the number may mean another file.
void forget_statm()
{
    l_statm.store(-1, std::memory_order_relaxed);
}

bool read_statm(int descriptor, std::size_t *bytes)
{
    static std::size_t const PAGE_BYTES = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    char text[256]; // seven numbers of 64 bits and their separators take 147
    ssize_t const length = pread(descriptor, text, sizeof text, 0);
    std::uint64_t pages = 0;
    if (length < 0 || !mem_proc_statm_resident_pages({text, static_cast<std::size_t>(length)}, &pages))
        return false;
    *bytes = pages * PAGE_BYTES;
    return true;
}

bool keep_statm(int descriptor)
{
    static bool const FORGOTTEN_IN_CHILD = pthread_atfork(nullptr, nullptr, forget_statm) == 0;
    int none = -1;
    return FORGOTTEN_IN_CHILD && l_statm.compare_exchange_strong(none, descriptor, std::memory_order_relaxed);
}

bool open_and_read_statm(std::size_t *bytes)
{
    int const descriptor = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    bool const read = read_statm(descriptor, bytes);
    if (!read || !keep_statm(descriptor))
        close(descriptor);
    return read;
}

bool read_status(char const *field, std::size_t *bytes)
{
    int const descriptor = open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    char text[8192]; // the memory lines stand within the first kilobyte, behind the groups of the user
    ssize_t const length = read(descriptor, text, sizeof text);
    close(descriptor);
    std::uint64_t value = 0;
    if (length < 0 || !mem_proc_status_bytes({text, static_cast<std::size_t>(length)}, field, &value))
        return false;
    *bytes = value;
    return true;
}

bool read_resource_mark(std::size_t *bytes)
{
    rusage usage{};
    if (getrusage(RUSAGE_SELF, &usage) != 0)
        return false;
    *bytes = static_cast<std::size_t>(usage.ru_maxrss) * 1024;
    return true;
}

// Written once, by whichever thread counts first, before the key is made.
void (*l_ended)(MEM_THREAD_COUNT &count) = nullptr;

struct EndKey
{
    pthread_key_t key;
    bool made;
};

EndKey make_end_key(void (*ended)(MEM_THREAD_COUNT &count))
{
    l_ended = ended;
    EndKey result{};
    result.made =
        pthread_key_create(&result.key, [](void *count) { l_ended(*static_cast<MEM_THREAD_COUNT *>(count)); }) == 0;
    return result;
}

} // namespace

bool mem_os_working_set(std::size_t *bytes)
{
    int kept = l_statm.load(std::memory_order_relaxed);
    if (kept >= 0) {
        if (read_statm(kept, bytes))
            return true;
        // Closed by a stranger, and perhaps another file by now.
        l_statm.compare_exchange_strong(kept, -1, std::memory_order_relaxed);
    }
    return open_and_read_statm(bytes);
}

bool mem_os_peak_working_set(std::size_t *bytes)
{
    return read_status("VmHWM", bytes) || read_resource_mark(bytes);
}

bool mem_os_peak_virtual(std::size_t *bytes)
{
    return read_status("VmPeak", bytes);
}

bool mem_os_working_set_and_mark(std::size_t *bytes, std::size_t *mark_bytes)
{
    // The figure of the resource usage is cheap. It begins at that of the program that this process was before, often
    // the parent's, which is why it is a mark and not the peak.
    return mem_os_working_set(bytes) && read_resource_mark(mark_bytes);
}

bool mem_os_is_last_thread_of_exit()
{
    return false;
}

bool mem_os_watch_forks(void (*before)(), void (*in_parent)(), void (*in_child)())
{
    return pthread_atfork(before, in_parent, in_child) == 0;
}

__thread MEM_THREAD_COUNT mem_thread_record __attribute__((tls_model("initial-exec")));

bool mem_os_watch_thread_end(void (*ended)(MEM_THREAD_COUNT &count))
{
    // C++ destructors of a thread run before the destructors of its keys; its record stays until after both.
    static EndKey const END_KEY = make_end_key(ended);
    return END_KEY.made && pthread_setspecific(END_KEY.key, &mem_thread_record) == 0;
}
