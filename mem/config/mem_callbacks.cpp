#include "mem_sys.h"

#include "mem/config/mem_cfg.h"

// The suite hands over five of its functions when a process starts. The configuration gets the installation root from
// the first one. Nothing in this library depends on the results of the other four, so those functions are not kept.

void mem_set_gen_get_kalvern_path_callback(std::string (*callback)())
{
    mem_cfg_set_root_function(callback);
}

void mem_set_gen_get_db_dir_path_string_callback(std::string (*)()) {}

void mem_set_gen_get_is_ui_process_callback(bool (*)()) {}

void mem_set_gen_get_module_filename_callback(std::string (*)()) {}

void mem_set_gen_get_project_output_directory_callback(char const *(*)()) {}
