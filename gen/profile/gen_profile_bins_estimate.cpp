// How the report values of a bin are computed.
//
// Calibration. An open and a close cost time themselves. Two averages over many empty pairs are known: the internal
// cost, which lies between the two clock readings and so inside the bin, and the external cost, which is that of the
// whole pair, as the enclosing bin sees it. Take 100 ns and 250 ns, and a bin Placer with 10,000,000 ns of CPU time,
// 4,000,000 of them in 1,000 openings of its child Moves:
//
//     Moves   overhead 1,000 * 100                                    =   100,000   report 3,900,000
//     Placer  overhead 1 * 100 + 100,000 of Moves + 1,000 * (250-100) =   250,100   report 9,749,900
//     Placer  self     9,749,900 - 3,900,000                          = 5,849,900   the row OTHER
//
// The cost of the flushes that ended while a bin was current (m_overhead) adds to its overhead in the same way.
//
// Estimates. The CPU clock adds up all threads, so a stage that runs in parallel has more CPU time than its user waits.
// The estimate of a bin starts as its CPU time. If its path matches a ratio rule, it is divided by the ratio. If not,
// it changes by as much as those of its children did, so that a saving reaches all enclosing bins. With a rule of 2.0
// for Moves:
//
//     Moves   3,900,000 / 2.0               = 1,950,000
//     Placer  9,749,900 - 1,950,000 (saved) = 7,799,900
#include "gen/profile/gen_profile_bins_estimate.h"

#include "gen/base/gen_debug_message.h"
#include "gen/base/gen_numeric.h"
#include "gen_time_sys.h"

#include <algorithm>

namespace {

constexpr std::int64_t CALIBRATION_ROUNDS = 100000;

GEN_PB_METRICS overhead_of_pair(GEN_CLOCKS const &all_rounds)
{
    GEN_PB_METRICS overhead;
    overhead.add_interval({all_rounds.m_cpu_nsec / CALIBRATION_ROUNDS, all_rounds.m_ticks / CALIBRATION_ROUNDS});
    return overhead;
}

void report_overhead(GEN_PB_METRICS const &internal, GEN_PB_METRICS const &external)
{
    // The formats of these lines cut the integers to 32 bits.
    auto const narrow = [](std::int64_t value) { return static_cast<std::int32_t>(value); };
    auto const scaled = [](std::int64_t value, double unit) { return static_cast<double>(value) / unit; };
    double const ticks_per_usec = static_cast<double>(gen_pb().estimate.wc_frequency) / 1e6;
    gen_debug_message("O/H CPU(int, ext)=(%.6f, %.6f); ticks=(%d, %d)", scaled(internal.m_values[GEN_PB_CPU], 1000.0),
                      scaled(external.m_values[GEN_PB_CPU], 1000.0), narrow(internal.m_values[GEN_PB_CPU]),
                      narrow(external.m_values[GEN_PB_CPU]));
    gen_debug_message("O/H  WC(int, ext)=(%.6f, %.6f); ticks=(%d, %d)",
                      scaled(internal.m_values[GEN_PB_WC], ticks_per_usec),
                      scaled(external.m_values[GEN_PB_WC], ticks_per_usec), narrow(internal.m_values[GEN_PB_WC]),
                      narrow(external.m_values[GEN_PB_WC]));
}

// Sums over the children of a bin.
struct ChildSums
{
    GEN_PB_METRICS report;
    GEN_PB_METRICS overhead;
    std::int64_t count = 0;
};

bool is_closed(GEN_PB_IMPL const &bin)
{
    return GEN_PB_CHECK(bin.m_open_count == 0, "m_open_count == 0");
}

// Computes the report values of a bin, whose children are computed.
void compute_from_children(GEN_PB_IMPL const &bin)
{
    auto const &state = gen_pb().estimate;
    bin.m_computed = true;
    bin.m_report = bin.m_total;
    bin.m_report_overhead = bin.m_overhead;
    bin.m_report_overhead.add_clocks(state.internal_overhead, bin.m_count);

    ChildSums children;
    for (GEN_PB_IMPL const *child : bin.m_children) {
        children.report.add_clocks(child->m_report);
        children.overhead.add_clocks(child->m_report_overhead);
        children.count += child->m_count;
    }
    bin.m_report_overhead.add_clocks(children.overhead);
    bin.m_report_overhead.add_clocks(state.external_overhead, children.count);
    bin.m_report_overhead.add_clocks(state.internal_overhead, -children.count);
    bin.m_report.subtract_clocks(bin.m_report_overhead);

    std::int64_t &estimate = bin.m_report.m_values[GEN_PB_WC_EST];
    if (bin.m_wc_est_factor != 0.0)
        estimate += gen_truncate(static_cast<double>(bin.m_report.m_values[GEN_PB_CPU]) * bin.m_wc_est_factor);
    else
        estimate += children.report.m_values[GEN_PB_WC_EST] - children.report.m_values[GEN_PB_CPU];
    bin.m_report.clamp_clocks();

    bin.m_self = bin.m_report;
    for (std::size_t i = GEN_PB_CLOCK_COUNT; i < GEN_PB_METRIC_COUNT; ++i)
        bin.m_self.m_values[i] = 0;
    bin.m_self.subtract_clocks(children.report);
    bin.m_self.clamp_clocks();
}

// A metric that only the report values have.
double report_metric(GEN_PB_IMPL const &bin, unsigned metric)
{
    if (!gen_pb_compute_report(bin))
        return -1.0;
    switch (metric) {
    case GEN_PB_METRIC_START_MEM:
        return gen_pb_mib(bin.m_report.m_values[GEN_PB_START_MEM]);
    case GEN_PB_METRIC_END_MEM:
        return gen_pb_mib(bin.m_report.m_values[GEN_PB_END_MEM]);
    case GEN_PB_METRIC_PEAK_MEM:
        return gen_pb_mib(bin.m_report.m_values[GEN_PB_PEAK_MEM]);
    default:
        return gen_pb_seconds_of_nsec(bin.m_report.m_values[GEN_PB_WC_EST]);
    }
}

} // namespace

