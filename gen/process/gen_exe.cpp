#include "gen_exe_sys.h"

#include "err_sys.h"
#include "fio_sys.h"
#include "gen/base/gen_process_flags.h"
#include "gen/base/gen_static_order.h"
#include "gen/os/gen_os.h"
#include "gen/process/gen_command_line.h"
#include "gen_path_sys.h"
#include "mem_sys.h"
#include "sys/sys_process.h"
#include "thr_sys.h"
#include "ver_sys.h"

#include <cstdio>
#include <cstdlib>
#include <ios>

namespace {

// The environment variable and the configuration key of the reservation test.
constexpr char const *RESERVE_NAME = "reserve_4gb_of_virtual_memory";

constexpr std::size_t RESERVE_MB = 4096;
constexpr std::size_t RESERVE_CHUNK_MB = 8;
constexpr std::size_t BYTES_PER_MB = 1048576;

[[gnu::init_priority(GEN_STATIC_ORDER_COMMAND_LINE)]] GEN_STATIC_STATE<GEN_COMMAND_LINE> l_command_line;

// The callbacks of zel_mem, which it keeps after an unload of this library: they are taken back then. The exit leaves
// them, since other libraries may still query the configuration.
struct MemCallbacks
{
    ~MemCallbacks()
    {
        if (are_set && sys_is_unloading())
            take_back();
    }

    void set()
    {
        are_set = true;
        mem_set_gen_get_kalvern_path_callback(gen_get_kalvern_path);
        mem_set_gen_get_db_dir_path_string_callback(gen_get_db_dir_path_string);
        mem_set_gen_get_is_ui_process_callback(gen_get_is_ui_process);
        mem_set_gen_get_module_filename_callback(gen_get_module_filename);
        mem_set_gen_get_project_output_directory_callback(gen_get_project_output_directory);
    }

    static void take_back()
    {
        mem_set_gen_get_kalvern_path_callback(nullptr);
        mem_set_gen_get_db_dir_path_string_callback(nullptr);
        mem_set_gen_get_is_ui_process_callback(nullptr);
        mem_set_gen_get_module_filename_callback(nullptr);
        mem_set_gen_get_project_output_directory_callback(nullptr);
    }

    bool are_set = false;
};
MemCallbacks l_mem_callbacks;

std::string native_path(std::string const &path)
{
    FIO_PATH native(path);
    native.change_path_separators_for_windows_api();
    return native.fullpath();
}

// Inserts the directories of the module and of the ksys tools at the start of PATH. No separator is added before an old
// value that begins with one.
void extend_path_variable()
{
    char const *const old_value = std::getenv("PATH");
    if (old_value == nullptr)
        return;
    char const separator = gen_os_path_list_separator();
    std::string value = native_path(gen_get_module_path());
    value += separator;
    value += native_path(gen_get_ksys_bin_path());
    if (*old_value != separator)
        value += separator;
    value += old_value;
    thr_setenv("PATH", value.c_str());
}

bool is_reservation_wanted()
{
    return std::getenv(RESERVE_NAME) != nullptr || mem_cfg_is_on(RESERVE_NAME, false);
}

// Reserved blocks stay reserved until the process ends.
void reserve_4gb_test()
{
    std::printf("Allocating 4GB of virtual memory in 8 MB chunks...");
    for (std::size_t reserved_mb = 0; reserved_mb < RESERVE_MB; reserved_mb += RESERVE_CHUNK_MB) {
        if (gen_os_reserve_address_space(RESERVE_CHUNK_MB * BYTES_PER_MB))
            continue;
        std::printf("FAILED!\n");
        std::printf("   Allocation of %zuth %zu MB block failed!\n", reserved_mb / RESERVE_CHUNK_MB, RESERVE_CHUNK_MB);
        std::printf("   Successfully allocated %zu MB!\n", reserved_mb);
        return;
    }
    std::printf("SUCCESS!\n");
}

} // namespace

void gen_exe_init(int, char const **)
{
    std::ios_base::sync_with_stdio(true);
    thr_setenv("KALVERN_ROOTDIR", gen_get_kalvern_path().c_str());
    thr_setenv("KALVERN_BINDIR", gen_get_module_path().c_str());
    extend_path_variable();
    thr_drl_init(gen_get_module_fullpath().c_str());
    ver_set_module_path(gen_get_module_path().c_str());
    err_set_module_fullpath(gen_get_module_path()); // the directory is required here
    l_mem_callbacks.set();
    if (is_reservation_wanted())
        reserve_4gb_test();
}

void gen_exe_fini()
{
    thr_drl_fini();
}

GEN_COMMAND_LINE *gen_command_line()
{
    return GEN_STATIC_STATE<GEN_COMMAND_LINE>::get();
}

void gen_set_command_line(char const *text)
{
    if (GEN_COMMAND_LINE *const command_line = gen_command_line())
        command_line->text = text;
}

std::string gen_get_command_line()
{
    GEN_COMMAND_LINE const *const command_line = gen_command_line();
    return command_line == nullptr ? std::string() : command_line->text;
}

void gen_set_is_ui_process(bool value)
{
    gen_process_flags.is_ui_process.store(value, std::memory_order_relaxed);
}

bool gen_get_is_ui_process()
{
    return gen_process_flags.is_ui_process.load(std::memory_order_relaxed);
}

void gen_set_is_qt(bool value)
{
    gen_process_flags.is_qt.store(value, std::memory_order_relaxed);
}

bool gen_get_is_qt()
{
    return gen_process_flags.is_qt.load(std::memory_order_relaxed);
}

void gen_dyn_get_fullpath()
{
    static_cast<void>(gen_get_module_fullpath());
}
