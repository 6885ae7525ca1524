// Logs of the memory tracker, cut by the stages of a fitting flow and by selected bins.
//
// A bin whose path matches the expression of a later stage begins that stage. The logs of the stage before it are
// written at that moment, and those of the last stage at the end of the run. A bin that the configuration selects has
// logs of its own, written at each close. The tracker fills the files.
#include "gen/profile/gen_profile_bins_mem.h"

#include "err_sys.h"
#include "gen/base/gen_debug_message.h"
#include "gen/process/gen_log_file.h"
#include "gen/profile/gen_profile_bins_bin.h"
#include "gen/profile/gen_profile_bins_listener.h"
#include "mem_sys.h"

#include <algorithm>
#include <stdexcept>

namespace {

// Size of the text that reports a bad regular expression, terminator included.
constexpr std::size_t REGEX_ERROR_SIZE = 4096;

struct Stage
{
    char const *name;
    boost::regex expression; // of a bin's whole path
};

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

// The key of the stage logs, read at the first call and kept.
bool stage_logs_are_enabled()
{
    static bool const is_enabled = mem_cfg_is_on("gen_enable_mem_fileline_profiling", false);
    return is_enabled;
}

// Writes one log. The result of the dump is not used: the file reports a failure itself.
void write_log(std::string const &name, bool (*dump)(std::ostream &))
{
    GEN_LOG_FILE log(name, std::ios::out);
    dump(log.stream());
}

class MemoryLogs final : public GEN_PB_LISTENER
{
public:
    void start(std::unique_ptr<boost::regex> selected);
    void init_flow_stages();

    void on_open(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event) override;
    void on_close(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event) override;
    void on_end(char const *name) override;

private:
    bool is_selected(GEN_PB_EVENT const &event) const;
    void check_flow_stage(std::string const &path);
    void dump_stage_logs() const;
    static void dump_bin_logs(GEN_PB_IMPL const &bin);

    std::unique_ptr<boost::regex> m_selected; // of one run
    std::vector<Stage> m_stages;              // in the order of the flow; built once, kept to the end of the process
    bool m_has_stages = false;
    int m_stage = -1; // the present stage, -1 before the first; it only grows
};

GEN_PB_KEPT<MemoryLogs> l_logs;

void MemoryLogs::start(std::unique_ptr<boost::regex> selected)
{
    m_selected = std::move(selected);
    stage_logs_are_enabled(); // the key is read here at the latest
    if (m_selected != nullptr || m_has_stages)
        gen_pb_listen_to_bins(*this);
    gen_pb_listen_to_end(*this);
}

void MemoryLogs::init_flow_stages()
{
    if (m_has_stages || !stage_logs_are_enabled())
        return;
    m_has_stages = true;
    m_stage = -1;
    m_stages = {
        {"prefit", compile(".*::fit2_fit_plan$")},
        {"early_place", compile(".*::fit2_fit_(early_)?place_init$")},
        {"cluster", compile(".*::LSC Clustering$")},
        {"placer", compile(".*::Placer$")},
        {"router", compile(".*::fit2_fit_route_init$")},
        {"retimer", compile(".*::fit2_fit_retime_init$")},
        {"postfit", compile(".*::fit2_fit_finalize_init$")},
    };
    gen_pb_listen_to_bins(*this);
}

void MemoryLogs::on_open(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event)
{
    if (m_has_stages && !bin.m_name.empty())
        check_flow_stage(gen_pb_path_text(gen_pb_path(bin, /*top=*/nullptr), "::"));
    if (is_selected(event)) {
        mem_enable_tracking(MEM_TRACKING_SELECTED_BIN);
        gen_debug_message("Enabling detailed memory tracking in bin %s", event.m_name);
    }
}

void MemoryLogs::on_close(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event)
{
    if (is_selected(event))
        dump_bin_logs(bin);
}

void MemoryLogs::on_end(char const * /*name*/)
{
    m_selected.reset();
    if (!m_has_stages)
        gen_pb_ignore_bins(*this);
    dump_stage_logs();
}

bool MemoryLogs::is_selected(GEN_PB_EVENT const &event) const
{
    try {
        return m_selected != nullptr && event.m_name != nullptr && boost::regex_match(event.m_name, *m_selected);
    } catch (std::runtime_error const &) {
        // The expression takes too long on this name. That must not end a flow.
        return false;
    }
}

void MemoryLogs::check_flow_stage(std::string const &path)
{
    auto const next = m_stages.begin() + (m_stage + 1);
    auto const stage = std::find_if(next, m_stages.end(),
                                    [&path](Stage const &each) { return boost::regex_match(path, each.expression); });
    if (stage == m_stages.end())
        return;
    mem_disable_profile_bin_tag_timeline_labels();
    mem_set_timeline_label(stage->name);
    dump_stage_logs();
    m_stage = static_cast<int>(stage - m_stages.begin());
}

void MemoryLogs::dump_stage_logs() const
{
    if (m_stage == -1)
        return;
    std::string const stage = m_stages[static_cast<std::size_t>(m_stage)].name;
    gen_debug_message("Dumping detailed memory logs for the %s stage of the flow", stage);
    if (mem_tracking_is_enabled(MEM_TRACKING_SOURCES)) {
        write_log("mem_tbb_fileline." + stage + ".log", mem_dump_tbb_fileline_tracking);
        write_log("mem_tbb_subsystem." + stage + ".log", mem_dump_tbb_subsystem_tracking);
    }
    if (mem_tracking_is_enabled(MEM_TRACKING_STATISTICS)) {
        write_log("mem_tbb_pbin_tag_stats." + stage + ".log", mem_dump_tbb_profile_bin_tag_stats_tracking);
        write_log("mem_tbb_pbin_stats." + stage + ".log", mem_dump_tbb_profile_bin_stats_tracking);
    }
    mem_tbb_tracking_flush_peak();
}

void MemoryLogs::dump_bin_logs(GEN_PB_IMPL const &bin)
{
    mem_disable_tracking(MEM_TRACKING_SELECTED_BIN);
    std::string const suffix = bin.m_name + '_' + std::to_string(bin.m_count) + ".log";
    GEN_LOG_FILE lines("mem_tbb_fileline_" + suffix, std::ios::out);
    GEN_LOG_FILE subsystems("mem_tbb_subsystem_" + suffix, std::ios::out);
    GEN_LOG_FILE timeline("mem_tbb_timeline_" + suffix, std::ios::out);
    GEN_LOG_FILE details("mem_tbb_timeline_detailed_" + suffix, std::ios::out);
    mem_dump_tbb_fileline_tracking(lines.stream());
    mem_dump_tbb_subsystem_tracking(subsystems.stream());
    mem_dump_tbb_module_tracking(timeline.stream(), details.stream());
    mem_reset_tracking_entries();
}

} // namespace

void gen_pb_start_memory_logs(std::unique_ptr<boost::regex> selected)
{
    l_logs.object.start(std::move(selected));
}

void gen_pb_init_flow_stages()
{
    l_logs.object.init_flow_stages();
}
