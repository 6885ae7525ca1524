// The functions that the process has handed over, null as long as it has not. Any thread.
#ifndef MEM_CALLBACKS_H
#define MEM_CALLBACKS_H

#include <string>

/// The installation root.
std::string (*mem_gen_get_kalvern_path())();
/// The project's database directory; its text is empty while no project is open.
std::string (*mem_gen_get_db_dir_path_string())();
/// Whether the process has a graphical interface.
bool (*mem_gen_get_is_ui_process())();
/// File name of the process's module.
std::string (*mem_gen_get_module_filename())();
/// The project's output directory; the text is valid until the project's next change.
char const *(*mem_gen_get_project_output_directory())();

#endif
