// Profile bins: the suite's one account of time and memory by named stage of a flow.
//
// A tool brackets a stage with an open and a close, best with a GEN_PROFILER guard. The bins form a tree under one
// root; wall-clock time, CPU time, an estimate of wall-clock time and memory add up by bin, and finalize() writes the
// tree to a log. There is one tree in a process, and it belongs to the thread that called
// GEN_PROFILE_BINS::initialize(): calls of any other thread, and calls before initialize() or after finalize(), return
// at once without effect (finalize() excepted). No lock is taken. The messages of the bins can reach a function of the
// tool (mem_msg_redirect()): opens and closes from inside it have no effect either.
//
// A misuse is an internal error in a development build. In a customer build (gen_debug_is_customer_build()) it silently
// switches the bins off for the rest of the process: profiling never stops a customer's flow.
#ifndef GEN_PROFILE_BINS_SYS_H
#define GEN_PROFILE_BINS_SYS_H

#include "err_sys.h"
#include "zel_export_sys.h"

#include <string>
#include <vector>

/// Flags of an open. 0 opens nothing: the open, and everything inside it, is ignored and leaves no trace.
enum GEN_PB_FLAGS : unsigned
{
    GEN_PB_FLAG_RECORD = 1,        ///< a plain bin: buffered and quiet
    GEN_PB_FLAG_ANNOUNCE = 0x100,  ///< the bin reports its opening and closing through messages
    GEN_PB_FLAG_IMMEDIATE = 0x200, ///< the open is processed at once and returns the bin
    GEN_PB_FLAG_ALL = 0x7fffffff
};

/// What GEN_PROFILE_BIN::get_metric() is asked for. The last four need a closed bin.
enum GEN_PB_METRIC : unsigned
{
    GEN_PB_METRIC_WC = 1,               ///< wall-clock seconds
    GEN_PB_METRIC_CPU = 2,              ///< CPU seconds of all threads of the process
    GEN_PB_METRIC_CPU_ERRORS = 0x10000, ///< how often the CPU clock went backward
    GEN_PB_METRIC_WC_ERRORS = 0x20000,  ///< how often the wall clock went backward
    GEN_PB_METRIC_START_MEM = 4,        ///< MiB at the first open, as the report has it
    GEN_PB_METRIC_END_MEM = 8,          ///< MiB at the last close, as the report has it
    GEN_PB_METRIC_PEAK_MEM = 16,        ///< MiB at the peak, as the report has it
    GEN_PB_METRIC_WC_EST = 0x40000      ///< estimated wall-clock seconds, as the report has it
};

/// One bin. Bins are made by an open and live until GEN_PROFILE_BINS::finalize(); a pointer to one is never owned by
/// the caller. Within one parent a name is one bin: every open of it adds to the same numbers.
class GEN_API GEN_PROFILE_BIN
{
public:
    GEN_PROFILE_BIN();
    GEN_PROFILE_BIN(GEN_PROFILE_BIN const &other);
    GEN_PROFILE_BIN &operator=(GEN_PROFILE_BIN const &other) = default;

    /// Closes this bin, which must be the innermost open one.
    virtual void close() = 0;

    /// One metric of this bin.
    ///
    /// @param metric      a value of GEN_PB_METRIC; another one is an internal error
    /// @param cumulative  all intervals added up; otherwise the last one. An open bin shows its running interval, on
    ///                    top of the others if cumulative.
    ///
    /// @return the figure, or -1.0 on a thread that doesn't own the bins
    virtual double get_metric(unsigned metric, bool cumulative) const = 0;

    /// The names from `root` down to this bin, joined by "/". A null `root` means the root bin. A bin with an empty
    /// name shows nothing, not even a separator. Empty on a thread that doesn't own the bins. `root` must be this bin
    /// or one above it.
    virtual std::string get_path(GEN_PROFILE_BIN const *root) const = 0;

    /// The same, joined by `separator`.
    virtual std::string get_path(char const *separator, GEN_PROFILE_BIN const *root) const = 0;

    /// Appends the names from `root` down to this bin to `result`, empty ones too.
    virtual void get_path_names(std::vector<std::string> *result, GEN_PROFILE_BIN const *root) const = 0;

    /// Writes the report of this bin, which must be closed, and of all below it. If it is open, or the file can't be
    /// opened, a debug message says so and nothing is written.
    ///
    /// @param file          the file's name; null writes to the debug messages instead
    /// @param collect_tags  note bins with a tag for the tagged report; has an effect in a file only
    virtual void dump(char const *file, bool collect_tags) = 0;

    /// get_metric(GEN_PB_METRIC_CPU, false)
    double get_last_cpu_sec() const;
    /// get_metric(GEN_PB_METRIC_WC, false)
    double get_last_wc_sec() const;

protected:
    virtual ~GEN_PROFILE_BIN();
};

/// The bins of the process.
///
/// Texts that are given to an open or a close must live until ten more events have been given, and the name of an open
/// with flags 0 until its close; best for ever: literals.
class GEN_PROFILE_BINS
{
public:
    /// Binds the bins to the calling thread, reads the configuration and opens the root.
    ///
    /// @param name            the root's name; the built-in ratio rules know "Fitter"
    /// @param primary         this process is the flow's main one: it writes the report when the configuration asks
    /// @param debug_messages  calibrate also when no report is asked for
    ///
    /// Calling it twice without finalize() between is an internal error.
    GEN_API static void initialize(char const *name, bool primary, bool debug_messages);

