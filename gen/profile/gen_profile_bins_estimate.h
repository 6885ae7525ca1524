// The values that a bin reports: the cost of profiling is taken out of them, and CPU time becomes an estimate of
// wall-clock time.
#ifndef GEN_PROFILE_BINS_ESTIMATE_H
#define GEN_PROFILE_BINS_ESTIMATE_H

#include "gen/profile/gen_profile_bins_bin.h"

/// Reads the tick frequency; with `run` also measures the cost of an open and a close.
void gen_pb_calibrate(bool run);

/// Brings m_report, m_report_overhead and m_self up to date, for this bin and all below it. If one of them is open this
/// is an internal error, and the result is false.
bool gen_pb_compute_report(GEN_PB_IMPL const &bin);

/// The metric, as GEN_PROFILE_BIN::get_metric() describes it.
double gen_pb_metric(GEN_PB_IMPL const &bin, unsigned metric, bool cumulative);

#endif
