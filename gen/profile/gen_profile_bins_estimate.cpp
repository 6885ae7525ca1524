// What the profile bins cost is measured and taken out of the numbers, and CPU time becomes an estimate of wall-clock
// time.
//
// The calibration gives two figures for an open and close: the internal one, which lies inside the bin, and the
// external one, as the enclosing bin sees it. A bin's report values are its totals less the internal cost of its own
// openings, less all that its children were charged, less the difference of external and internal for each opening of a
// child.
//
// The estimate starts as the CPU time. A bin whose path matches a ratio rule spends `ratio` CPU seconds in a second of
// wall-clock time, so its estimate is CPU / ratio. A bin without a rule passes on what its children saved: with 10 s of
// CPU of its own and a child whose rule of 2.0 turned 8 s into 4 s, it is estimated at 18 - 4 = 14 s.
#include "gen/profile/gen_profile_bins_impl.h"

#include "gen/base/gen_message.h"
#include "gen/base/gen_numeric.h"
#include "gen_time_sys.h"

#include <algorithm>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

namespace {

constexpr std::int64_t CALIBRATION_ROUNDS = 100000;

struct GEN_PB_RATIO_RULE
{
    std::string m_pattern;
    std::vector<std::string> m_segments;
    double m_ratio; // CPU seconds per wall-clock second
};

struct BuiltinRule
{
    char const *m_pattern;
    double m_ratio;
};

// Ratios that were measured on the suite's own flows.
constexpr BuiltinRule BUILTIN_RULES[] = {
    {"Fitter/*/Cluster Annealing/Perform Temperature", 2.85},
    {"Fitter/*/Cluster Annealing/Serial Perform Temperature", 2.85},
    {"*/TIS Annotate Delay Tree", 3.14},
    {"Fitter/*/TDC Timing Analysis", 1.12},
    {"Fitter/*/Placer/*/Placement Congestion Analysis", 2.49},
    {"Fitter/*/Delay Cache/*/perform_lookahead_explorations", 2.77},
    {"Fitter/*/CBE-level placement optimization/*/Perform Moves", 1.59},
    {"Fitter/*/BLE-level placement optimization/*/Perform Moves", 2.94},
    {"Fitter/*/Router Main Loop Before First Convergence/Core Routing", 1.39},
    {"Fitter/*/Router Main Loop After First Convergence/Core Routing", 1.07},
    {"Fitter/*/target_density_calibration", 1000000.0},
    {"*/U2B2_DIRECTOR->work", 2.0},
};

// A bin that matches several rules: its whole CPU time is taken off its estimate.
constexpr double CONFLICTING_FACTOR = -1.0;

// Costs of an open and close, in the units of each metric. Zero until they are calibrated.
GEN_PB_METRICS l_gen_pb_internal_overhead;
GEN_PB_METRICS l_gen_pb_external_overhead;

// In order of addition; never emptied.
std::vector<GEN_PB_RATIO_RULE> l_gen_pb_ratio_rules;

GEN_PB_METRICS overhead_of(GEN_CLOCKS const &sum)
{
    GEN_PB_METRICS overhead;
    overhead.m_values[GEN_PB_WC] = sum.m_ticks / CALIBRATION_ROUNDS;
    overhead.m_values[GEN_PB_CPU] = overhead.m_values[GEN_PB_WC_EST] = sum.m_cpu_nsec / CALIBRATION_ROUNDS;
    return overhead;
}

void say_overhead(GEN_PB_METRICS const &internal, GEN_PB_METRICS const &external)
{
    // The integers of these lines are narrowed to 32 bits, as their formats say.
    auto const narrow = [](std::int64_t value) { return static_cast<std::int32_t>(value); };
    auto const scaled = [](std::int64_t value, double unit) { return static_cast<double>(value) / unit; };
    double const ticks_per_usec = static_cast<double>(s_gen_pb.m_wc_frequency) / 1e6;
    gen_say("O/H CPU(int, ext)=(%.6f, %.6f); ticks=(%d, %d)", scaled(internal.m_values[GEN_PB_CPU], 1000.0),
            scaled(external.m_values[GEN_PB_CPU], 1000.0), narrow(internal.m_values[GEN_PB_CPU]),
            narrow(external.m_values[GEN_PB_CPU]));
    gen_say("O/H  WC(int, ext)=(%.6f, %.6f); ticks=(%d, %d)", scaled(internal.m_values[GEN_PB_WC], ticks_per_usec),
            scaled(external.m_values[GEN_PB_WC], ticks_per_usec), narrow(internal.m_values[GEN_PB_WC]),
            narrow(external.m_values[GEN_PB_WC]));
}

// Whether the segments of a pattern match the names of bins from the root down. "*" stands for any number of names; on
// a mismatch the last one takes one name more.
bool matches(std::vector<std::string> const &segments, std::vector<GEN_PB_IMPL const *> const &bins)
{
    constexpr std::size_t NONE = static_cast<std::size_t>(-1);
    std::size_t segment = 0;
    std::size_t bin = 0;
    std::size_t star = NONE;
    std::size_t star_end = 0; // the first bin behind those that the star has taken
    while (bin < bins.size()) {
        if (segment < segments.size() && segments[segment] == "*") {
            star = segment++;
            star_end = bin;
        } else if (segment < segments.size() && segments[segment] == bins[bin]->m_name) {
            ++segment;
            ++bin;
        } else if (star != NONE) {
            segment = star + 1;
            bin = ++star_end;
        } else
            return false;
    }
    return std::all_of(segments.begin() + static_cast<std::ptrdiff_t>(segment), segments.end(),
                       [](std::string const &rest) { return rest == "*"; });
}

// All bins from the top down to a new one, which may be about to become the root.
std::vector<GEN_PB_IMPL const *> bins_down_to(GEN_PB_IMPL const &bin)
{
    std::vector<GEN_PB_IMPL const *> bins;
    for (GEN_PB_IMPL const *each = &bin; each != nullptr; each = each->m_parent)
        bins.push_back(each);
    std::reverse(bins.begin(), bins.end());
    return bins;
}

// What the children of a bin add up to.
struct ChildSums
{
    GEN_PB_METRICS m_report;
    GEN_PB_METRICS m_overhead;
    std::int64_t m_count = 0;
};

} // namespace

