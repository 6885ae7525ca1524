// Figures of the profile bins, added up by path and by tag. Any thread.
#ifndef MEM_STATISTICS_H
#define MEM_STATISTICS_H

#include <cstdint>
#include <string>

/// One interval of a bin, in bytes.
struct MEM_BIN_FIGURES
{
    std::int64_t open_bytes;
    std::int64_t close_bytes;
    std::int64_t peak_bytes;
};

/// Adds an interval. Throws std::bad_alloc.
///
/// @param path  the names of the bins from the outermost on, joined by "::"
/// @param tag   empty if the bin has none, or is inside a bin of the same tag
void mem_statistics_add(std::string const &path, std::string const &tag, MEM_BIN_FIGURES const &figures);

void mem_statistics_reset();

/// The tables as text; empty if nothing was added.
std::string mem_statistics_table_by_bin();
std::string mem_statistics_table_by_tag();

#endif
