// A stand-in for zel_mem under the sources of the process frame. It records its calls, and sees what exists
// of the library's state when the first and the last of its static objects is built and released.
#ifndef TESTS_SUPPORT_MEM_RECORDER_H
#define TESTS_SUPPORT_MEM_RECORDER_H

#include <string>
#include <vector>

struct MEM_RECORD
{
    /// The calls in order: "MEM_INITIALIZER <module>", "callback <name>", "is_on <key>", "debug <module> <format>
    /// <argument>".
    std::vector<std::string> calls;
    /// Whether the path state existed already when the initialiser was built.
    bool state_before_initializer = false;
    /// Whether it existed when a static of a source file after the library's in link order was built.
    bool state_before_last_static = false;
    /// The value of KALVERN_ROOTDIR when the first callback was handed over.
    std::string rootdir_at_first_callback;

    std::string (*get_kalvern_path)() = nullptr;
    std::string (*get_db_dir_path_string)() = nullptr;
    bool (*get_is_ui_process)() = nullptr;
    std::string (*get_module_filename)() = nullptr;
    char const *(*get_project_output_directory)() = nullptr;

    /// The result of mem_cfg_is_on().
    bool is_on = false;
    /// Whether stl_sprintf() works; otherwise its texts are empty.
    bool formats = true;
    /// Called when the initialiser is released.
    void (*at_release)() = nullptr;
};

/// The record of this process; never released.
MEM_RECORD &mem_record();

#endif
