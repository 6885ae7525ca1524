// Configuration, messages, formatting and memory facts of the suite.
#ifndef MEM_SYS_H
#define MEM_SYS_H

#include "zel_export_sys.h"

#include <cstddef>
#include <iosfwd>
#include <string>

// Configuration. Any thread, also from exit handlers.
//
// A key is a name with a text as its value. The first of these that has the key gives its value:
//
//     1. mem_cfg_set()
//     2. the file that the environment variable KALVERN_INI names (an empty name is none)
//     3. "kalvern.ini" in the current directory
//     4. "kalvern.ini" in the installation root, which mem_set_gen_get_kalvern_path_callback() makes known
//
// Files are read once: 2 and 3 at the first question of the process, 4 at the first one after its callback is set. A
// file that can't be read is as good as none, and so is one of more than 16 MiB, which is reported.
//
// Each line of a file is "key = value"; blanks around key and value don't count. A line that begins with # or ; is a
// comment (further back these characters belong to the value), a section in brackets is without meaning. Keys are
// told apart by case. A key that stands twice in a file has its last value. Line ends are LF or CRLF; a UTF-8
// byte-order mark is skipped.
//
// A line that can't be read (no =, no key, a null byte) is skipped, and a value that a question can't read counts as
// absent, without regard to later sources. Both are reported once, on the standard error stream, as
// "Warning: <file>:<line>: ...": at most 20 lines of one file, then a count of the others.

/// The value of a switch: on, true, yes, 1 or off, false, no, 0, upper or lower case.
///
/// @param key            the key; null is always absent
/// @param default_value  the answer if the key is absent or its value is none of these words
MEM_API bool mem_cfg_is_on(char const *key, bool default_value);

/// The value of a number: decimal, or hexadecimal behind 0x, with an optional sign; leading zeros don't count.
///
/// @param key            the key; null is always absent
/// @param default_value  the answer if the key is absent or its value is no number of 32 bits with sign
MEM_API int mem_cfg_get_int_value(char const *key, int default_value);

/// The value as it stands in its source, without the blanks around it; empty if the key is absent.
///
/// @param key  the key; null is always absent
MEM_API std::string mem_cfg_get_value(char const *key);

/// Sets a key for this process, ahead of every file, from now on and for all threads.
///
/// @param key    the key; null does nothing
/// @param value  its value, taken as it is (empty is a value); null takes a former setting back
MEM_API void mem_cfg_set(char const *key, char const *value);

// Messages. Any thread, at any time of the process. A message is one line, and lines of different threads don't mix.
//
// Information goes to the standard output stream, debug messages go to the standard error stream and only if the key
// mem_show_debug_messages is on. A line is flushed when it is written:
//
//     Info (GEN): text         Debug (GEN): text         Info: text     if the module is null or empty

/// Emits an information message.
///
/// @param module     short name of the sender; may be null
/// @param format     a format as of stl_output(); not null. One line end at the end of the text is the line's own.
/// @param arguments  a run of 8-byte slots as of stl_output(); null is right for a format without conversions
/// @return whether the message was emitted: false if it can't be written, or can't be formatted
MEM_API bool mem_msg_local_vinfo(char const *module, char const *format, char *arguments);

/// Emits a debug message, if these are shown. One that isn't shown is not formatted and costs next to nothing.
///
/// @param module     short name of the sender; may be null
/// @param format     as of mem_msg_local_vinfo()
/// @param arguments  as of mem_msg_local_vinfo()
/// @return whether the message was emitted: false also if debug messages are not shown
MEM_API bool mem_msg_local_vdebug(char const *module, char const *format, char *arguments);

/// Kinds of messages.
enum MEM_MSG_KIND
{
    MEM_MSG_INFO, ///< emitted by mem_msg_local_vinfo()
    MEM_MSG_DEBUG ///< emitted by mem_msg_local_vdebug()
};

/// Receives one message, on the thread that emits it. Threads may call it at the same time. It may emit messages
/// itself, which come back to it, and may redirect them.
///
/// `module` is never null. `text` is the bare text, without module and line end, and valid during the call. `context`
/// is what mem_msg_redirect() was given.
using MEM_MSG_SINK = void (*)(MEM_MSG_KIND kind, char const *module, char const *text, void *context);

