// The time line: the bytes of the process at the boundaries of profile bins and at labels. Any thread.
#ifndef MEM_TIMELINE_H
#define MEM_TIMELINE_H

#include <cstdint>
#include <string>

/// A row to append; its time is the moment of the call.
struct MEM_TIMELINE_ROW
{
    char const *event; ///< a literal
    std::int64_t now_bytes;
    std::int64_t peak_bytes;
    std::string label;
    std::string bin;
};

/// Appends a row. Throws std::bad_alloc.
///
/// @param with_modules  also record the living bytes of each module
void mem_timeline_add(MEM_TIMELINE_ROW row, bool with_modules);

void mem_timeline_reset();

/// The tables as text; empty if there are no rows, or no rows with modules.
struct MEM_TIMELINE_TABLES
{
    std::string rows;
    std::string modules;
};
MEM_TIMELINE_TABLES mem_timeline_tables();

#endif
