// The tree of the bins, as the processed events leave it.
#ifndef GEN_PROFILE_BINS_TREE_H
#define GEN_PROFILE_BINS_TREE_H

#include "gen/profile/gen_profile_bins_state.h"

/// Processes events in order. None has an effect while the process goes down, and once a fault has switched the bins
/// off.
void gen_pb_process(GEN_PB_EVENT const *events, std::size_t count);

/// Deletes every bin. If one is open this is an internal error, and the result is false.
bool gen_pb_delete_bins();

#endif