/// Sends every message to a function, debug messages included whatever the configuration says.
///
/// @param sink     the function; null goes back to the standard streams
/// @param context  handed to the function as it is
///
/// Replaces any former redirection. A message under way on another thread may still reach the former function after
/// the return.
MEM_API void mem_msg_redirect(MEM_MSG_SINK sink, void *context);

/// Appends every message that is shown to a file, in the form of the standard streams.
///
/// @param path  the file, made if there is none; null goes back to the standard streams
/// @return false if the file can't be opened; a former redirection then stays. Otherwise it is replaced.
MEM_API bool mem_msg_redirect_to_file(char const *path);

// Formatting: printf conventions by the rules of C99, alike on every platform and in every locale. Any thread.
//
//     flags       - + space # 0
//     width       a number or *; negative from * means the flag - and the width without its sign
//     precision   . with a number, * or nothing, which is 0; negative from * means none
//     length      hh h l ll j z t L, and I32 and I64 for 32 and 64 bits; l is the platform's long
//     conversion  d i u o x X c s p e E f F g G a A %
//
// What C leaves open, or what differs from it:
//
//     the decimal point is always "."
//     %s of null        "(null)", which width and precision treat like any text
//     %p                as %#x with 64 bits; of null "(nil)"
//     %ls %lc           characters of ASCII, and "?" for each other wide character
//     %L with d u x...  64 bits
//     %n                refused: takes its argument, writes nothing anywhere
//     unknown           a conversion that is not in the list, or that the format ends in, is copied as text up to and
//                       with its unknown character; it takes no argument, not even for its *
//     too large         a width, or a precision of a number, above 1048576: the formatting fails

/// Replaces a text by formatted arguments.
///
/// @param out     receives the text, or the empty text if the formatting fails; not null. Arguments may point into it.
/// @param format  the format; not null
MEM_API void stl_sprintf(std::string *out, char const *format, ...) ZEL_PRINTF_FORMAT(2, 3);

/// Appends formatted arguments to a text.
///
/// @param out        the text; not null. Arguments may point into it.
/// @param format     the format; not null
/// @param arguments  cursor over a run of slots of 8 bytes: whole numbers extended to 64 bits, doubles, pointers. It is
///                   moved past the slots that the format takes, one for each conversion and each *. Null is right for
///                   a format that takes none. A number of fewer bits is the low part of its slot; a slot of `%Lf`
///                   and its kind holds a double.
/// @return the number of characters appended, or -1 if the formatting fails or gives more than INT_MAX characters. Then
///         `out` is as it was, and the cursor has moved all the same.
MEM_API int stl_output(std::string *out, char const *format, char *&arguments);

// Memory of the process, in bytes. Any thread. A figure that the system doesn't give is 0.

class MEM_API MEM_MANAGER
{
public:
    /// What the allocator has given out and not taken back.
    ///
    /// In a process that links zel::mem_new: the counted bytes. Exact for the calling thread and for every thread at
    /// rest; a thread that allocates meanwhile is seen at some moment of the call. Never below 0. In any other process:
    /// the working set.
    static std::size_t current_total_memory();
};

/// The memory of the process that is resident now. Costs a system call or two, about a microsecond.
MEM_API std::size_t mem_info_get_process_current_working_set_size();

/// The most that was ever resident.
MEM_API std::size_t mem_info_get_process_peak_working_set_size();

/// The most virtual memory that was ever in use: on Linux the peak of the address space, on Windows that of the
/// committed memory.
MEM_API std::size_t mem_info_get_process_peak_virtual_used();

// Static set-up.

/// Makes what this library needs before anything else runs. A static object of it, built before the statics that
/// allocate, works as early as the first constructor of the process; any number of them may live, nested or one after
/// the other. Nothing is taken down with the last one: exit handlers that run later may still ask and tell.
class MEM_API MEM_INITIALIZER
{
public:
    /// Sets up what is not there yet.
    ///
    /// @param module  short name of the library that holds the object; may be null
    explicit MEM_INITIALIZER(char const *module);
    ~MEM_INITIALIZER();
    MEM_INITIALIZER(MEM_INITIALIZER const &) = delete;
    MEM_INITIALIZER &operator=(MEM_INITIALIZER const &) = delete;
};

