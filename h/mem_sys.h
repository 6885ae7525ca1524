// Configuration, messages, text formatting and memory figures of the suite.
//
// ```cpp
// #include "mem_sys.h"
// #include <cstdint>
// #include <iostream>
//
// int main()
// {
//     if (!mem_cfg_is_on("fitter_report_size", true)) // a line of kalvern.ini: fitter_report_size = off
//         return 0;
//     std::int64_t slots[] = {1200, 3};               // one slot of 8 bytes for each argument
//     mem_msg_local_vinfo("FIT", "%d cells in %d regions", reinterpret_cast<char *>(slots));
//     std::string text;                               // that line is: Info (FIT): 1200 cells in 3 regions
//     stl_sprintf(&text, "%zu bytes", MEM_MANAGER::current_total_memory());
//     std::cout << text << "\n";
// }
// ```
//
// Any thread may call any function at any time, except where a function says otherwise.
#ifndef MEM_SYS_H
#define MEM_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <iosfwd>
#include <string>

// Configuration. Exit handlers may use it too.
//
// A key is a name with a text as its value. The first of these sources that contains the key gives its value:
//
//     1. mem_cfg_set()
//     2. the file named by the environment variable KALVERN_INI (an empty name means no file)
//     3. "kalvern.ini" in the current directory
//     4. "kalvern.ini" in the installation root, which is known after mem_set_gen_get_kalvern_path_callback()
//
// Each file is read once: files 2 and 3 at the first look-up in the process, file 4 at the first look-up after its
// callback was set. Regular files are read, and links to them; the opening of a pipe is not waited for. A file that is
// there and can't be read, is no regular file, or has more than 16 MiB counts as absent, and so does a missing file
// that KALVERN_INI names. Each is reported once on the standard error stream, with the reason:
//
//     Warning: kalvern.ini: the file can't be read: Permission denied
//
// Each line of a file is "key = value"; blanks around the key and the value are dropped. A line that begins with # or ;
// is a comment; elsewhere in a line these characters belong to the value. A line with a section in brackets is ignored.
// Keys are compared with their case. If a key occurs twice in a file, its last value counts. Lines end with LF or CRLF;
// a UTF-8 byte-order mark is skipped.
//
// A line that can't be read (no =, no key, a null byte) is skipped. A value that can't be read as a switch or a number
// counts as absent, and later sources are not searched for the key. Both are reported once on the standard error
// stream, as "Warning: <file>:<line>: ...": at most 20 lines of one file, then the number of the others.

/// The value of a switch: on, true, yes or 1; off, false, no or 0; in upper or lower case.
///
/// @param key            the key; null counts as absent
/// @param default_value  the result if the key is absent or its value is not one of these words
MEM_API bool mem_cfg_is_on(char const *key, bool default_value);

/// The value of a number: decimal, or hexadecimal after 0x, with an optional sign. Leading zeros have no effect.
///
/// @param key            the key; null counts as absent
/// @param default_value  the result if the key is absent or its value is not a signed number of 32 bits
MEM_API int mem_cfg_get_int_value(char const *key, int default_value);

/// The text of the value without the blanks around it; empty if the key is absent.
///
/// @param key  the key; null counts as absent
MEM_API std::string mem_cfg_get_value(char const *key);

/// Where the value of a key comes from, for a message about it: the file as it was opened and the line, in the form
/// "kalvern.ini:3"; "mem_cfg_set" if the program has set it; empty if the key is absent.
///
/// @param key  the key; null counts as absent
MEM_API std::string mem_cfg_get_origin(char const *key);

/// Sets a key for this process, from now on and for all threads. It takes precedence over every file.
///
/// @param key    the key, copied; null does nothing
/// @param value  its value, copied unchanged (the empty text is a value); null removes an earlier setting
MEM_API void mem_cfg_set(char const *key, char const *value);

