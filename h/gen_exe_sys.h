// Start and end of a process of the suite, its command line and two flags that the top of a tool sets.
//
// ```cpp
// #include "gen_exe_sys.h"
// #include "gen_path_sys.h"
// #include <iostream>
//
// int main(int argument_count, char const **arguments)
// {
//     gen_exe_init(argument_count, arguments); // sets KALVERN_ROOTDIR, KALVERN_BINDIR and PATH for child processes
//     gen_set_command_line("fitter top.v --effort=high");
//     gen_set_is_ui_process(false);
//     std::cout << gen_get_command_line() << " in " << gen_get_kalvern_path() << "\n";
//     gen_exe_fini();
// }
// ```
//
// gen_exe_init() is the first call of main() and gen_exe_fini() the last one; both run while no other thread exists.
// Any thread may set and read the two flags. The command line has no lock: set it before other threads start.
#ifndef GEN_EXE_SYS_H
#define GEN_EXE_SYS_H

#include "zel_export_sys.h"

#include <string>

/// Sets the environment of the process and initialises the sibling libraries from the place of the installation.
///
/// @param argument_count  not used; the command line is kept by gen_set_command_line() alone
/// @param arguments       not used; may be null
///
/// The steps, in this order:
///
/// 1. std::ios_base::sync_with_stdio(true), so that the output of streams and of stdio keeps its order.
/// 2. The environment variable `KALVERN_ROOTDIR` is set to gen_get_kalvern_path() and `KALVERN_BINDIR` to
///    gen_get_module_path().
/// 3. gen_get_module_path() and gen_get_ksys_bin_path(), with native separators, are inserted at the beginning of
///    `PATH`. Its entries are separated by ";" on Windows and by ":" elsewhere; an old value that begins with that
///    separator gets no second one. An unset `PATH` stays unset. A second call inserts both entries again.
/// 4. zel_thr receives the full path of the module, zel_ver and zel_err receive its directory.
/// 5. zel_mem receives its callbacks.
/// 6. If the environment variable `reserve_4gb_of_virtual_memory` exists, with any value, or if the configuration key
///    of that name is on, 4 GB of address space are reserved in blocks of 8 MB until the process ends. Success or
///    failure is printed on standard output; a failure has no other effect.
///
/// If the module can't be found, the process ends with status -1; see gen_get_module_fullpath().
GEN_API void gen_exe_init(int argument_count, char const **arguments);

/// Shuts the dynamic-library service down; see thr_drl_fini(). All other state stays until exit, so that the getters
/// still work.
GEN_API void gen_exe_fini();

/// Keeps a copy of a text as the command line of the process.
///
/// @param text  not null
///
/// Nothing in the library reads it. The call does nothing after the exit handlers have released the text.
GEN_API void gen_set_command_line(char const *text);

/// The text last given to gen_set_command_line(). Empty before the first such call, and after the exit handlers have
/// released the text.
GEN_API std::string gen_get_command_line();

/// Whether the process runs a graphical user interface; false at start.
GEN_API void gen_set_is_ui_process(bool value);
GEN_API bool gen_get_is_ui_process();

/// Whether the process runs on Qt; false at start. If it is true, gen_get_is_kalvern_exe() accepts two more names.
GEN_API void gen_set_is_qt(bool value);
GEN_API bool gen_get_is_qt();

/// Calls gen_get_module_fullpath(), which stores its result for later calls. The function has C linkage, so that a
/// loader can find it by name.
extern "C" GEN_API void gen_dyn_get_fullpath();

#endif
