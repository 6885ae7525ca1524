#include "mem/os/mem_os.h"

#include "mem/base/mem_proc_text.h"
#include "sys/os/sys_os_text_file_linux.h"
#include "sys/sys_fork.h"
#include "sys/sys_module.h"

#include <atomic>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// The descriptor of /proc/self/statm, -1 while it isn't open. It is kept, since opening the file costs four times as
// much as reading it. Written by any thread that opens it and by the child of a fork. The exit leaves it open.
std::atomic<int> l_statm{-1};

// In the child of a fork. The parent's descriptor would go on reporting the parent's memory. It isn't closed: if other
// code has closed it before, the number may mean another file.
void forget_statm()
{
    l_statm.store(-1, std::memory_order_relaxed);
}

// Set when the library is loaded. Until then, or if there was no memory for the handler, no descriptor is kept. Not set
// at the first use: the child of a fork at that moment would wait forever for the thread that sets it.
bool const l_is_forgotten_in_child = sys_watch_forks(nullptr, nullptr, forget_statm);

bool read_statm(int descriptor, std::size_t *bytes)
{
    char text[256]; // seven numbers of 64 bits and their separators take 147 bytes
    ssize_t const length = pread(descriptor, text, sizeof text, 0);
    std::uint64_t pages = 0;
    if (length < 0 || !mem_proc_statm_resident_pages({text, static_cast<std::size_t>(length)}, &pages))
        return false;
    *bytes = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return true;
}

bool store_statm_descriptor(int descriptor)
{
    // A descriptor is kept by a library that stays.
    if (!sys_keep_loaded())
        return false;
    int none = -1;
    return l_is_forgotten_in_child && l_statm.compare_exchange_strong(none, descriptor, std::memory_order_relaxed);
}

bool open_and_read_statm(std::size_t *bytes)
{
    int const descriptor = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    bool const read = read_statm(descriptor, bytes);
    if (!read || !store_statm_descriptor(descriptor))
        close(descriptor);
    return read;
}

bool read_status(char const *key, std::size_t *bytes)
{
    std::uint64_t value = 0;
    // The memory lines follow the user's groups, mostly within the first kilobyte.
    if (!mem_proc_status_bytes(SYS_OS_TEXT_FILE("/proc/self/status").text(), key, &value))
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

} // namespace

bool mem_os_working_set(std::size_t *bytes)
{
    int kept = l_statm.load(std::memory_order_relaxed);
    if (kept >= 0) {
        if (read_statm(kept, bytes))
            return true;
        // Other code has closed it, and the number may mean another file by now.
        l_statm.compare_exchange_strong(kept, -1, std::memory_order_relaxed);
    }
    return open_and_read_statm(bytes);
}

bool mem_os_peak_working_set(std::size_t *bytes)
{
    return read_status("VmHWM:", bytes) || read_resource_mark(bytes);
}

bool mem_os_peak_virtual(std::size_t *bytes)
{
    return read_status("VmPeak:", bytes);
}

bool mem_os_working_set_and_mark(std::size_t *bytes, std::size_t *mark_bytes)
{
    // The figure of the resource usage is cheap. It is a mark and not the peak, since it survives the start of a new
    // program: it begins at the figure of the program that the process ran before, often the parent's.
    return mem_os_working_set(bytes) && read_resource_mark(mark_bytes);
}