// Messages. A message is one line, and lines of different threads don't mix.
//
// Information messages are written to the standard output stream. Debug messages are written to the standard error
// stream, and only if the key mem_show_debug_messages is on. Each line goes out when it is emitted, after a flush of
// the stream:
//
//     Info (GEN): text         Debug (GEN): text         Info: text     if the module is null or empty
//
// A line goes out whole, also after an interruption by a signal. If the descriptor doesn't block and has no room, the
// line waits for its reader, one second at most. Then it is lost, as after any other error, and the lines after it
// don't wait until the descriptor takes text again. The next line that goes out follows "Warning: 3 messages were lost
// here:" with the reason of the first of them. A fork doesn't wait for a line that is on its way.

/// Emits an information message.
///
/// @param module     short name of the sender; may be null
/// @param format     a format of stl_output(); not null. A line end is added unless the text ends with one
/// @param arguments  a run of 8-byte slots, as described at stl_output(); null is allowed if the format takes no
///                   argument
/// @return whether the message was emitted; false if it could not be formatted or written
MEM_API bool mem_msg_local_vinfo(char const *module, char const *format, char *arguments);

/// Emits a debug message if debug messages are shown. Otherwise nothing is formatted, and the call takes some
/// nanoseconds.
///
/// @param module     as for mem_msg_local_vinfo()
/// @param format     as for mem_msg_local_vinfo()
/// @param arguments  as for mem_msg_local_vinfo()
/// @return whether the message was emitted; false too if debug messages are not shown
MEM_API bool mem_msg_local_vdebug(char const *module, char const *format, char *arguments);

/// Kinds of messages.
enum MEM_MSG_KIND
{
    MEM_MSG_INFO, ///< emitted by mem_msg_local_vinfo()
    MEM_MSG_DEBUG ///< emitted by mem_msg_local_vdebug()
};

/// A function that receives messages; see mem_msg_redirect(). It runs on the thread that emits the message, and several
/// threads may run it at the same time. It may emit messages, which call it again, and it may redirect messages.
///
/// It must not throw: functions of the suite emit messages at any point of their work, and an exception would leave
/// that work half done.
///
/// `module` is never null. `text` is the text without the module and without the line end, valid during the call.
/// `context` is the second argument of mem_msg_redirect().
using MEM_MSG_SINK = void (*)(MEM_MSG_KIND kind, char const *module, char const *text, void *context);

/// Sends every message to a function. It receives debug messages whether or not they are shown.
///
/// @param sink     the function; null restores the standard streams
/// @param context  passed to the function
///
/// Replaces any earlier redirection. The earlier function may still receive a message of another thread shortly after
/// the return.
MEM_API void mem_msg_redirect(MEM_MSG_SINK sink, void *context);

/// Appends every message that is shown to a file, in the form of the standard streams.
///
/// @param path  the file, created if it doesn't exist; null restores the standard streams
/// @return false if the file can't be opened, and an earlier redirection stays; otherwise true, and it is replaced
MEM_API bool mem_msg_redirect_to_file(char const *path);

// Formatting: the rules of printf in C99, with the same result on every platform and in every locale.
//
//     flags       - + space # 0
//     width       a number or *; negative from * means the flag - and the width without its sign
//     precision   . with a number, with *, or with nothing, which means 0; negative from * means no precision
//     length      hh h l ll j z t L, and I32 and I64 for 32 and 64 bits; l is the platform's long
//     conversion  d i u o x X c s p e E f F g G a A %
//
// Where C leaves the result open, or where this formatter differs from C:
//
//     decimal point     always "."
//     %s of null        "(null)", to which width and precision apply
//     %p                as %#x of 64 bits; "(nil)" for null
//     %ls %lc           ASCII characters, and "?" for each other wide character
//     %L with d u x...  64 bits
//     %n                takes its argument and writes nothing
//     unknown           a conversion that is not in the list, or at which the format ends, is copied as text up to and
//                       including its unknown character; it takes no argument, not even for its *
//     too large         a width, or a precision of a number, above 1048576 makes the formatting fail

