#include "gen_cookie_sys.h"
#include "gen_exe_sys.h"
#include "gen_flow_sys.h"
#include "gen_legal_sys.h"
#include "gen_localization_sys.h"
#include "gen_machine_sys.h"
#include "gen_math_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"
#include "gen_string_sys.h"
#include "gen_time_sys.h"

#include "tests/support/operations.h"

#include <sstream>

namespace {

// Each query needs the capture, or one of the system's files.
void query_processors()
{
    int count = 0;
    unsigned long mask = 0;
    std::uint64_t mask_qword = 0;
    unsigned size = 0;
    bool is_supported = false;
    GEN_MACHINE_INFO::get_logical_cpu_count(&count);
    GEN_MACHINE_INFO::get_smt_cpu_count(&count);
    GEN_MACHINE_INFO::get_physical_cpu_count(&count);
    GEN_MACHINE_INFO::get_package_cpu_count(&count);
    GEN_MACHINE_INFO::get_core_cpu_count(&count);
    GEN_MACHINE_INFO::get_non_smt_affinity_mask(&mask, &mask_qword);
    GEN_MACHINE_INFO::sse_is_supported(2, &is_supported);
    GEN_MACHINE_INFO::avx_is_supported(1, &is_supported);
    GEN_MACHINE_INFO::bmi_is_supported(1, &is_supported);
    GEN_MACHINE_INFO::popcnt_is_supported(&is_supported);
    GEN_MACHINE_INFO::lzcnt_is_supported(&is_supported);
    GEN_MACHINE_INFO::get_cache_size(1, &size, nullptr, 1);
}

void query_machine()
{
    int mhz = 0;
    std::uint64_t bytes = 0;
    std::string text;
    GEN_MACHINE_INFO::get_cpu_frequency(&mhz);
    GEN_MACHINE_INFO::get_physical_ram(&bytes);
    GEN_MACHINE_INFO::get_total_ram(&bytes);
    GEN_MACHINE_INFO::get_available_ram(&bytes);
    GEN_MACHINE_INFO::get_total_usage_ram(&bytes);
    GEN_MACHINE_INFO::get_virtual_ram(&bytes);
    GEN_MACHINE_INFO::get_os_name(&text);
    GEN_MACHINE_INFO::get_os_version(&text);
}

void query_host()
{
    gen_get_host_name();
    gen_is_running_in_container();
    gen_is_valid_web_browser();
}

void read_clocks()
{
    std::uint64_t user = 0;
    std::uint64_t kernel = 0;
    gen_get_usec_wallclock();
    gen_get_sec_wallclock();
    gen_get_hires_ticks();
    gen_get_hires_tick_frequency();
    gen_get_usec_user_and_kernel(&user, &kernel);
    gen_get_usec_cpu();
    gen_get_sec_cpu();
    gen_get_tick_count();
    gen_disable_windows_cpu_time_hack();
    gen_get_current_time_seconds();
    gen_get_current_time_milliseconds();
}

void render_times()
{
    gen_format_elapsed_time(1000);
    gen_format_elapsed_sec(1.0);
    GEN_STOPWATCH watch;
    watch.start();
    watch.stop();
}

void query_paths()
{
    gen_get_executable_fullpath();
    gen_get_module_fullpath();
    gen_get_module_path();
    gen_get_module_filename();
    gen_get_is_kalvern_exe();
    gen_get_kalvern_path();
    gen_get_library_fullpath("zel_gen");
    gen_get_library_path(GEN_LIB_LIBRARIES);
    gen_get_common_data_fullpath();
    gen_get_device_db_name();
    gen_get_device_db_fullpath();
    gen_get_ip_path();
    gen_get_platform_path();
    gen_get_user_profile_directory();
    gen_sync_path_separators("a/b");
    gen_get_acv_filename();
}

void use_texts()
{
    std::string text = "Text 17";
    gen_tolower(text);
    gen_toupper(text);
    gen_stricmp("a", "B");
    gen_lexcmp("a9", "a10");
    gen_atoi("17");
    gen_itoa(17, 10);
    gen_remove_leading_and_trailing_spaces(" a ");
    gen_wildcard_to_reg_expr(&text, true);
    gen_hash_next_size(100);
    std::istringstream in("a\nb\n");
    gen_getline(&in, &text, '\n');
    char *end = nullptr;
    gen_local_strtoint("17", &end, 10);
    gen_local_strtoQWORD("17", &end, 10);
}

void use_legal_texts()
{
    gen_get_legal_banner();
    gen_get_legal_trademark_text();
    gen_get_legal_warning_text();
    gen_get_bitstream_encryption_legal_text();
    gen_get_legal_text("# ");
    gen_get_do_not_edit_text("# ");
}

// On threads that don't own the bins these have no effect.
void use_bins()
{
    GEN_PROFILE_BINS::open("TST", "bin", GEN_PB_FLAG_RECORD);
    GEN_PROFILE_BINS::close("bin");
    gen_profile_bin_get_current_bin();
    GEN_PROFILER const guard("TST", "guard", GEN_PB_FLAG_RECORD);
}

void open_announced_bin()
{
    GEN_PROFILE_BINS::open("TST", "announced", GEN_PB_FLAG_ANNOUNCE | GEN_PB_FLAG_IMMEDIATE);
    GEN_PROFILE_BINS::close("announced");
}

} // namespace

Operations operations_of_gen()
{
    return {
        {"gen_log_cookie", [] { gen_log_cookie("cookie", 17); }},
        {"gen_set_is_ui_process", [] { gen_set_is_ui_process(false); }},
        {"gen_get_is_ui_process", [] { gen_get_is_ui_process(); }},
        {"gen_set_is_qt", [] { gen_set_is_qt(false); }},
        {"gen_get_is_qt", [] { gen_get_is_qt(); }},
        {"gen_debug_is_customer_build", [] { gen_debug_is_customer_build(); }},
        {"legal texts", use_legal_texts},
        {"processors", query_processors},
        {"machine", query_machine},
        {"host", query_host},
        {"clocks", read_clocks},
        {"times", render_times},
        {"dates",
         [] {
             gen_get_current_date_and_time();
             gen_get_formatted_time_from_milliseconds(1000);
         }},
        {"paths", query_paths},
        {"texts", use_texts},
        {"bins", use_bins},
        {"disable_process_log", [] { GEN_PROFILE_BINS::disable_process_log(); }},
        {"gen_meminfo_report_dll_usage", [] { gen_meminfo_report_dll_usage("tool", "point"); }},
        {"GEN_MATH",
         [] {
             bool overflow = false;
             GEN_MATH::add_of(12, 18, overflow);
             GEN_MATH::gcd(12, 18);
         }},
    };
}

Operations operations_of_gen_thread()
{
    return {
        {"bins of their thread", use_bins},
        {"announced bins", open_announced_bin},
        {"cookies of bins",
         [] {
             GEN_PROFILER const guard("TST", "cookies", GEN_PB_FLAG_IMMEDIATE | GEN_PB_FLAG_RECORD);
             gen_log_cookie("cookie of a bin", 17);
         }},
    };
}
