// The part of the configuration that only the rest of this library uses; its queries are in mem_sys.h. Any thread. All
// of them may be called while an operator new runs.
#ifndef MEM_CFG_H
#define MEM_CFG_H

#include <cstdint>
#include <string>

/// Makes the state of the configuration, which is kept until the process ends. Done when the library is loaded; the
/// first query makes it too.
void mem_cfg_prepare();

/// Takes the locks of the configuration, and releases them, around a fork.
void mem_cfg_lock();
void mem_cfg_unlock();

/// Sets the function that returns the installation root; null if it is not known. The file in that directory is read at
/// the next query.
void mem_cfg_set_root_function(std::string (*function)());

/// A number, never 0, that changes with each event that may change the result of a query. A caller that keeps a result
/// keeps the number with it, and queries again when the number is another one.
std::uint64_t mem_cfg_generation();

#endif
