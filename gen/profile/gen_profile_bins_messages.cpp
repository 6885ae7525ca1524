#include "gen/profile/gen_profile_bins_messages.h"

#include "gen/base/gen_debug_message.h"
#include "gen/profile/gen_profile_bins_estimate.h"
#include "gen_time_sys.h"
#include "mem_sys.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int INDENTATION_PER_BIN = 3;

// These lines compute in single precision.
double mib_of_message(std::size_t bytes)
{
    constexpr float PER_STEP = 1.0F / 1024;
    float const mib = static_cast<float>(bytes) * PER_STEP * PER_STEP;
    return static_cast<double>(mib);
}

std::string now()
{
    return gen_get_iso_style_date_and_time(gen_get_current_time_seconds());
}

int trace_indentation()
{
    return INDENTATION_PER_BIN * std::max(gen_pb().intake.debug_depth, 0);
}

char const *name_or_null(char const *name)
{
    return name == nullptr ? "NULL" : name;
}

} // namespace

void gen_pb_announce_open(GEN_PB_IMPL const &bin)
{
    if (!bin.m_user_tag.empty()) {
        std::string const time = now();
        std::string const step = gen_pb_step(bin);
        GEN_ARGUMENT_SLOTS arguments(gen_pb().tree.root->m_name, step, bin.m_user_tag, time,
                                     mib_of_message(mem_info_get_process_peak_virtual_used()));
        mem_msg_local_vinfo(bin.m_code_prefix.c_str(), "Starting %s Step %s %s at %s (peak virtual memory %.3f MB)",
                            arguments.cursor());
    }
    if (!bin.m_name.empty()) {
        GEN_ARGUMENT_SLOTS arguments(bin.m_name, bin.m_count);
        mem_msg_local_vdebug(bin.m_code_prefix.c_str(), "### Opened profile bin '%s' (%d) ###", arguments.cursor());
    }
}

void gen_pb_announce_close(GEN_PB_IMPL const &bin, GEN_PB_INTERVAL_MEMORY const &memory)
{
    if (!bin.m_name.empty()) {
        auto const metric = [&bin](unsigned which, bool cumulative) { return gen_pb_metric(bin, which, cumulative); };
        // The count of wall-clock errors in this line is always 1.
        GEN_ARGUMENT_SLOTS arguments(bin.m_name, bin.m_count, metric(GEN_PB_METRIC_CPU, /*cumulative=*/false),
                                     metric(GEN_PB_METRIC_CPU, /*cumulative=*/true),
                                     static_cast<int>(metric(GEN_PB_METRIC_CPU_ERRORS, /*cumulative=*/true)),
                                     metric(GEN_PB_METRIC_WC, /*cumulative=*/false),
                                     metric(GEN_PB_METRIC_WC, /*cumulative=*/true), 1,
                                     metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/false), mib_of_message(memory.open),
                                     mib_of_message(memory.peak), mib_of_message(memory.close));
        mem_msg_local_vdebug(bin.m_code_prefix.c_str(),
                             "### Closed profile bin '%s' (%d) -- CPU time %.2fs (%.2fs total, %d errors); WC time "
                             "%.2fs (%.2fs total, %d errors); WCest time %.2fs total; Open %.2f MiB, Peak %.2f MiB, "
                             "Close %.2f MiB",
                             arguments.cursor());
    }
    if (!bin.m_user_tag.empty()) {
        std::string const time = now();
        std::string const elapsed = gen_format_elapsed_sec(gen_pb_metric(bin, GEN_PB_METRIC_WC, /*cumulative=*/false));
        std::string const step = gen_pb_step(bin);
        GEN_ARGUMENT_SLOTS arguments(gen_pb().tree.root->m_name, step, bin.m_user_tag, time,
                                     mib_of_message(mem_info_get_process_peak_virtual_used()), elapsed);
        mem_msg_local_vinfo(bin.m_code_prefix.c_str(),
                            "  Ending %s Step %s %s at %s (peak virtual memory %.3f MB elapsed time: %s)",
                            arguments.cursor());
    }
}

void gen_pb_trace_open(char const *code_prefix, char const *name, std::uint32_t flags)
{
    std::fprintf(stderr, "%*sOpening bin '%s:%s' with flags %x\n", trace_indentation(), "",
                 gen_pb_text_or_empty(code_prefix), gen_pb_text_or_empty(name), flags);
}

void gen_pb_trace_close(char const *name)
{
    std::fprintf(stderr, "%*sClosing bin '%s'\n", trace_indentation(), "", name_or_null(name));
}

void gen_pb_trace_close_in_tree(GEN_PB_IMPL const &bin, char const *name)
{
    std::fprintf(stderr, "%*son_close: open bin is '%s', asked to close '%s' with flags %x\n", trace_indentation(), "",
                 bin.m_name.c_str(), name_or_null(name), bin.m_flags);
}