void gen_pb_calibrate(bool run)
{
    auto &state = gen_pb().estimate;
    state.wc_frequency = static_cast<std::int64_t>(gen_get_hires_tick_frequency());
    gen_debug_message("WC frequency is %g", static_cast<double>(state.wc_frequency));
    if (!run)
        return;
    gen_debug_message("Calibrating bins since debug messages are enabled");
    GEN_CLOCKS inside;
    GEN_CLOCKS const start = gen_read_clocks();
    for (std::int64_t i = 0; i < CALIBRATION_ROUNDS; ++i) {
        GEN_CLOCKS const open = gen_read_clocks();
        GEN_CLOCKS const span = gen_read_clocks() - open;
        inside.m_cpu_nsec += span.m_cpu_nsec;
        inside.m_ticks += span.m_ticks;
    }
    GEN_CLOCKS const whole = gen_read_clocks() - start;
    gen_debug_message("O/H calibration time: %.6fs", gen_pb_seconds_of_ticks(whole.m_ticks));
    GEN_PB_METRICS const internal = overhead_of_pair(inside);
    GEN_PB_METRICS external = overhead_of_pair(whole);
    report_overhead(internal, external);
    for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i)
        external.m_values[i] = std::max(external.m_values[i], internal.m_values[i]);
    state.internal_overhead = internal;
    state.external_overhead = external;
}

// One loop instead of a call for each level, since a tree may be deeper than the stack: m_walk of a bin counts the
// children that the loop has entered, and a bin is computed after the last of them.
bool gen_pb_compute_report(GEN_PB_IMPL const &top)
{
    if (!is_closed(top))
        return false;
    if (top.m_computed)
        return true;
    top.m_walk = 0;
    for (GEN_PB_IMPL const *bin = &top;;) {
        if (bin->m_walk != bin->m_children.size()) {
            GEN_PB_IMPL const *const child = bin->m_children[bin->m_walk++];
            if (!is_closed(*child))
                return false;
            if (!child->m_computed) {
                child->m_walk = 0;
                bin = child;
            }
            continue;
        }
        compute_from_children(*bin);
        if (bin == &top)
            return true;
        bin = bin->m_parent;
    }
}

double gen_pb_metric(GEN_PB_IMPL const &bin, unsigned metric, bool cumulative)
{
    if (!gen_pb_is_own_thread())
        return -1.0;
    GEN_PB_METRICS metrics;
    if (cumulative)
        metrics = bin.m_total;
    if (bin.m_open_count != 0)
        metrics.add_interval(gen_read_clocks() - bin.m_start);
    else if (!cumulative)
        metrics = bin.m_last;
    switch (metric) {
    case GEN_PB_METRIC_WC:
        return gen_pb_seconds_of_ticks(metrics.m_values[GEN_PB_WC]);
    case GEN_PB_METRIC_CPU:
        return gen_pb_seconds_of_nsec(metrics.m_values[GEN_PB_CPU]);
    case GEN_PB_METRIC_CPU_ERRORS:
        return metrics.m_errors[GEN_PB_CPU];
    case GEN_PB_METRIC_WC_ERRORS:
        return metrics.m_errors[GEN_PB_WC];
    case GEN_PB_METRIC_START_MEM:
    case GEN_PB_METRIC_END_MEM:
    case GEN_PB_METRIC_PEAK_MEM:
    case GEN_PB_METRIC_WC_EST:
        return report_metric(bin, metric);
    default:
        gen_pb_fail("unknown metric", __FILE__, __LINE__);
        return -1.0;
    }
}
