// Text tables of what is tracked: fields of right-aligned numbers and at last a text, separated by tabs.
#ifndef MEM_TABLE_H
#define MEM_TABLE_H

#include <cstdint>
#include <iosfwd>
#include <string>

/// A number, with the tab behind it.
std::string mem_table_number(std::int64_t number);
/// The heading of a column of numbers, or a text in one, with the tab behind it.
std::string mem_table_heading(std::string const &text);
/// The text with a blank for each character that would break the table: control characters, line ends, tabs.
std::string mem_table_text(std::string const &text);

/// True if the stream has taken the whole text, the system included. Exceptions of the stream pass.
bool mem_table_write(std::ostream &out, std::string const &text);

#endif
