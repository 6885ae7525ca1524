// Readers of the texts under /proc that describe a process. Pure functions: any text may be given. A text that doesn't
// have the expected form gives false and leaves the result alone.
#ifndef MEM_PROC_TEXT_H
#define MEM_PROC_TEXT_H

#include <cstdint>
#include <string_view>

/// The resident pages: the second of the seven numbers of a "statm" text, the only line, which ends in a line feed.
bool mem_proc_statm_resident_pages(std::string_view text, std::uint64_t *pages);

/// A size of a "status" text in bytes: with the key "VmPeak:", the line "VmPeak:\t    6240 kB\n" gives 6389760. A last
/// line without a line feed may be cut short and is not read.
bool mem_proc_status_bytes(std::string_view text, std::string_view key, std::uint64_t *bytes);

#endif