void gen_pb_calibrate(bool run)
{
    s_gen_pb.m_wc_frequency = static_cast<std::int64_t>(gen_get_hires_tick_frequency());
    gen_say("WC frequency is %g", static_cast<double>(s_gen_pb.m_wc_frequency));
    if (!run)
        return;
    gen_say("Calibrating bins since debug messages are enabled");
    GEN_CLOCKS inside;
    GEN_CLOCKS const start = gen_read_clocks();
    for (std::int64_t i = 0; i < CALIBRATION_ROUNDS; ++i) {
        GEN_CLOCKS const open = gen_read_clocks();
        GEN_CLOCKS const span = gen_read_clocks() - open;
        inside.m_cpu_nsec += span.m_cpu_nsec;
        inside.m_ticks += span.m_ticks;
    }
    GEN_CLOCKS const whole = gen_read_clocks() - start;
    gen_say("O/H calibration time: %.6fs",
            static_cast<double>(whole.m_ticks) / static_cast<double>(s_gen_pb.m_wc_frequency));
    GEN_PB_METRICS const internal = overhead_of(inside);
    GEN_PB_METRICS external = overhead_of(whole);
    say_overhead(internal, external);
    for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i)
        external.m_values[i] = std::max(external.m_values[i], internal.m_values[i]);
    l_gen_pb_internal_overhead = internal;
    l_gen_pb_external_overhead = external;
}

void GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(char const *pattern, double ratio)
{
    GEN_PB_RATIO_RULE rule{pattern, {}, ratio};
    boost::split(rule.m_segments, rule.m_pattern, [](char c) { return c == '/'; });
    l_gen_pb_ratio_rules.push_back(std::move(rule));
}

void gen_pb_add_builtin_ratio_rules()
{
    for (BuiltinRule const &rule : BUILTIN_RULES)
        GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(rule.m_pattern, rule.m_ratio);
}

void gen_pb_apply_ratio_rules(GEN_PB_IMPL &bin)
{
    std::vector<GEN_PB_IMPL const *> const bins = bins_down_to(bin);
    GEN_PB_RATIO_RULE const *first = nullptr;
    bool is_conflicting = false;
    for (GEN_PB_RATIO_RULE const &rule : l_gen_pb_ratio_rules) {
        if (!matches(rule.m_segments, bins))
            continue;
        if (first == nullptr) {
            first = &rule;
            continue;
        }
        if (!is_conflicting) {
            gen_say("WARNING: multiple CPU:WC ratios found for bin %s. Disabling CPU:WC.\n",
                    gen_pb_join_names(bins, "/"));
            gen_say("  WARNING: first ratio: %.1f (%s)", first->m_ratio, first->m_pattern);
        }
        is_conflicting = true;
        gen_say("  WARNING: additional ratio: %.1f (%s)", rule.m_ratio, rule.m_pattern);
    }
    if (first != nullptr)
        bin.m_wc_est_factor = is_conflicting ? CONFLICTING_FACTOR : 1 / first->m_ratio - 1;
}

bool GEN_PB_IMPL::compute_report() const
{
    if (!GEN_PB_CHECK(m_open_count == 0, "m_open_count == 0"))
        return false;
    if (m_computed)
        return true;
    m_computed = true;
    m_report = m_total;
    m_report_overhead = m_overhead;
    m_report_overhead.add_clocks(l_gen_pb_internal_overhead, m_count);

    ChildSums children;
    for (GEN_PB_IMPL const *child : m_children) {
        if (!child->compute_report())
            return false;
        children.m_report.add_clocks(child->m_report);
        children.m_overhead.add_clocks(child->m_report_overhead);
        children.m_count += child->m_count;
    }
    m_report_overhead.add_clocks(children.m_overhead);
    m_report_overhead.add_clocks(l_gen_pb_external_overhead, children.m_count);
    m_report_overhead.add_clocks(l_gen_pb_internal_overhead, -children.m_count);
    m_report.subtract_clocks(m_report_overhead);

    m_report.m_values[GEN_PB_WC_EST] +=
        m_wc_est_factor != 0.0 ? gen_truncate(static_cast<double>(m_report.m_values[GEN_PB_CPU]) * m_wc_est_factor)
                               : children.m_report.m_values[GEN_PB_WC_EST] - children.m_report.m_values[GEN_PB_CPU];
    m_report.clamp_clocks();

    m_self = m_report;
    for (std::size_t i = GEN_PB_CLOCK_COUNT; i < GEN_PB_METRIC_COUNT; ++i)
        m_self.m_values[i] = 0;
    m_self.subtract_clocks(children.m_report);
    m_self.clamp_clocks();
    return true;
}
