// The part of the configuration that only the rest of this library uses; its questions are in mem_sys.h. Any thread.
// The questions may be asked while an operator new runs.
#ifndef MEM_CFG_H
#define MEM_CFG_H

#include <cstdint>
#include <string>

/// Makes the state of the configuration, which is kept until the process ends. Optional: the first question makes it
/// too.
void mem_cfg_prepare();

/// Sets the function that returns the installation root; null if it is not known. The file in that directory is read at
/// the next question.
void mem_cfg_set_root_function(std::string (*function)());

/// A number, never 0, that changes with each event that may change an answer. A caller that keeps an answer keeps the
/// number with it, and asks again when the number is another one.
std::uint64_t mem_cfg_generation();

#endif