/// Replaces a text by formatted arguments.
///
/// @param out     receives the text, or the empty text if the formatting fails; not null. Arguments may point into it.
/// @param format  the format; not null
MEM_API void stl_sprintf(std::string *out, char const *format, ...) ZEL_PRINTF_FORMAT(2, 3);

/// Appends formatted arguments to a text.
///
/// @param out        the text; not null. Arguments may point into it.
/// @param format     the format; not null
/// @param arguments  cursor over a run of slots of 8 bytes. Each slot contains an integer that is extended to 64 bits,
///                   a double or a pointer. The cursor is moved past the slots that the format takes: one for each
///                   conversion and one for each *. Null is allowed if the format takes none. A conversion of fewer
///                   bits reads the low part of its slot; `%Lf` and the like read a double
/// @return the number of characters appended; -1 if the formatting fails or gives more than INT_MAX characters. In that
///         case `out` is unchanged, but the cursor has moved
MEM_API int stl_output(std::string *out, char const *format, char *&arguments);

// Memory of the process, in bytes. A figure that the system doesn't give is 0.

class MEM_API MEM_MANAGER
{
public:
    /// The bytes that were allocated and not yet released.
    ///
    /// In a process that links zel::mem_new this is the sum of the counted bytes. It is exact for the calling thread
    /// and for every thread that doesn't allocate or release meanwhile; a thread that does is read at some moment of
    /// the call. It is never below 0. In any other process it is the working set.
    static std::size_t current_total_memory();
};

/// The resident memory of the process. Takes one or two system calls, about a microsecond.
MEM_API std::size_t mem_info_get_process_current_working_set_size();

/// The largest resident memory since the process started.
MEM_API std::size_t mem_info_get_process_peak_working_set_size();

/// The largest virtual memory since the process started: on Linux the address space, on Windows the committed memory.
MEM_API std::size_t mem_info_get_process_peak_virtual_used();

// Static set-up.

/// Initialises this library early. A static object of this class, constructed before the static objects that allocate,
/// makes the library usable from then on. Any number of objects may exist, at the same time or one after another. The
/// end of the last one releases nothing, so that later exit handlers can still use the library.
class MEM_API MEM_INITIALIZER
{
public:
    /// Initialises the parts that are not initialised yet.
    ///
    /// @param module  short name of the library that contains the object; may be null
    explicit MEM_INITIALIZER(char const *module);
    ~MEM_INITIALIZER();
    MEM_INITIALIZER(MEM_INITIALIZER const &) = delete;
    MEM_INITIALIZER &operator=(MEM_INITIALIZER const &) = delete;
};

// Callbacks: functions of zel_gen, which this library must not call directly. gen_exe_init() passes all five. This
// library uses the first one alone; the other four setters accept a function or null, and neither keep nor call it.

/// Sets the function that returns the installation root. Null means no callback.
///
/// @param callback  returns the root, with or without a "/" at its end, or the empty text if there is none. It may read
///                  configuration keys and emit messages. It is called at the next look-up of a configuration key, on
///                  the thread of that look-up and without a lock of this library, once; if several threads look a key
///                  up at that moment, once for each
MEM_API void mem_set_gen_get_kalvern_path_callback(std::string (*callback)());

/// Accepts the function that returns the project's database directory; no effect.
///
/// @param callback  returns the directory; empty as long as no project is open
MEM_API void mem_set_gen_get_db_dir_path_string_callback(std::string (*callback)());

/// Accepts the function that reports whether the process has a graphical user interface; no effect.
///
/// @param callback  returns true if it has one
MEM_API void mem_set_gen_get_is_ui_process_callback(bool (*callback)());

