// Logs of the memory tracker, cut by the stages of a fitting flow and by selected bins.
//
// A bin whose path matches the expression of a later stage begins that stage; the logs of the stage before it are
// written at that moment, and those of the last one by finalize. The tracker fills the files.
#include "gen/profile/gen_profile_bins_impl.h"

#include "err_sys.h"
#include "gen/base/gen_message.h"
#include "gen_fstream_sys.h"
#include "mem_sys.h"

#include <algorithm>

#include <boost/regex.hpp>

namespace {

// Room of the text for a bad regular expression, terminator included.
constexpr std::size_t REGEX_ERROR_SIZE = 4096;

struct GEN_PB_STAGE
{
    char const *m_name;
    boost::regex m_expression; // of a bin's whole path
};

// In the order of the flow. Built once, lives to the end of the process.
std::vector<GEN_PB_STAGE> gen_pb_stage_table;
bool gen_pb_stage_ready = false;
int gen_pb_stage_index = -1; // the present stage, -1 before the first; only grows

boost::regex compile(char const *expression)
{
    try {
        return boost::regex(expression, boost::regex::perl);
    } catch (boost::regex_error const &error) {
        std::string text;
        stl_sprintf(&text, "Error compiling regular expression: %s", error.what());
        text.resize(std::min(text.size(), REGEX_ERROR_SIZE - 1));
        err_report_internal_error(text.c_str(), "GEN", __FILE__, __LINE__);
    }
}

// A file of the tracker's; one that can't be opened takes nothing.
class LogFile : public std::brisel_ofstream
{
public:
    explicit LogFile(std::string const &name) : std::brisel_ofstream(name.c_str(), std::ios::out, GEN_SHARE_ALL) {}
};

} // namespace

bool gen_pb_mem_profile_enabled()
{
    static bool const is_enabled = mem_cfg_is_on("gen_enable_mem_fileline_profiling", false);
    return is_enabled;
}

void gen_pb_init_flow_stages()
{
    if (gen_pb_stage_ready || !gen_pb_mem_profile_enabled())
        return;
    gen_pb_stage_ready = true;
    gen_pb_stage_index = -1;
    gen_pb_stage_table = {
        {"prefit", compile(".*::fit2_fit_plan$")},
        {"early_place", compile(".*::fit2_fit_(early_)?place_init$")},
        {"cluster", compile(".*::LSC Clustering$")},
        {"placer", compile(".*::Placer$")},
        {"router", compile(".*::fit2_fit_route_init$")},
        {"retimer", compile(".*::fit2_fit_retime_init$")},
        {"postfit", compile(".*::fit2_fit_finalize_init$")},
    };
}

void gen_pb_check_flow_stage(std::string const &path)
{
    if (!gen_pb_stage_ready || !gen_pb_mem_profile_enabled())
        return;
    auto const next = gen_pb_stage_table.begin() + (gen_pb_stage_index + 1);
    auto const stage = std::find_if(next, gen_pb_stage_table.end(), [&path](GEN_PB_STAGE const &each) {
        return boost::regex_match(path, each.m_expression);
    });
    if (stage == gen_pb_stage_table.end())
        return;
    mem_disable_profile_bin_tag_timeline_labels();
    mem_set_timeline_label(stage->m_name);
    gen_pb_dump_stage_logs();
    gen_pb_stage_index = static_cast<int>(stage - gen_pb_stage_table.begin());
}

void gen_pb_dump_stage_logs()
{
    if (gen_pb_stage_index == -1)
        return;
    std::string const stage = gen_pb_stage_table[static_cast<std::size_t>(gen_pb_stage_index)].m_name;
    gen_say("Dumping detailed memory logs for the %s stage of the flow", stage);
    if (mem_tracking_is_enabled(MEM_TRACKING_SOURCES)) {
        LogFile lines("mem_tbb_fileline." + stage + ".log");
        mem_dump_tbb_fileline_tracking(lines);
        LogFile subsystems("mem_tbb_subsystem." + stage + ".log");
        mem_dump_tbb_subsystem_tracking(subsystems);
    }
    if (mem_tracking_is_enabled(MEM_TRACKING_STATISTICS)) {
        LogFile tags("mem_tbb_pbin_tag_stats." + stage + ".log");
        mem_dump_tbb_profile_bin_tag_stats_tracking(tags);
        LogFile bins("mem_tbb_pbin_stats." + stage + ".log");
        mem_dump_tbb_profile_bin_stats_tracking(bins);
    }
    mem_tbb_tracking_flush_peak();
}

void gen_pb_start_detailed_tracking(char const *name)
{
    mem_enable_tracking(MEM_TRACKING_SELECTED_BIN);
    gen_say("Enabling detailed memory tracking in bin %s", name);
}

void gen_pb_dump_detailed_logs(GEN_PB_IMPL const &bin)
{
    mem_disable_tracking(MEM_TRACKING_SELECTED_BIN);
    std::string const suffix = bin.m_name + '_' + std::to_string(bin.m_count) + ".log";
    LogFile lines("mem_tbb_fileline_" + suffix);
    LogFile subsystems("mem_tbb_subsystem_" + suffix);
    LogFile timeline("mem_tbb_timeline_" + suffix);
    LogFile details("mem_tbb_timeline_detailed_" + suffix);
    mem_dump_tbb_fileline_tracking(lines);
    mem_dump_tbb_subsystem_tracking(subsystems);
    mem_dump_tbb_module_tracking(timeline, details);
    mem_reset_tracking_entries();
}
