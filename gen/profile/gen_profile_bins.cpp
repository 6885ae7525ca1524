#include "gen/profile/gen_profile_bins_impl.h"

#include "err_sys.h"
#include "gen/profile/gen_cookie.h"
#include "gen/base/gen_message.h"
#include "gen_flow_sys.h"
#include "gen_time_sys.h"
#include "mem_sys.h"
#include "thr_sys.h"

#include <algorithm>
#include <stdexcept>

#include <boost/regex.hpp>

// Written and read as its members say; nothing of it needs release at exit.
GEN_PB_STATE s_gen_pb;

std::string GEN_PROFILE_BINS::s_log_file_suffix;

namespace {

// More bins than this, opened at once, slow a flow down.
constexpr std::uint32_t IMMEDIATE_BIN_LIMIT = 5000000;

// A process that is not the flow's main one writes its reports at this granularity alone.
constexpr int SECONDARY_REPORT_GRANULARITY = 3;

// Room of the text for a bad regular expression, terminator included.
constexpr std::size_t REGEX_ERROR_SIZE = 4096;

// Compiled from the configuration by initialize, dropped by finalize; null for an empty key.
std::unique_ptr<boost::regex> l_gen_pb_tracq_bin_re;
std::unique_ptr<boost::regex> l_gen_pb_tracq_tag_re;
std::unique_ptr<boost::regex> l_gen_pb_fileline_re;

[[noreturn]] void report_bad_regex(std::string const &expression)
{
    std::string text;
    stl_sprintf(&text, "Error compiling regular expression \"%s\"", expression.c_str());
    text.resize(std::min(text.size(), REGEX_ERROR_SIZE - 1));
    err_report_internal_error(text.c_str(), "GEN", __FILE__, __LINE__);
}

std::unique_ptr<boost::regex> compile_key(char const *key)
{
    std::string const expression = mem_cfg_get_value(key);
    if (expression.empty())
        return nullptr;
    try {
        return std::make_unique<boost::regex>(expression, boost::regex::perl);
    } catch (boost::regex_error const &) {
        report_bad_regex(expression);
    }
}

bool is_log_wanted(bool primary, bool memory_is_tracked)
{
    if (!mem_cfg_is_on("gen_print_profile_bins", false) && !memory_is_tracked)
        return false;
    return primary || mem_cfg_get_int_value("gen_hybrid_granularity_verbose_call", 0) == SECONDARY_REPORT_GRANULARITY;
}

void read_configuration(bool primary)
{
    s_gen_pb.m_debug = primary && mem_cfg_is_on("debug_gen_bins", false);
    s_gen_pb.m_show_ignored = s_gen_pb.m_debug || mem_cfg_is_on("show_ignored_bin_warnings", false);
    bool const memory_is_tracked = mem_get_tbb_memory_tracking_enabled();
    if (memory_is_tracked)
        gen_say("TBB profile-bin tracking is enabled");
    s_gen_pb.m_print_log.store(is_log_wanted(primary, memory_is_tracked), std::memory_order_relaxed);
}

void compile_expressions()
{
    l_gen_pb_tracq_bin_re = compile_key("gen_tracq_profile_bin");
    l_gen_pb_tracq_tag_re = compile_key("gen_tracq_profile_tag");
    if (l_gen_pb_tracq_bin_re || l_gen_pb_tracq_tag_re)
        GEN_PROFILE_BINS::check_make_tracq_equal_1_performed();
    l_gen_pb_fileline_re = compile_key("gen_mem_fileline_profile_bin");
    s_gen_pb.m_checks_names = l_gen_pb_tracq_bin_re || l_gen_pb_fileline_re;
}

void drop_expressions()
{
    l_gen_pb_tracq_bin_re.reset();
    l_gen_pb_tracq_tag_re.reset();
    l_gen_pb_fileline_re.reset();
    s_gen_pb.m_checks_names = false;
}

// What comes before the root. A bin that a receiver of these messages opens would take the root's place.
void prepare(bool primary, bool debug_messages)
{
    GEN_PB_BUSY const busy;
    read_configuration(primary);
    gen_cookie_log_configure(primary, debug_messages);
    compile_expressions();
    gen_pb_calibrate(debug_messages || s_gen_pb.m_print_log.load(std::memory_order_relaxed));
}

void warn_of_many_bins()
{
    if (s_gen_pb.m_immediate_count <= IMMEDIATE_BIN_LIMIT || mem_cfg_is_on("gen_profile_bins_skip_limit", false))
        return;
    gen_say("Error.  Executable opened %d profile bins.  Please fix this (check profile bin log file for culprit).\n",
            s_gen_pb.m_immediate_count);
    gen_say("You can work around this temporarily by removing the INI that turns on the profile bin dump files.");
}

// The part of the end that needs the tree. False if a fault has left the bins disabled.
bool report_and_delete_bins(char const *name)
{
    GEN_PB_BUSY const busy;
    if (s_gen_pb.m_print_log.load(std::memory_order_relaxed)) {
        gen_pb_write_reports(name);
        warn_of_many_bins();
    }
    return gen_pb_is_own_thread() && gen_pb_delete_bins();
}

} // namespace

