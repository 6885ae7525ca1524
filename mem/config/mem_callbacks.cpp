#include "mem_sys.h"

#include "mem/config/mem_callbacks.h"
#include "mem/config/mem_cfg.h"

#include <atomic>

namespace {

// Set when the process starts, never withdrawn by it; any thread may read them.
std::atomic<std::string (*)()> l_get_kalvern_path{nullptr};
std::atomic<std::string (*)()> l_get_db_dir_path_string{nullptr};
std::atomic<bool (*)()> l_get_is_ui_process{nullptr};
std::atomic<std::string (*)()> l_get_module_filename{nullptr};
std::atomic<char const *(*)()> l_get_project_output_directory{nullptr};

} // namespace

void mem_set_gen_get_kalvern_path_callback(std::string (*callback)())
{
    l_get_kalvern_path = callback;
    mem_cfg_changed();
}

void mem_set_gen_get_db_dir_path_string_callback(std::string (*callback)())
{
    l_get_db_dir_path_string = callback;
}

void mem_set_gen_get_is_ui_process_callback(bool (*callback)())
{
    l_get_is_ui_process = callback;
}

void mem_set_gen_get_module_filename_callback(std::string (*callback)())
{
    l_get_module_filename = callback;
}

void mem_set_gen_get_project_output_directory_callback(char const *(*callback)())
{
    l_get_project_output_directory = callback;
}

std::string (*mem_gen_get_kalvern_path())()
{
    return l_get_kalvern_path.load(std::memory_order_acquire);
}

std::string (*mem_gen_get_db_dir_path_string())()
{
    return l_get_db_dir_path_string.load(std::memory_order_acquire);
}

bool (*mem_gen_get_is_ui_process())()
{
    return l_get_is_ui_process.load(std::memory_order_acquire);
}

std::string (*mem_gen_get_module_filename())()
{
    return l_get_module_filename.load(std::memory_order_acquire);
}

char const *(*mem_gen_get_project_output_directory())()
{
    return l_get_project_output_directory.load(std::memory_order_acquire);
}
