#include "mem_sys.h"

#include "tests/support/operations.h"
#include "tests/support/real_block.h"

#include <cstdint>
#include <cstdio>
#include <sstream>
#include <thread>

namespace {

template <bool (*DUMP)(std::ostream &)>
void dump()
{
    std::ostringstream out;
    DUMP(out);
}

void dump_timeline()
{
    std::ostringstream timeline;
    std::ostringstream modules;
    mem_dump_tbb_module_tracking(timeline, modules);
}

template <MEM_TRACKING_GRANULARITY GRANULARITY>
void enable()
{
    mem_enable_tracking(GRANULARITY);
}

template <MEM_TRACKING_GRANULARITY GRANULARITY>
void disable()
{
    mem_disable_tracking(GRANULARITY);
}

// Blocks of different callers, so that sites are added and found.
[[gnu::noinline]] void allocate_small()
{
    for (int i = 0; i < 10; ++i)
        give(take(100));
}

[[gnu::noinline]] void allocate_large()
{
    give(take(100000)); // more than a thread counts without a fold
}

void run_a_thread()
{
    std::thread([] { give(take(1000)); }).join();
}

void receive(MEM_MSG_KIND, char const *, char const *, void *) {}

void format_slots()
{
    std::int64_t slots[] = {17, reinterpret_cast<std::intptr_t>("text")};
    char *arguments = reinterpret_cast<char *>(slots);
    std::string text;
    stl_output(&text, "%d %s", arguments);
}

void emit(bool (*emitter)(char const *, char const *, char *))
{
    std::int64_t slots[] = {17};
    emitter("GEN", "line %d", reinterpret_cast<char *>(slots));
}

void close_bin()
{
    std::size_t figures[3];
    mem_close_profile_bin("tag", &figures[0], &figures[1], &figures[2]);
}

} // namespace

Operations operations_of_mem()
{
    return {
        {"mem_cfg_is_on", [] { mem_cfg_is_on("key", false); }},
        {"mem_cfg_get_int_value", [] { mem_cfg_get_int_value("number", 0); }},
        {"mem_cfg_get_value", [] { mem_cfg_get_value("key"); }},
        {"mem_cfg_set", [] { mem_cfg_set("key", "on"); }},
        {"mem_cfg_set null", [] { mem_cfg_set("key", nullptr); }},
        {"mem_cfg_set of the debug key", [] { mem_cfg_set("mem_show_debug_messages", "off"); }},
        {"mem_msg_local_vinfo", [] { emit(mem_msg_local_vinfo); }},
        {"mem_msg_local_vdebug", [] { emit(mem_msg_local_vdebug); }},
        {"mem_msg_redirect", [] { mem_msg_redirect(receive, nullptr); }},
        {"mem_msg_redirect null", [] { mem_msg_redirect(nullptr, nullptr); }},
        {"mem_msg_redirect_to_file", [] { mem_msg_redirect_to_file("messages.txt"); }},
        {"stl_sprintf",
         [] {
             std::string text;
             stl_sprintf(&text, "%d", 17);
         }},
        {"stl_output", format_slots},
        {"current_total_memory", [] { MEM_MANAGER::current_total_memory(); }},
        {"mem_info",
         [] {
             mem_info_get_process_current_working_set_size();
             mem_info_get_process_peak_working_set_size();
             mem_info_get_process_peak_virtual_used();
         }},
        {"MEM_INITIALIZER", [] { MEM_INITIALIZER const initializer("TST"); }},
        {"callbacks",
         [] {
             mem_set_gen_get_kalvern_path_callback([] { return std::string("root"); });
             mem_set_gen_get_db_dir_path_string_callback(nullptr);
             mem_set_gen_get_is_ui_process_callback(nullptr);
             mem_set_gen_get_module_filename_callback(nullptr);
             mem_set_gen_get_project_output_directory_callback(nullptr);
         }},
        {"enable statistics", enable<MEM_TRACKING_STATISTICS>},
        {"enable sources", enable<MEM_TRACKING_SOURCES>},
        {"enable time line", enable<MEM_TRACKING_TIMELINE>},
        {"enable selected bin", enable<MEM_TRACKING_SELECTED_BIN>},
        {"new and delete", allocate_small},
        {"large new and delete", allocate_large},
        {"thread", run_a_thread},
        {"scope without tracking",
         [] {
             MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
             allocate_small();
         }},
        {"counts",
         [] {
             mem_count_allocation(nullptr, 1000, nullptr, nullptr);
             mem_count_release(nullptr, 1000);
         }},
        {"is enabled", [] { mem_tracking_is_enabled(MEM_TRACKING_SELECTED_BIN); }},
        {"tbb is enabled", [] { mem_get_tbb_memory_tracking_enabled(); }},
        {"dump by subsystem", dump<mem_dump_tbb_subsystem_tracking>},
        {"dump by bin", dump<mem_dump_tbb_profile_bin_stats_tracking>},
        {"dump by tag", dump<mem_dump_tbb_profile_bin_tag_stats_tracking>},
        {"dump time line", dump_timeline},
        {"reset", mem_reset_tracking_entries},
        {"dump by line", dump<mem_dump_tbb_fileline_tracking>},
        {"disable sources", disable<MEM_TRACKING_SOURCES>},
        {"disable selected bin", disable<MEM_TRACKING_SELECTED_BIN>},
        {"disable statistics", disable<MEM_TRACKING_STATISTICS>},
    };
}

Operations operations_of_bins_thread()
{
    return {
        {"statistics",
         [] {
             mem_enable_tracking(MEM_TRACKING_STATISTICS);
             mem_open_profile_bin("bin", "tag");
             close_bin();
         }},
        {"time line",
         [] {
             mem_enable_tracking(MEM_TRACKING_SELECTED_BIN);
             mem_open_profile_bin("bin", "");
             mem_set_timeline_label("label");
             close_bin();
         }},
        {"flush of the peak", mem_tbb_tracking_flush_peak},
        {"labels without tags", mem_disable_profile_bin_tag_timeline_labels},
    };
}
