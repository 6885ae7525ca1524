// A plug-in of a tool that links none of the libraries. The test calls these functions by name.
#include "fio_sys.h"
#include "gen_cookie_sys.h"
#include "gen_dep_sys.h"
#include "gen_exe_sys.h"
#include "gen_machine_sys.h"
#include "gen_path_sys.h"
#include "gen_profile_bins_sys.h"
#include "gen_tracq_sys.h"
#include "mem_sys.h"

#include <new>

extern "C" {

/// Starts as a tool does.
void plugin_start()
{
    gen_exe_init(0, nullptr);
}

/// Starts as a tool does, and uses whatever keeps something: files, addresses, tables, callbacks.
void plugin_work(char const *directory)
{
    gen_exe_init(0, nullptr);
    gen_set_db_dir_path(directory);
    gen_set_gui_profile_stream();
    GEN_PROFILE_BINS::initialize("Plugin", /*primary=*/true, /*debug_messages=*/false);
    {
        GEN_PROFILER const stage("PLUGIN", "Stage", GEN_PB_FLAG_RECORD);
        gen_log_cookie("a cookie of the stage", 1);
    }
    GEN_PROFILE_BINS::finalize("Plugin", /*close_root=*/true);
    static_cast<void>(gen_find_file_cache_assisted("no_such_file.v"));
    static_cast<void>(GEN_DEP::create_dependency(directory, [](unsigned int) {}));
    GEN_TRACQ_MANAGER::get_or_create();
    int figure = 0;
    GEN_MACHINE_INFO::get_physical_cpu_count(&figure);
    GEN_MACHINE_INFO::get_cpu_frequency(&figure);
    static_cast<void>(gen_is_brisel_ip_addr("127.0.0.1"));
    static_cast<void>(MEM_MANAGER::current_total_memory());
    gen_exe_fini();
}

/// Allocates on the calling thread, within a scope without tracking and outside of one.
void plugin_count()
{
    ::operator delete(::operator new(100)); // direct calls, which the compiler must not leave out
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
    ::operator delete(::operator new(100));
}

/// Whether zel::mem_new counts in this process.
bool plugin_counts()
{
    std::size_t const before = MEM_MANAGER::current_total_memory();
    void *const block = ::operator new(1024 * 1024);
    std::size_t const with_block = MEM_MANAGER::current_total_memory();
    ::operator delete(block);
    return with_block >= before + 1024 * 1024 && MEM_MANAGER::current_total_memory() == before;
}

void plugin_set_command_line(char const *text)
{
    gen_set_command_line(text);
}

/// Whether the command line is the text.
bool plugin_has_command_line(char const *text)
{
    return gen_get_command_line() == text;
}

} // extern "C"
