// Queries to the platform about the memory of the process. A query returns false and leaves its outputs alone if the
// system gives no result. Any thread. Sizes are in bytes.
#ifndef MEM_OS_H
#define MEM_OS_H

#include <cstddef>

/// The memory of the process that is resident now.
bool mem_os_working_set(std::size_t *bytes);

/// The largest memory that was ever resident.
bool mem_os_peak_working_set(std::size_t *bytes);

/// The largest virtual memory that the process ever had.
bool mem_os_peak_virtual(std::size_t *bytes);

/// The resident memory and a high-water mark of it, for callers that ask often.
///
/// The mark never falls, and if it rises from one call to the next, its new value was reached in between. A single mark
/// means nothing: the first may be higher than the memory that this process ever had.
bool mem_os_working_set_and_mark(std::size_t *bytes, std::size_t *mark_bytes);

#endif