    /// Opens a bin inside the innermost open one.
    ///
    /// @param code_prefix  the sender of the bin's messages
    /// @param name         the bin's name; not null. "::" in it reads as "->". An empty name makes a new bin each time,
    ///                     which shows in no path and no report.
    /// @param flags        bits of GEN_PB_FLAGS; 0 ignores until the matching close
    ///
    /// @return the bin if GEN_PB_FLAG_IMMEDIATE is set, else null: the bin may not exist yet. Null as well where the
    ///         open has no effect: while ignoring, and on a thread that doesn't own the bins.
    GEN_API static GEN_PROFILE_BIN const *open(char const *code_prefix, char const *name, unsigned flags);

    /// open() with a tag, which says what subject the bin's cost belongs to; null for none. The first open of a bin
    /// decides.
    GEN_API static GEN_PROFILE_BIN const *open_with_tag(char const *code_prefix, char const *name, unsigned flags,
                                                        char const *tag);

    /// open_with_tag() with a step label, null for none: a bin with one is a numbered step of the flow, and with
    /// GEN_PB_FLAG_ANNOUNCE its start and end are told to the user.
    GEN_API static GEN_PROFILE_BIN const *open_with_user_tag(char const *code_prefix, char const *name, unsigned flags,
                                                             char const *tag, char const *user_tag);

    /// Closes the innermost open bin.
    ///
    /// @param name  null, or the name of that bin: another one is an internal error, which a buffered close brings when
    ///              the buffer is flushed
    GEN_API static void close(char const *name);

    /// Closes every bin down to and including `bin`, which must be open. The bins concerned are to have been opened
    /// with GEN_PB_FLAG_IMMEDIATE.
    GEN_API static void close_recursively(GEN_PROFILE_BIN const *bin);

    /// Writes the reports, if they are asked for, and deletes all bins.
    ///
    /// @param name        the name in "profile_bins_<name>.log", which goes to the current directory
    /// @param close_root  close the root first; it must be closed when the reports are written
    ///
    /// Must be called on the thread that called initialize(), which may then be called again.
    GEN_API static void finalize(char const *name, bool close_root);

    /// Closes all open bins, then finalize(name, false).
    GEN_API static void force_finalize(char const *name);

    /// Writes no report at finalize(); counts from initialize() on.
    GEN_API static void disable_process_log();

    /// A text that follows the name in the reports' file names, behind an underscore; empty for none.
    GEN_API static void set_process_log_suffix(std::string const &suffix);

    /// Adds a rule for the estimate of wall-clock time: bins whose path matches are known to spend `ratio` CPU seconds
    /// in a second of wall-clock time. It applies to bins made from now on.
    ///
    /// @param pattern  names from the root down, separated by "/"; "*" stands for any number of names, also none
    /// @param ratio    CPU seconds per wall-clock second
    ///
    /// A bin that matches more than one rule gets an estimate of about 0, and a debug message says so. Any thread may
    /// call it, while no other one uses the bins.
    GEN_API static void set_cpu_to_wc_estimated_ratio(char const *pattern, double ratio);

    /// Always fails: this system has no pause and resume hooks at the bins' boundaries.
    GEN_API static void check_make_tracq_equal_1_performed();

    /// What set_process_log_suffix() was given.
    GEN_API static std::string s_log_file_suffix;
};

/// The innermost open bin among the processed events; null if there is none, and on a thread that doesn't own the bins.
GEN_API GEN_PROFILE_BIN const *gen_profile_bin_get_current_bin();

/// Tells, as debug messages, what the suite's libraries and the process take at a point of a flow. Each configuration
/// key switches a part of it, and is off by default:
///
///     profile_dll_usage    the bytes on disk of the loaded and of the other libraries beside this one
///     list_dll_details     with it, a line for each loaded library
///     report_modules_flow  the memory of the process: allocated, resident now, resident at most
///
/// @param tool   label of the process; ten characters of it are shown
/// @param point  label of the moment; null means "start"
GEN_API void gen_meminfo_report_dll_usage(char const *tool, char const *point);

/// A bin that is open as long as the guard lives.
class GEN_PROFILER
{
public:
    /// Opens a bin, see GEN_PROFILE_BINS::open_with_user_tag(). The texts must outlive the guard by
    /// ten events.
    GEN_PROFILER(char const *code_prefix, char const *name, unsigned flags, char const *tag = nullptr,
                 char const *user_tag = nullptr)
        : m_is_orig(true), m_name(name),
          m_bin(user_tag == nullptr ? GEN_PROFILE_BINS::open_with_tag(code_prefix, name, flags, tag)
                                    : GEN_PROFILE_BINS::open_with_user_tag(code_prefix, name, flags, tag, user_tag))
    {
    }

    /// Takes over from `other`, which must not have been taken over before. The name stays behind: this guard closes
    /// whatever bin is then the innermost.
    GEN_PROFILER(GEN_PROFILER const &other) : m_is_orig(take_over(other)), m_name(nullptr), m_bin(other.m_bin) {}

    GEN_PROFILER &operator=(GEN_PROFILER const &) = delete;

    /// Closes the bin, unless a copy has taken over.
    ~GEN_PROFILER()
    {
        if (m_is_orig)
            GEN_PROFILE_BINS::close(m_name);
    }

    /// The bin, as GEN_PROFILE_BINS::open() returned it: null unless it was opened with GEN_PB_FLAG_IMMEDIATE, and null
    /// where the open had no effect.
    GEN_PROFILE_BIN const *bin() const { return m_bin; }
    GEN_PROFILE_BIN const *operator->() const { return m_bin; }

private:
    static bool take_over(GEN_PROFILER const &other)
    {
        if (!other.m_is_orig)
            err_report_internal_error("other.m_is_orig", "GEN", "h/gen_profile_bins_sys.h", __LINE__);
        other.m_is_orig = false;
        return true;
    }

    mutable bool m_is_orig; // changed in the guard that a copy takes over from
    char const *m_name;
    GEN_PROFILE_BIN const *m_bin;
};

#endif
