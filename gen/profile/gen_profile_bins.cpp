#include "gen/profile/gen_profile_bins_events.h"

#include "err_sys.h"
#include "gen/base/gen_debug_message.h"
#include "gen/profile/gen_cookie.h"
#include "gen/profile/gen_profile_bins_bin.h"
#include "gen/profile/gen_profile_bins_estimate.h"
#include "gen/profile/gen_profile_bins_listener.h"
#include "gen/profile/gen_profile_bins_mem.h"
#include "gen/profile/gen_profile_bins_ratios.h"
#include "gen/profile/gen_profile_bins_report.h"
#include "gen/profile/gen_profile_bins_tree.h"
#include "gen_time_sys.h"
#include "mem_sys.h"
#include "thr_sys.h"

#include <algorithm>

namespace {

// Opening more bins than this with GEN_PB_FLAG_IMMEDIATE slows a flow down.
constexpr std::uint32_t IMMEDIATE_BIN_LIMIT = 5000000;

// A process that is not the flow's main one writes its reports at this granularity alone.
constexpr int SECONDARY_REPORT_GRANULARITY = 3;

// Size of the text that reports a bad regular expression, terminator included.
constexpr std::size_t REGEX_ERROR_SIZE = 4096;

// The one class of the bins: it adds their public operations.
class Bin final : public GEN_PB_IMPL
{
public:
    void close() override;
    double get_metric(unsigned metric, bool cumulative) const override;
    std::string get_path(GEN_PROFILE_BIN const *root) const override;
    std::string get_path(char const *separator, GEN_PROFILE_BIN const *root) const override;
    void get_path_names(std::vector<std::string> *result, GEN_PROFILE_BIN const *root) const override;
    void dump(char const *file, bool collect_tags) override;

private:
    std::vector<GEN_PB_IMPL const *> path_from(GEN_PROFILE_BIN const *root) const;
};

void Bin::close()
{
    if (!gen_pb_is_own_thread())
        return;
    GEN_PB_IMPL const *const current = get_current_bin();
    if (this != current) {
        std::string text;
        stl_sprintf(&text, "GEN_PROFILE_BINS: Unable to close bin \"%s\".  Current open bin was \"%s\"",
                    get_path(nullptr).c_str(), current == nullptr ? "NULL" : current->get_path(nullptr).c_str());
        gen_pb_fail(text.c_str(), __FILE__, __LINE__);
        return;
    }
    gen_pb_close(gen_pb().run.checks_names ? m_name.c_str() : nullptr);
}

double Bin::get_metric(unsigned metric, bool cumulative) const
{
    return gen_pb_metric(*this, metric, cumulative);
}

// The path that the next three show; a null `root` means the root bin.
std::vector<GEN_PB_IMPL const *> Bin::path_from(GEN_PROFILE_BIN const *root) const
{
    if (!gen_pb_is_own_thread())
        return {};
    return gen_pb_path(*this, root == nullptr ? get_root_bin() : root);
}

std::string Bin::get_path(GEN_PROFILE_BIN const *root) const
{
    return get_path("/", root);
}

std::string Bin::get_path(char const *separator, GEN_PROFILE_BIN const *root) const
{
    return gen_pb_path_text(path_from(root), separator);
}

void Bin::get_path_names(std::vector<std::string> *result, GEN_PROFILE_BIN const *root) const
{
    for (GEN_PB_IMPL const *bin : path_from(root))
        result->push_back(bin->m_name);
}

void Bin::dump(char const *file, bool collect_tags)
{
    gen_pb_dump(*this, file, collect_tags);
}

std::unique_ptr<GEN_PB_IMPL> make_bin()
{
    return std::make_unique<Bin>();
}

[[noreturn]] void report_bad_regex(char const *key, std::string const &expression)
{
    std::string const origin = mem_cfg_get_origin(key);
    GEN_ARGUMENT_SLOTS arguments(origin, key);
    mem_msg_local_vinfo("GEN", "%s: the value of \"%s\" is not a regular expression", arguments.cursor());
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
        report_bad_regex(key, expression);
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
    auto &run = gen_pb().run;
    run.debug = primary && mem_cfg_is_on("debug_gen_bins", false);
    run.show_ignored = run.debug || mem_cfg_is_on("show_ignored_bin_warnings", false);
    bool const memory_is_tracked = mem_get_tbb_memory_tracking_enabled();
    if (memory_is_tracked)
        gen_debug_message("TBB profile-bin tracking is enabled");
    run.print_log.store(is_log_wanted(primary, memory_is_tracked), std::memory_order_relaxed);
}

// The keys name hooks that don't exist: any value of one of them is a fault.
void check_hook_keys()
{
    std::unique_ptr<boost::regex> const bins = compile_key("gen_tracq_profile_bin");
    std::unique_ptr<boost::regex> const tags = compile_key("gen_tracq_profile_tag");
    if (bins != nullptr || tags != nullptr)
        GEN_PROFILE_BINS::check_make_tracq_equal_1_performed();
}

// The steps before the root is opened. Opens have no effect during them: a bin that a receiver of their messages opens
// would become the root.
void prepare(bool primary, bool debug_messages)
{
    GEN_PB_BUSY const busy;
    auto &run = gen_pb().run;
    read_configuration(primary);
    gen_cookie_log_configure(primary, debug_messages);
    check_hook_keys();
    std::unique_ptr<boost::regex> logged_bins = compile_key("gen_mem_fileline_profile_bin");
    run.checks_names = logged_bins != nullptr;
    gen_pb_calibrate(debug_messages || run.print_log.load(std::memory_order_relaxed));
    gen_pb_start_memory_logs(std::move(logged_bins));
}

// Sends a message from which no bin can be opened or closed.
void report_busy(char const *text)
{
    GEN_PB_BUSY const busy;
    gen_debug_message(text);
}

void warn_of_many_bins()
{
    if (gen_pb().intake.immediate_count <= IMMEDIATE_BIN_LIMIT || mem_cfg_is_on("gen_profile_bins_skip_limit", false))
        return;
    gen_debug_message(
        "Error.  Executable opened %d profile bins.  Please fix this (check profile bin log file for culprit).\n",
        gen_pb().intake.immediate_count);
    gen_debug_message(
        "You can work around this temporarily by removing the INI that turns on the profile bin dump files.");
}

// The part of finalize that needs the tree. Returns false if a fault has switched the bins off.
bool report_and_delete_bins(char const *name)
{
    GEN_PB_BUSY const busy;
    gen_pb_notify_complete(*gen_pb().tree.root, name);
    if (gen_pb().run.print_log.load(std::memory_order_relaxed)) {
        gen_pb_write_reports(name);
        warn_of_many_bins();
    }
    return gen_pb_is_own_thread() && gen_pb_delete_bins();
}

} // namespace

