// A plug-in over zel_mem alone. The test calls these functions by name.
#include "mem_sys.h"

extern "C" {

/// Redirects the messages to a file; with null, back to the standard streams.
void plugin_redirect(char const *path)
{
    mem_msg_redirect_to_file(path);
}

/// Reads the configuration files, if they are still to be read.
void plugin_query()
{
    static_cast<void>(mem_cfg_get_value("a_key_that_no_file_has"));
}

/// Asks for the memory of the process.
void plugin_measure()
{
    static_cast<void>(MEM_MANAGER::current_total_memory());
}

} // extern "C"
