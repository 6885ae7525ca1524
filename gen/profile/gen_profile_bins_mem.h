// The memory logs as a listener of the profile bins.
#ifndef GEN_PROFILE_BINS_MEM_H
#define GEN_PROFILE_BINS_MEM_H

#include <memory>

#include <boost/regex.hpp>

/// Prepares the logs of a run, before its root is opened.
///
/// @param selected  matches the names of the bins that have logs of their own, as given to an open; null for no bin
void gen_pb_start_memory_logs(std::unique_ptr<boost::regex> selected);

/// Builds the table of the flow's stages, if the key of the stage logs is on.
void gen_pb_init_flow_stages();

#endif
