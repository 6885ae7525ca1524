// The time line: what the process had at the boundaries of profile bins and at labels. Any thread.
#ifndef MEM_TIMELINE_H
#define MEM_TIMELINE_H

#include <cstdint>
#include <string>

/// A row to be.
struct MEM_TIMELINE_ROW
{
    char const *event; ///< a literal
    std::int64_t now_bytes;
    std::int64_t peak_bytes;
    std::string label;
    std::string bin;
};

/// Adds a row, whose time is now. Throws std::bad_alloc.
///
/// @param with_modules  also what each module has out
void mem_timeline_add(MEM_TIMELINE_ROW row, bool with_modules);

void mem_timeline_reset();

/// The tables; empty if there is nothing in them.
struct MEM_TIMELINE_TABLES
{
    std::string rows;
    std::string modules;
};
MEM_TIMELINE_TABLES mem_timeline_tables();

#endif
