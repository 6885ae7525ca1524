// The caches of a package, read from the processor that the calling thread is on.
#ifndef GEN_MACHINE_CACHE_H
#define GEN_MACHINE_CACHE_H

#include "gen/machine/gen_machine_state.h"

/// Fills the list of caches of a new package. A vendor that is not supported clears m_cpu_info_valid.
///
/// @param leaf_1_eax  family, model and stepping
void gen_read_caches(GEN_MACHINE_STATE &state, GEN_PKG &package, std::uint32_t leaf_1_eax);

#endif