/// Accepts the function that returns the file name of the process's module; no effect.
///
/// @param callback  returns the name without directory
MEM_API void mem_set_gen_get_module_filename_callback(std::string (*callback)());

/// Accepts the function that returns the project's output directory; no effect.
///
/// @param callback  returns the directory; the text stays valid until the project changes
MEM_API void mem_set_gen_get_project_output_directory_callback(char const *(*callback)());

// Counting and tracking of memory.
//
// Counting is always on in a process that links the static library zel::mem_new. Its operators new and delete count the
// bytes of every block: on Linux for all modules of the process, on Windows for the modules that link it. The usable
// size of a block is counted, the same when it is allocated and when it is released.
//
// Tracking records more than the sum; it is off unless one of the granularities below is on.
//
// In a process without zel::mem_new the tables by source line and by subsystem and the modules of the time line are
// empty, and the figures of the bins are those of the process.

/// The kinds of tracking; values can be combined with |.
enum MEM_TRACKING_GRANULARITY : int
{
    MEM_TRACKING_STATISTICS = 2, ///< figures by profile bin and by tag
    MEM_TRACKING_TIMELINE = 4,   ///< a row per label and bin boundary
    MEM_TRACKING_SOURCES = 8,    ///< allocations by source line and by subsystem
    MEM_TRACKING_SELECTED_BIN = MEM_TRACKING_TIMELINE | MEM_TRACKING_SOURCES
};

/// Turns the bits of `granularity` on; the others keep their state. At the start the bits of the key "mem_tracking" are
/// on; it is read once, at the first call of any of these four functions. Bits other than the three are ignored.
///
/// Earlier records stay. A block that was released while MEM_TRACKING_SOURCES was off stays in the tables by source
/// line and by subsystem until its address is allocated again or mem_reset_tracking_entries() is called.
MEM_API void mem_enable_tracking(MEM_TRACKING_GRANULARITY granularity);

/// Turns the bits of `granularity` off; the others keep their state. The records stay and can still be dumped.
MEM_API void mem_disable_tracking(MEM_TRACKING_GRANULARITY granularity);

/// Whether all bits of `granularity` are on.
MEM_API bool mem_tracking_is_enabled(MEM_TRACKING_GRANULARITY granularity);

/// Whether the key "mem_tracking" is not 0. Enabling and disabling don't change the result.
MEM_API bool mem_get_tbb_memory_tracking_enabled();

/// Opens a profile bin inside the bins that are open.
///
/// @param name  name of the bin, copied
/// @param tag   its tag, copied; may be empty
///
/// Opens, closes, labels of the time line and mem_tbb_tracking_flush_peak() all have to be called on one and the same
/// thread. With the statistics and the time line off, an open takes some nanoseconds for each running thread; it
/// allocates only if bins nest deeper, or have longer names, than ever before. In a process that doesn't count, it
/// reads the figures of the process by system calls, which takes one to two microseconds.
MEM_API void mem_open_profile_bin(std::string const &name, std::string const &tag);

/// Closes the innermost open profile bin and reports its figures, in bytes.
///
/// @param tag          tag of the bin; it has no effect on which bin is closed
/// @param open_bytes   receives the figure at the open; not null
/// @param close_bytes  receives the current figure; not null
/// @param peak_bytes   receives the largest figure between open and close, also while bins inside were open; not null,
///                     never less than the two others
///
/// In a process that counts, the figures are the counted bytes:
///
/// - Those at open and close are exact if no other thread allocates or releases at that moment.
/// - The peak is exact if only one thread, no matter which, allocates while the bin is open, and none while another
///   thread opens or closes a bin or reads the total. Each further thread that allocates adds an error of up to 64 KiB.
///
/// In any other process the figures are the working set. Its peak is the largest value at an open or close in between,
/// or the peak of the process if that was reached in between.
///
/// If there was no memory to record the open, and at a close without an open, all three are the current figure.
MEM_API void mem_close_profile_bin(std::string const &tag, std::size_t *open_bytes, std::size_t *close_bytes,
                                   std::size_t *peak_bytes);

