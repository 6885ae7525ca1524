// What the rest of the library needs of the configuration beside its questions. Any thread; the questions may be asked
// from within an allocation.
#ifndef MEM_CFG_H
#define MEM_CFG_H

#include <cstdint>

/// Makes the configuration's state; it stays until the process ends. Questions do so themselves if need be.
void mem_cfg_prepare();

/// A number that is different, and never 0, after each event that may change an answer: what keeps an answer asks anew
/// when it sees another number.
std::uint64_t mem_cfg_generation();

/// Tells of such an event.
void mem_cfg_changed();

#endif
