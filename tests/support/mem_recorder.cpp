#include "tests/support/mem_recorder.h"

#include "gen/path/gen_path_state.h"
#include "mem_sys.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

struct LastStatic
{
    LastStatic() { mem_record().state_before_last_static = gen_path_state() != nullptr; }
};
LastStatic const l_last_static;

void record_callback(char const *name)
{
    MEM_RECORD &record = mem_record();
    if (record.get_kalvern_path == nullptr)
        if (char const *const rootdir = std::getenv("KALVERN_ROOTDIR"))
            record.rootdir_at_first_callback = rootdir;
    record.calls.push_back(std::string("callback ") + name);
}

} // namespace

MEM_RECORD &mem_record()
{
    static MEM_RECORD *const the_record = new MEM_RECORD;
    return *the_record;
}

MEM_INITIALIZER::MEM_INITIALIZER(char const *module)
{
    mem_record().state_before_initializer = gen_path_state() != nullptr;
    mem_record().calls.push_back(std::string("MEM_INITIALIZER ") + module);
}

MEM_INITIALIZER::~MEM_INITIALIZER()
{
    if (mem_record().at_release != nullptr)
        mem_record().at_release();
}

bool mem_cfg_is_on(char const *key, bool)
{
    mem_record().calls.push_back(std::string("is_on ") + key);
    return mem_record().is_on;
}

bool mem_msg_local_vinfo(char const *module, char const *format, char * /*arguments*/)
{
    mem_record().calls.push_back(std::string("info ") + module + ' ' + format);
    return true;
}

// A format with one text.
bool mem_msg_local_vdebug(char const *module, char const *format, char *arguments)
{
    char const *argument;
    std::memcpy(&argument, arguments, sizeof argument);
    mem_record().calls.push_back(std::string("debug ") + module + ' ' + format + ' ' + argument);
    return true;
}

void stl_sprintf(std::string *out, char const *format, ...)
{
    char buffer[256] = {};
    va_list arguments;
    va_start(arguments, format);
    if (mem_record().formats)
        std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    *out = buffer;
}

void mem_set_gen_get_kalvern_path_callback(std::string (*callback)())
{
    record_callback("kalvern_path");
    mem_record().get_kalvern_path = callback;
}

void mem_set_gen_get_db_dir_path_string_callback(std::string (*callback)())
{
    record_callback("db_dir_path_string");
    mem_record().get_db_dir_path_string = callback;
}

void mem_set_gen_get_is_ui_process_callback(bool (*callback)())
{
    record_callback("is_ui_process");
    mem_record().get_is_ui_process = callback;
}

void mem_set_gen_get_module_filename_callback(std::string (*callback)())
{
    record_callback("module_filename");
    mem_record().get_module_filename = callback;
}

void mem_set_gen_get_project_output_directory_callback(char const *(*callback)())
{
    record_callback("project_output_directory");
    mem_record().get_project_output_directory = callback;
}