// Callbacks: what this library asks of the one above it. Set when the process starts, each by any thread; null sets
// none. From then on they may be called on any thread, without any lock of this library.

/// Sets the function that tells the installation root.
///
/// @param callback  gives the root; with or without a "/" at its end, empty if there is none. It may ask
///                  for configuration and emit messages itself. It is called at the next question for a configuration
///                  key, once, or once for each thread that asks at that moment.
MEM_API void mem_set_gen_get_kalvern_path_callback(std::string (*callback)());

/// Sets the function that tells the project's database directory.
///
/// @param callback  gives the directory; empty as long as no project is open
MEM_API void mem_set_gen_get_db_dir_path_string_callback(std::string (*callback)());

/// Sets the function that tells the kind of the process.
///
/// @param callback  tells whether the process has a graphical interface
MEM_API void mem_set_gen_get_is_ui_process_callback(bool (*callback)());

/// Sets the function that tells the process's module.
///
/// @param callback  gives the file name of the module
MEM_API void mem_set_gen_get_module_filename_callback(std::string (*callback)());

/// Sets the function that tells the project's output directory.
///
/// @param callback  gives the directory; the text stays valid until the project changes
MEM_API void mem_set_gen_get_project_output_directory_callback(char const *(*callback)());

// Memory tracking.
//
// Two things are told apart. Counting runs always in a process that links the static library zel::mem_new, whose
// operators new and delete count the bytes of every block, for all modules of the process on Linux and for the modules
// that link it on Windows. A byte counted is one of the block's usable size, alike when it is allocated and when it is
// released. Tracking, by the granularities below, is what is recorded beyond that.
//
// What needs the operators is empty in a process without zel::mem_new: the tables by source line and by subsystem, and
// the modules of the time line. The figures of the bins are those of the process there.

/// What is tracked; values add up.
enum MEM_TRACKING_GRANULARITY : int
{
    MEM_TRACKING_STATISTICS = 2, ///< figures by profile bin and by tag
    MEM_TRACKING_TIMELINE = 4,   ///< a row per label and bin boundary
    MEM_TRACKING_SOURCES = 8,    ///< allocations by source line and by subsystem
    MEM_TRACKING_SELECTED_BIN = MEM_TRACKING_TIMELINE | MEM_TRACKING_SOURCES
};

/// Turns the bits of `granularity` on; the others stay. At the start those of the key "mem_tracking" are on, which is
/// read once, at the first call of any of these four functions. Any thread; other bits than the three are dropped.
///
/// What was recorded before stays, and more is added. A block that was released while the sources were off is still in
/// their tables, until its address is allocated anew or mem_reset_tracking_entries() is called.
MEM_API void mem_enable_tracking(MEM_TRACKING_GRANULARITY granularity);

/// Turns the bits of `granularity` off; the others stay. Any thread. What was recorded can still be written.
MEM_API void mem_disable_tracking(MEM_TRACKING_GRANULARITY granularity);

/// True if all bits of `granularity` are on. Any thread.
MEM_API bool mem_tracking_is_enabled(MEM_TRACKING_GRANULARITY granularity);

/// True if the key "mem_tracking" is not 0, whatever was enabled or disabled since. Any thread.
MEM_API bool mem_get_tbb_memory_tracking_enabled();

/// Opens a profile bin inside the bins that are open.
///
/// @param name  the bin's name
/// @param tag   its tag, may be empty
///
/// All opens and closes of a process come from one thread, and so do the labels and the flush of the peak below. With
/// the statistics and the time line off it costs some nanoseconds for each thread that runs, and allocates only when
/// bins nest deeper, or have longer names, than ever before. In a process that doesn't count it reads the figures of
/// the process, which costs system calls, one to two microseconds.
MEM_API void mem_open_profile_bin(std::string const &name, std::string const &tag);

