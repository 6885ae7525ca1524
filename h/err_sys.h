// Internal errors, the exit state of the process, and the source positions of calls. An internal error is a fault of
// the program itself, found by a check that is part of release builds too. Any thread may call any of these functions,
// at any time from the construction of static objects to the last exit handler.
#ifndef ERR_SYS_H
#define ERR_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Reports an internal error and ends the process with status 3. Never returns and never throws.
///
/// @param expression  the failed condition, or a sentence; printed unchanged
/// @param module      short name of the library that found the error, for instance "GEN"
/// @param file        source file of the check
/// @param line        source line of the check
///
/// A null text is printed as "(null)". The report is one block on the standard error stream; reports of
/// different threads don't mix. It comes in two writes, the first with everything before the stack; if that is longer
/// than 2 KB, in three:
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
/// Function, file and line of a frame are printed if symbols are available; otherwise, and always on Windows, a frame
/// is a module and an offset. A frame's text is cut at 4 KB. "Module" is the text given to err_set_module_fullpath().
/// "Process" is the path that the executable had when the library was loaded.
///
/// The block needs no memory, no lock of these libraries, and 8 KB of stack. On Linux the symbols are read in a
/// child of the process, which runs no fork handlers and is ended after 5 seconds; frames that it has not described
/// are printed as module and offset. If the standard error stream doesn't block and is full, each write waits for room,
/// 1 second at most.
///
/// After the block the calling thread calls exit(3), so that exit handlers run. From the first write on, a fault on any
/// thread ends the process at once with status 3: SIGSEGV, SIGBUS, SIGABRT and SIGFPE, or on Windows an unhandled
/// exception or abort(). If a thread other than the reporting one uses up its stack, the system ends the process.
///
/// | state of the process at the call               | effect                                            |
/// |------------------------------------------------|---------------------------------------------------|
/// | running                                        | block, exit handlers, status 3                    |
/// | this thread reported an internal error already | block, status 3 at once, no further exit handlers |
/// | running exit handlers of an ordinary exit      | block, status 3 at once, no further exit handlers |
/// | another thread reported an internal error      | no block; the thread waits for the process to end |
///
/// If exit handlers run on another thread, this is noticed only while handlers run that were registered
/// before the first call of err_set_module_fullpath(). If another thread calls exit() while an error is
/// reported, the status is 3 all the same; glibc before 2.41 may end the process by a signal instead,
/// since it doesn't support two calls of exit() at the same time.
[[noreturn]] ERR_API void err_report_internal_error(char const *expression, char const *module, char const *file,
                                                    int line);

/// Stores the path of the module for the reports. A later call replaces it.
///
/// @param path  the path, copied and cut at 4 KB; may be empty. gen_exe_init() passes the module's directory
ERR_API void err_set_module_fullpath(std::string const &path);

/// True after the first internal error, also in exit handlers; false in an ordinary run and in an
/// ordinary exit.
ERR_API bool err_is_in_abnormal_exit();

/// A position in the source, from the program's symbols and debug information. An unknown text is empty, an unknown
/// line is 0.
struct ERR_LINE
{
    std::string function;
    std::string file;
    int line;
    /// Whether the function belongs to the C++ standard library.
    bool is_standard_library;
};

/// The position of a call in the program.
struct ERR_PLACE
{
    /// File name of the executable or library that contains the call; empty if there is none.
    std::string object;
    /// The return address relative to the beginning of that object, in bytes.
    std::uint64_t object_offset;
    /// The functions that contain the call: first those that the compiler inlined, innermost first, last the function
    /// into which they were inlined. Empty if nothing is known; always empty on Windows.
    std::vector<ERR_LINE> lines;
};

/// Finds the positions of calls; the result has one element for each return address, in the same order.
///
/// @param return_addresses  the return addresses of the calls; not null unless `count` is 0
/// @param count             the number of return addresses
///
/// Reads symbols and debug information from disk, which takes some milliseconds or more. On Linux this is done in a
/// child of the process, one for each call, which runs no fork handlers. If the child ends early, takes longer than 30
/// seconds for one address or longer than 10 minutes in all, the other places have no lines. A program that waits for
/// all of its children or handles SIGCHLD sees this one too. Throws std::bad_alloc only.
ERR_API std::vector<ERR_PLACE> err_describe_calls(void const *const *return_addresses, std::size_t count);

#endif
