// The ratio rules: CPU seconds in a second of wall-clock time, for the bins whose path matches a pattern.
#ifndef GEN_PROFILE_BINS_RATIOS_H
#define GEN_PROFILE_BINS_RATIOS_H

#include "gen/profile/gen_profile_bins_bin.h"

/// Appends a rule, as GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio() describes it.
void gen_pb_add_ratio_rule(char const *pattern, double ratio);
/// Appends the rules that are known for the suite's flows.
void gen_pb_add_builtin_ratio_rules();

/// Sets m_wc_est_factor of a new bin, which has its parent and its name.
void gen_pb_apply_ratio_rules(GEN_PB_IMPL &bin);
/// Frees the states of the bins, none of which exists any more.
void gen_pb_forget_ratio_states();

#endif
