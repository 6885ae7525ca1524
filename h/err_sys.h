// Internal errors and the exit state of the process, and where calls stand in the source. An internal error is a fault
// of the program itself, found by a check that stays in release builds. Any thread may call any of these functions, at
// any time from the construction of static objects to the last exit handler.
#ifndef ERR_SYS_H
#define ERR_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Reports an internal error and ends the process with status 3. Never returns and never throws.
///
/// @param expression  the failed condition, or a sentence; printed as it stands
/// @param module      tag of the library that found the error, for instance "GEN"
/// @param file        source file of the check
/// @param line        source line of the check
///
/// A null text is printed as "(null)". The report is one block on the standard error stream, written
/// in one piece:
///
///     Internal error: type < (GEN_LIBRARY_TYPE)GEN_LIB_SIZE
///       Library: GEN
///       Source:  gen/gen_path_layout.cpp, line 120
///       Version: 1.0.0
///       Process: 4711, /opt/kalvern/bin/fitter
///       Module:  /opt/kalvern/bin/
///       Stack:
///         #0 gen_get_library_path(GEN_LIBRARY_TYPE)+0x5c at gen/gen_path_layout.cpp:120 (libzel_gen.so.1+0x2f1c)
///         #1 ...
///
/// Function, file and line of a frame appear as far as symbols are at hand; on Windows a frame is a
/// module and an offset. "Module" is what err_set_module_fullpath() was given. When memory is short the
/// texts are cut and the stack is left out.
///
/// After the block the process ends through exit(3), on the calling thread, so that exit handlers run.
///
/// | the process when the error is reported         | what happens                                      |
/// |------------------------------------------------|---------------------------------------------------|
/// | runs                                           | block, exit handlers, status 3                    |
/// | this thread reported an internal error already | block, status 3 at once, no further exit handlers |
/// | runs exit handlers of an ordinary exit         | block, status 3 at once, no further exit handlers |
/// | another thread reported an internal error      | no block; the thread rests until the process ends |
///
/// Exit handlers that run on another thread are recognised from those on that were registered before
/// the first call of err_set_module_fullpath(). A thread that ends the process in the ordinary way
/// while another one reports doesn't change the status: it is 3.
/// Where the C library doesn't stand two exits at once (glibc before 2.41), it may end the process by
/// a signal instead.
[[noreturn]] ERR_API void err_report_internal_error(char const *expression, char const *module, char const *file,
                                                    int line);

/// Stores the module's place for the reports; a later call replaces it, unless memory is short. The text is
/// copied and may be empty.
///
/// @param path  the place; gen_exe_init() hands over the module's directory
ERR_API void err_set_module_fullpath(std::string const &path);

/// True from the first internal error on, in exit handlers too; false in an ordinary run and an
/// ordinary exit.
ERR_API bool err_is_in_abnormal_exit();

/// A place in the source, as far as the program's symbols and debug information tell: a text that isn't known is empty,
/// a line 0.
struct ERR_LINE
{
    std::string function;
    std::string file;
    int line;
    /// It belongs to the C++ standard library.
    bool is_standard_library;
};

/// Where a call stands.
struct ERR_PLACE
{
    /// File name of the executable or library; empty if the address is in none.
    std::string object;
    /// The return address from the beginning of that.
    std::uint64_t object_offset;
    /// The functions around the call: first those that the compiler has put in place of their calls, innermost first,
    /// last the one that they were put into. Empty if nothing is known, on Windows always.
    std::vector<ERR_LINE> lines;
};

/// Tells where calls stand, one place for each, in their order.
///
/// @param return_addresses  where the calls return to
/// @param count             how many they are
///
/// Reads symbols and debug information from disk, which takes milliseconds and more. Throws std::bad_alloc only.
ERR_API std::vector<ERR_PLACE> err_describe_calls(void const *const *return_addresses, std::size_t count);

#endif
