// Start and end of a process of the suite. gen_exe_init() is the first call of main() and gen_exe_fini() its last; both
// run while no other thread exists. The flags and the command line have no lock: they are set early and read later.
#ifndef GEN_EXE_SYS_H
#define GEN_EXE_SYS_H

#include "zel_export_sys.h"

#include <string>

/// Tells the process, its children and the sibling libraries where the installation lies.
///
/// @param argument_count  not used; the command line is kept by gen_set_command_line() alone
/// @param arguments       not used; may be null
///
/// In this order: keeps stream and stdio output interleaved; sets the environment variables `KALVERN_ROOTDIR` to
/// gen_get_kalvern_path() and `KALVERN_BINDIR` to gen_get_module_path(); puts the module's directory and
/// gen_get_ksys_bin_path(), in native separators, in front of `PATH`, whose entries are separated by ";" on Windows and
/// ":" elsewhere (an old value that begins with that separator gets no second one); tells zel_thr, zel_ver and zel_err
/// the module's place; gives zel_mem its callbacks. An unset `PATH` stays unset. Nothing tests whether `PATH` has the
/// two entries already: a second call puts them in front again.
///
/// If the environment variable `reserve_4gb_of_virtual_memory` exists, with any value, or else if the configuration
/// key of that name is on, 4 GB of address space are reserved for good in blocks of 8 MB, with a report on standard
/// output; a failure is reported there and changes nothing else.
///
/// A process whose own place can't be found ends here; see gen_get_module_fullpath().
GEN_API void gen_exe_init(int argument_count, char const **arguments);

/// Tears the dynamic-library loader down. All other state stays until exit, so the getters can still be called.
GEN_API void gen_exe_fini();

/// Keeps a copy of a text as the command line of the process.
///
/// @param text  not null
///
/// Nothing in the library reads it. Once the exit handlers have released the state, this does nothing.
GEN_API void gen_set_command_line(char const *text);

/// The text last given to gen_set_command_line(); empty before, and once the exit handlers have released it.
GEN_API std::string gen_get_command_line();

/// Whether the process runs a user interface; false at start. Any thread may ask.
GEN_API void gen_set_is_ui_process(bool value);
GEN_API bool gen_get_is_ui_process();

/// Whether the process runs on Qt; false at start. gen_get_is_kalvern_exe() counts two more names then.
GEN_API void gen_set_is_qt(bool value);
GEN_API bool gen_get_is_qt();

/// Finds the module and drops the answer: gen_get_module_fullpath() is filled from then on. The name is plain, to be
/// found by a loader.
extern "C" GEN_API void gen_dyn_get_fullpath();

#endif
