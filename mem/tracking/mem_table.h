// Text tables: right-aligned fields, followed by a text at the end of the line, separated by tabs.
#ifndef MEM_TABLE_H
#define MEM_TABLE_H

#include <cstdint>
#include <iosfwd>
#include <string>

/// A number and the tab after it.
std::string mem_table_number(std::int64_t number);
/// The heading of a column of numbers, or a text in such a column, and the tab after it.
std::string mem_table_heading(std::string const &text);
/// The text with a blank for each character that would break the table: control characters, line ends, tabs.
std::string mem_table_text(std::string const &text);

/// Writes a text and flushes the stream. True if all of it was written. Lets exceptions of the stream through.
bool mem_table_write(std::ostream &out, std::string const &text);

#endif