GEN_PROFILE_BIN const *gen_profile_bin_get_current_bin()
{
    return GEN_PB_IMPL::get_current_bin();
}

void GEN_PROFILE_BINS::initialize(char const *name, bool primary, bool debug_messages)
{
    if (!GEN_PB_CHECK(GEN_PB_IMPL::get_root_bin() == nullptr, "GEN_PB_IMPL::get_root_bin() == 0LL") ||
        !GEN_PB_CHECK(gen_pb().run.thread.load(std::memory_order_relaxed) == GEN_PB_NO_THREAD,
                      "l_gen_pb_thread == 0LL"))
        return;
    gen_pb().run.thread.store(thr_thread_self(), std::memory_order_relaxed);
    gen_pb().tree.make_bin = make_bin;
    prepare(primary, debug_messages);
    open("GEN", name, GEN_PB_FLAG_ALL);
    // The root exists already, so no rule applies to it.
    gen_pb_add_builtin_ratio_rules();
    if (primary || debug_messages)
        gen_pb_init_flow_stages();
}

GEN_PROFILE_BIN const *GEN_PROFILE_BINS::open(char const *code_prefix, char const *name, unsigned flags)
{
    return gen_pb_open(code_prefix, name, flags, /*tag=*/nullptr, /*user_tag=*/nullptr);
}

GEN_PROFILE_BIN const *GEN_PROFILE_BINS::open_with_tag(char const *code_prefix, char const *name, unsigned flags,
                                                       char const *tag)
{
    return gen_pb_open(code_prefix, name, flags, tag, /*user_tag=*/nullptr);
}

GEN_PROFILE_BIN const *GEN_PROFILE_BINS::open_with_user_tag(char const *code_prefix, char const *name, unsigned flags,
                                                            char const *tag, char const *user_tag)
{
    return gen_pb_open(code_prefix, name, flags, tag, user_tag);
}

void GEN_PROFILE_BINS::close(char const *name)
{
    gen_pb_close(name);
}

void GEN_PROFILE_BINS::close_recursively(GEN_PROFILE_BIN const *bin)
{
    if (!gen_pb_may_change_tree())
        return;
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    gen_pb_flush();
    report_busy("Closing bins recursively...");
    // During an abnormal exit, and once a fault has switched the bins off, a close has no effect.
    while (GEN_PB_IMPL::get_current_bin() != bin && gen_pb_is_own_thread() && !err_is_in_abnormal_exit())
        close(nullptr);
    close(nullptr);
    report_busy("Finished closing bins recursively");
}

void GEN_PROFILE_BINS::finalize(char const *name, bool close_root)
{
    if (!GEN_PB_CHECK(gen_pb_is_own_thread(), "l_gen_pb_thread == thr_thread_self()") || !gen_pb_may_change_tree())
        return;
    if (close_root) {
        close(nullptr);
        gen_pb_flush();
        if (!gen_pb_is_own_thread())
            return;
    }
    double const start = gen_get_sec_wallclock();
    if (!GEN_PB_CHECK(GEN_PB_IMPL::get_root_bin() != nullptr, "root != 0LL") ||
        !GEN_PB_CHECK(GEN_PB_IMPL::get_current_bin() == nullptr, "GEN_PB_IMPL::get_current_bin() == 0LL"))
        return;
    if (!report_and_delete_bins(name))
        return;
    gen_pb().run.thread.store(GEN_PB_NO_THREAD, std::memory_order_relaxed);
    gen_debug_message("Dumping bins took %.1fs", gen_get_sec_wallclock() - start);
    gen_debug_message("%d bins may have been ignored improperly (use show_ignored_bin_warnings=on for details)",
                      gen_pb().intake.ignored_count);
    gen_pb().run.checks_names = false;
    gen_pb_notify_end(name);
}

void GEN_PROFILE_BINS::force_finalize(char const *name)
{
    close_recursively(GEN_PB_IMPL::get_root_bin());
    finalize(name, /*close_root=*/false);
}

void GEN_PROFILE_BINS::disable_process_log()
{
    gen_pb().run.print_log.store(false, std::memory_order_relaxed);
}

void GEN_PROFILE_BINS::set_process_log_suffix(std::string const &suffix)
{
    s_log_file_suffix = suffix;
}

void GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(char const *pattern, double ratio)
{
    gen_pb_add_ratio_rule(pattern, ratio);
}

void GEN_PROFILE_BINS::check_make_tracq_equal_1_performed()
{
    gen_pb_fail("Recompile zel/gen with USE_TRACQ=1 to use Tracq's Pause/Resume API on profile bin boundaries.\n"
                "  e.g., kcd gen && make sync && make USE_TRACQ=1",
                __FILE__, __LINE__);
}
