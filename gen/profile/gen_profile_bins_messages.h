// The lines that opens and closes write: announced bins through the message channels, and the trace of the key
// "debug_gen_bins" to the standard error stream.
#ifndef GEN_PROFILE_BINS_MESSAGES_H
#define GEN_PROFILE_BINS_MESSAGES_H

#include "gen/profile/gen_profile_bins_bin.h"

/// Bytes that the memory tracker reports for one interval of a bin.
struct GEN_PB_INTERVAL_MEMORY
{
    std::size_t open = 0;
    std::size_t close = 0;
    std::size_t peak = 0;
};

/// The lines of a bin with GEN_PB_FLAG_ANNOUNCE: one for its name, one for its step label.
void gen_pb_announce_open(GEN_PB_IMPL const &bin);
void gen_pb_announce_close(GEN_PB_IMPL const &bin, GEN_PB_INTERVAL_MEMORY const &memory);

/// The lines of the trace: the calls of open and close, and the close when it reaches the tree.
void gen_pb_trace_open(char const *code_prefix, char const *name, std::uint32_t flags);
void gen_pb_trace_close(char const *name);
void gen_pb_trace_close_in_tree(GEN_PB_IMPL const &bin, char const *name);

#endif
