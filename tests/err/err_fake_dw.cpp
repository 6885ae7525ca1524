// Takes the place of libdw in a test: its first function does what the variable ERR_FAKE_DW names.
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

extern "C" {

[[gnu::visibility("default")]] void *dwfl_begin(void const *)
{
    char const *const variable = std::getenv("ERR_FAKE_DW");
    std::string_view const action = variable == nullptr ? "" : variable;
    std::fputs("[fake library]\n", stderr);
    if (action == "exit")
        std::exit(0);
    if (action == "assert")
        std::abort();
    if (action == "fault")
        std::raise(SIGSEGV);
    while (action == "hang")
        pause();
    return nullptr;
}

// The others are never called, since the first one never succeeds.
#define ERR_FAKE(function)                                                                                             \
    [[gnu::visibility("default")]] void function() {}
ERR_FAKE(dwfl_end)
ERR_FAKE(dwfl_linux_proc_find_elf)
ERR_FAKE(dwfl_build_id_find_debuginfo)
ERR_FAKE(dwfl_linux_proc_report)
ERR_FAKE(dwfl_report_end)
ERR_FAKE(dwfl_addrmodule)
ERR_FAKE(dwfl_module_addrinfo)
ERR_FAKE(dwfl_module_getsrc)
ERR_FAKE(dwfl_lineinfo)
ERR_FAKE(dwfl_module_addrdie)
ERR_FAKE(dwarf_getscopes)
ERR_FAKE(dwarf_getscopes_die)
ERR_FAKE(dwarf_tag)
ERR_FAKE(dwarf_diename)
ERR_FAKE(dwarf_attr_integrate)
ERR_FAKE(dwarf_formstring)
ERR_FAKE(dwarf_formudata)
ERR_FAKE(dwarf_getsrcfiles)
ERR_FAKE(dwarf_filesrc)
}