/// Deletes the records of all kinds of tracking. The count, the open bins and the label of the time line stay.
MEM_API void mem_reset_tracking_entries();

/// Adds the peak up to now to the innermost open bin and to the next row of the time line, and begins a new peak in the
/// tables by source line and by subsystem: their peak columns then describe the time after this call.
MEM_API void mem_tbb_tracking_flush_peak();

// The dumps. Each writes a text table, largest row first except for the time line; docs/file-formats.md describes the
// columns. The result is true if there were records and the stream accepted all of the table. Without records nothing
// is written. The stream is flushed, so that a full disk is noticed; if the stream throws, the result is false.

/// Allocations by source line: function, file and line if the program has debug information, otherwise a library and an
/// offset. Code of the C++ standard library is replaced by its caller, if that is known.
MEM_API bool mem_dump_tbb_fileline_tracking(std::ostream &out);
/// Allocations by subsystem, that is by shared library.
MEM_API bool mem_dump_tbb_subsystem_tracking(std::ostream &out);
/// Figures of the profile bins that were closed while MEM_TRACKING_STATISTICS was on.
MEM_API bool mem_dump_tbb_profile_bin_stats_tracking(std::ostream &out);
/// Figures of those profile bins by tag. A bin inside another bin with the same tag is not counted a second time.
MEM_API bool mem_dump_tbb_profile_bin_tag_stats_tracking(std::ostream &out);
/// The time line, in the order of its rows, and a second table with the bytes of each module at each row.
///
/// Nothing is written to `details` unless MEM_TRACKING_SOURCES was on together with MEM_TRACKING_TIMELINE. True if
/// there was a time line and both streams accepted all of the tables.
MEM_API bool mem_dump_tbb_module_tracking(std::ostream &timeline, std::ostream &details);

/// Sets the label of later rows of the time line, and adds a row if MEM_TRACKING_TIMELINE is on. An empty text means no
/// label.
MEM_API void mem_set_timeline_label(std::string const &label);
/// Makes the label alone label the rows of the time line, until the process ends. Before this call the tag of the
/// innermost open bin that has a tag takes the place of the label.
MEM_API void mem_disable_profile_bin_tag_timeline_labels();

/// While an object of this class exists, the thread that made it counts and tracks nothing. Objects may be nested; each
/// must be destroyed on the thread that made it.
///
/// The scope applies to allocations and releases inside it, not to blocks. A counted block that is released inside
/// stays in the total, and a block that is allocated inside is subtracted from the total when it is released outside.
/// Memory that is allocated in such a scope should therefore be released in one. A total below 0 is reported as 0.
class MEM_API MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT
{
public:
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT();
    ~MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT();
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT(MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const &) = delete;
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT &
    operator=(MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const &) = delete;
};

// Counting, for the replaced operators new and delete of zel::mem_new. A thread may call these functions at any time
// from its start to its end. They never call the operators and don't fail.

/// Adds a block to the count and, if MEM_TRACKING_SOURCES is on, to the tables by source line and by subsystem. The
/// first call, even with 0 bytes, makes this a process that counts.
///
/// @param block           the block; null to count its bytes alone
/// @param bytes           the bytes to count for it
/// @param return_address  the return address of the call that allocates it; null only if `block` is null
/// @param stack           the stack pointer after that return; null if it isn't known, and the outer callers are then
///                        not recorded
MEM_API void mem_count_allocation(void const *block, std::size_t bytes, void const *return_address, void const *stack);

/// Subtracts a block from the count, and removes it from the tables if it is there. To be called before its release.
///
/// @param block  the block, or null, as in mem_count_allocation()
/// @param bytes  the same number of bytes as in mem_count_allocation()
MEM_API void mem_count_release(void const *block, std::size_t bytes);

#endif
