// The tree of the tagged report.
#ifndef GEN_PROFILE_BINS_TAGGED_H
#define GEN_PROFILE_BINS_TAGGED_H

#include "gen/profile/gen_profile_bins_bin.h"

/// Moves bins with a tag, children before their parents, into a subtree for each tag. The tree stays so.
void gen_pb_build_tag_tree(std::vector<GEN_PB_IMPL *> const &tagged_bins);

#endif