/// Closes the innermost open profile bin and tells its figures, in bytes.
///
/// @param tag          the bin's tag; it doesn't choose the bin
/// @param open_bytes   receives the figure at its open; not null
/// @param close_bytes  receives the figure now; not null
/// @param peak_bytes   receives the highest figure in between, bins inside it included; not null, never less than the
///                     two others
///
/// In a process that counts, the figures are the counted bytes. Those at open and close are exact if the other threads
/// are at rest then. The peak is exact if one thread allocates while the bin is open, whichever it is, and rests
/// while others open, close or ask for the total; it is within 64 KiB for each further one. In any other process they
/// are the working set, whose peak is that of the boundaries of bins, unless the process reached its highest ever in
/// between. A bin for which the system gave no memory, and a close without an open, give the figure now three times.
MEM_API void mem_close_profile_bin(std::string const &tag, std::size_t *open_bytes, std::size_t *close_bytes,
                                   std::size_t *peak_bytes);

/// Drops what was recorded, of all granularities. The count, the open bins and the label of the time line stay. Any
/// thread.
MEM_API void mem_reset_tracking_entries();

/// Folds the peak up to now into the innermost open bin and into the next row of the time line, and begins a new peak
/// in the tables by source line and by subsystem: their peak columns then show the time from here on.
MEM_API void mem_tbb_tracking_flush_peak();

// The dumps. Each writes a text table, widest row first, whose columns stand in docs/file-formats.md. True if there was
// anything and the stream has taken it; nothing is written if there was nothing. The stream is flushed, so that a full
// disk shows; a stream that throws is answered with false. Any thread.

/// Allocations by source line: function, file and line where the program has debug information, a library and an offset
/// where it hasn't. Code of the C++ standard library is passed over in favour of what called it, as far as it is seen.
MEM_API bool mem_dump_tbb_fileline_tracking(std::ostream &out);
/// Allocations by subsystem, that is by shared library.
MEM_API bool mem_dump_tbb_subsystem_tracking(std::ostream &out);
/// Figures of the profile bins that were closed with the statistics on.
MEM_API bool mem_dump_tbb_profile_bin_stats_tracking(std::ostream &out);
/// The same by tag. A bin inside another one of its tag is part of that.
MEM_API bool mem_dump_tbb_profile_bin_tag_stats_tracking(std::ostream &out);
/// The time line in the order of its rows, and a second table with the bytes of each module at each row.
///
/// The second stream stays empty if the sources were not tracked beside the time line. True if there was a time line
/// and both streams have taken what was written.
MEM_API bool mem_dump_tbb_module_tracking(std::ostream &timeline, std::ostream &details);

/// Labels the rows of the time line from now on, and adds one if it is recorded. An empty text is no label.
MEM_API void mem_set_timeline_label(std::string const &label);
/// Stops labelling the rows of the time line by the tags of profile bins, for good. Until then the tag of the innermost
/// open bin with a tag stands in place of the label.
MEM_API void mem_disable_profile_bin_tag_timeline_labels();

/// While one lives, the calling thread counts and tracks nothing. Objects nest; each ends on the thread it began on.
///
/// The scope holds for what is done in it, not for a block. A counted block that is released inside stays in the
/// total, and a block allocated inside takes its bytes off the total when it is released outside. So what is
/// allocated in such scopes is best released in one; a total that would fall below 0 is shown as 0.
class MEM_API MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT
{
public:
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT();
    ~MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT();
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT(MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const &) = delete;
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT &
    operator=(MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const &) = delete;
};

// Counting, for the replaced operators new and delete of zel::mem_new. Any thread, at any time of its life and of the
// process; they allocate nothing through the operators and don't fail.

/// Adds a block to the count, and to the tables by source line and by subsystem if they are recorded. The first call,
/// also one with 0, makes this a process that counts.
///
/// @param block           the block; null if only its bytes are to be counted
/// @param bytes           what is counted for it
/// @param return_address  where the call that allocates it returns to; null only beside a null block
/// @param stack           where the stack stands after that return; null if that isn't known. The calls further out are
///                        then not seen.
MEM_API void mem_count_allocation(void const *block, std::size_t bytes, void const *return_address, void const *stack);

/// Takes a block off the count, and out of the tables if it is there, before it is released.
///
/// @param block  the block, or null, as when it was added
/// @param bytes  the same figure that was added for it
MEM_API void mem_count_release(void const *block, std::size_t bytes);

#endif
