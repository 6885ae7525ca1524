#ifndef MEM_SITES_TABLE_H
#define MEM_SITES_TABLE_H

#include <string>

/// The table of the blocks by source line; empty if none was recorded.
std::string mem_sites_table_by_line();

/// The same by executable and library.
std::string mem_sites_table_by_module();

#endif