void gen_pb_disable()
{
    s_gen_pb.m_thread.store(GEN_PB_DISABLED, std::memory_order_relaxed);
}

void gen_pb_fail(char const *text, char const *file, int line)
{
    if (!gen_debug_is_customer_build())
        err_report_internal_error(text, "GEN", file, line);
    gen_pb_disable();
}

bool gen_pb_is_selected_for_logs(char const *name)
{
    try {
        return l_gen_pb_fileline_re != nullptr && boost::regex_match(name, *l_gen_pb_fileline_re);
    } catch (std::runtime_error const &) {
        // The expression takes too long on this name; no flow ends by that.
        return false;
    }
}

GEN_PROFILE_BIN const *gen_profile_bin_get_current_bin()
{
    return gen_pb_is_own_thread() ? GEN_PB_IMPL::get_current_bin() : nullptr;
}

void GEN_PROFILE_BINS::initialize(char const *name, bool primary, bool debug_messages)
{
    if (!GEN_PB_CHECK(GEN_PB_IMPL::get_root_bin() == nullptr, "GEN_PB_IMPL::get_root_bin() == 0LL") ||
        !GEN_PB_CHECK(s_gen_pb.m_thread.load(std::memory_order_relaxed) == GEN_PB_NO_THREAD, "l_gen_pb_thread == 0LL"))
        return;
    s_gen_pb.m_thread.store(thr_thread_self(), std::memory_order_relaxed);
    prepare(primary, debug_messages);
    open("GEN", name, GEN_PB_FLAG_ALL);
    // The root is there already: no rule applies to it.
    gen_pb_add_builtin_ratio_rules();
    if (gen_pb_mem_profile_enabled() && (primary || debug_messages))
        gen_pb_init_flow_stages();
}

void GEN_PROFILE_BINS::finalize(char const *name, bool close_root)
{
    if (!GEN_PB_CHECK(gen_pb_is_own_thread(), "l_gen_pb_thread == thr_thread_self()") || !gen_pb_takes_calls())
        return;
    if (close_root) {
        close(nullptr);
        gen_pb_flush();
        if (!gen_pb_is_own_thread())
            return;
    }
    double const start = gen_get_sec_wallclock();
    if (!GEN_PB_CHECK(s_gen_pb.m_root != nullptr, "root != 0LL") ||
        !GEN_PB_CHECK(GEN_PB_IMPL::get_current_bin() == nullptr, "GEN_PB_IMPL::get_current_bin() == 0LL"))
        return;
    if (!report_and_delete_bins(name))
        return;
    s_gen_pb.m_thread.store(GEN_PB_NO_THREAD, std::memory_order_relaxed);
    gen_say("Dumping bins took %.1fs", gen_get_sec_wallclock() - start);
    gen_say("%d bins may have been ignored improperly (use show_ignored_bin_warnings=on for details)",
            s_gen_pb.m_ignored_count);
    drop_expressions();
    gen_pb_dump_stage_logs();
    gen_cookie_log_write(name);
}

void GEN_PROFILE_BINS::force_finalize(char const *name)
{
    close_recursively(GEN_PB_IMPL::get_root_bin());
    finalize(name, /*close_root=*/false);
}

void GEN_PROFILE_BINS::disable_process_log()
{
    s_gen_pb.m_print_log.store(false, std::memory_order_relaxed);
}

void GEN_PROFILE_BINS::set_process_log_suffix(std::string const &suffix)
{
    s_log_file_suffix = suffix;
}

void GEN_PROFILE_BINS::check_make_tracq_equal_1_performed()
{
    gen_pb_fail("Recompile zel/gen with USE_TRACQ=1 to use Tracq's Pause/Resume API on profile bin boundaries.\n"
                "  e.g., kcd gen && make sync && make USE_TRACQ=1",
                __FILE__, __LINE__);
}
