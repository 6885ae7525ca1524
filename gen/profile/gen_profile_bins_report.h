// The reports of the bins: a table with a row for each bin.
#ifndef GEN_PROFILE_BINS_REPORT_H
#define GEN_PROFILE_BINS_REPORT_H

#include "gen/profile/gen_profile_bins_bin.h"

/// GEN_PROFILE_BIN::dump(). The bins with a tag are not kept.
void gen_pb_dump(GEN_PB_IMPL &bin, char const *file, bool collect_tags);

/// Writes the report files of finalize().
void gen_pb_write_reports(char const *name);

#endif
