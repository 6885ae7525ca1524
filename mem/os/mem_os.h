// What the memory half of zel_mem asks of the platform about its process. A question that the platform doesn't
// answer gives false and leaves the results alone. Any thread. Sizes are bytes.
#ifndef MEM_OS_H
#define MEM_OS_H

#include <cstddef>

/// The memory of the process that is resident now.
bool mem_os_working_set(std::size_t *bytes);

/// The most that was ever resident.
bool mem_os_peak_working_set(std::size_t *bytes);

/// The most virtual memory that the process ever had.
bool mem_os_peak_virtual(std::size_t *bytes);

/// The resident memory and a high-water mark of it, for callers that ask often.
///
/// The mark never falls, and if it rises from one call to the next, its new value was reached in between. Standing
/// alone it says nothing: at first it may be above all that this process ever had.
bool mem_os_working_set_and_mark(std::size_t *bytes, std::size_t *mark_bytes);

/// True while the system ends the process and has ended every other thread already, wherever it was.
bool mem_os_is_last_thread_of_exit();

/// Has the functions called around each fork of the process. False if there can't be a call; true also if the platform
/// has no forks.
bool mem_os_watch_forks(void (*before)(), void (*in_parent)(), void (*in_child)());

#endif
