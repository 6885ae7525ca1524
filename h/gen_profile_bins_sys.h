// Profile bins: time and memory of a process, measured for each named stage of a flow.
//
// ```cpp
// #include "gen_profile_bins_sys.h"
//
// void place()
// {
//     GEN_PROFILER const bin("FIT", "Place", GEN_PB_FLAG_RECORD); // opens the bin; the destructor closes it
//     // ... the work of the stage
// }
//
// int main()
// {
//     GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false); // opens the root "Fitter"
//     place();                                                                            // the bin "Fitter/Place"
//     GEN_PROFILE_BINS::finalize("fitter", /*close_root=*/true);
// }
// ```
//
// If the configuration key gen_print_profile_bins is on, this program writes "profile_bins_fitter.log" to the current
// directory.
//
// The bins form a tree below one root. Each bin accumulates wall-clock time, CPU time, an estimate of wall-clock time
// and memory, and finalize() writes the tree to a log.
//
// There is one tree in a process. It belongs to the thread that called GEN_PROFILE_BINS::initialize(). Calls on other
// threads, and calls before initialize() or after finalize(), return at once without effect; finalize() itself is the
// exception, see there. No lock is taken. If the messages of the bins are redirected to a function of the tool
// (mem_msg_redirect()), opens and closes inside that function have no effect either. It must not throw: the bin whose
// message it receives would be left half open or half closed.
//
// A misuse is an internal error in a development build. In a customer build (gen_debug_is_customer_build()) it silently
// disables the bins until the process ends, so that profiling never stops a customer's flow.
#ifndef GEN_PROFILE_BINS_SYS_H
#define GEN_PROFILE_BINS_SYS_H

#include "err_sys.h"
#include "zel_export_sys.h"

#include <string>
#include <vector>

/// Flags of an open. 0 opens no bin: this open and all opens and closes up to its matching close are ignored.
enum GEN_PB_FLAGS : unsigned
{
    GEN_PB_FLAG_RECORD = 1,        ///< a plain bin: its events are buffered, and it emits no messages
    GEN_PB_FLAG_ANNOUNCE = 0x100,  ///< a message is emitted when the bin is opened and when it is closed
    GEN_PB_FLAG_IMMEDIATE = 0x200, ///< the open is processed at once and returns the bin
    GEN_PB_FLAG_ALL = 0x7fffffff   ///< all of the above
};

/// Selectors of GEN_PROFILE_BIN::get_metric(). The last four need a closed bin: an open one is the internal error
/// "m_open_count == 0".
enum GEN_PB_METRIC : unsigned
{
    GEN_PB_METRIC_WC = 1,               ///< wall-clock seconds
    GEN_PB_METRIC_CPU = 2,              ///< CPU seconds of all threads of the process
    GEN_PB_METRIC_CPU_ERRORS = 0x10000, ///< number of intervals in which the CPU clock went backward
    GEN_PB_METRIC_WC_ERRORS = 0x20000,  ///< number of intervals in which the wall clock went backward
    GEN_PB_METRIC_START_MEM = 4,        ///< MiB at the first open, as in the report
    GEN_PB_METRIC_END_MEM = 8,          ///< MiB at the last close, as in the report
    GEN_PB_METRIC_PEAK_MEM = 16,        ///< MiB at the peak, as in the report
    GEN_PB_METRIC_WC_EST = 0x40000      ///< estimated wall-clock seconds, as in the report
};

/// One bin. An open creates it, and GEN_PROFILE_BINS::finalize() deletes it; the caller never owns it. Each name exists
/// once below a parent: all opens of that name there add to the same bin.
class GEN_API GEN_PROFILE_BIN
{
public:
    GEN_PROFILE_BIN();
    GEN_PROFILE_BIN(GEN_PROFILE_BIN const &other);
    GEN_PROFILE_BIN &operator=(GEN_PROFILE_BIN const &other) = default;

    /// Closes this bin, which must be the innermost open one. Otherwise it is the internal error "GEN_PROFILE_BINS:
    /// Unable to close bin ..."; both bins are named.
    virtual void close() = 0;

    /// One metric of this bin.
    ///
    /// @param metric      a value of GEN_PB_METRIC; any other value is the internal error "unknown metric"
    /// @param cumulative  true for the sum of all intervals from an open to its close, false for the last interval.
    ///                    For an open bin the current interval is added to the sum, and is the last interval
    ///
    /// @return the value; -1.0 on a thread that doesn't own the bins
    virtual double get_metric(unsigned metric, bool cumulative) const = 0;

    /// The names from `root` down to this bin, joined by "/". A bin with an empty name adds neither a name nor a
    /// separator. Empty on a thread that doesn't own the bins.
    ///
    /// @param root  this bin or one of its ancestors, otherwise the internal error "m_parent"; null means the root bin
    ///
    ///     Fitter/Place/Annealing with the root "Place" -> "Place/Annealing"
    virtual std::string get_path(GEN_PROFILE_BIN const *root) const = 0;

    /// As get_path(root), joined by `separator`, which is not null.
    virtual std::string get_path(char const *separator, GEN_PROFILE_BIN const *root) const = 0;

    /// Appends the names from `root` down to this bin to `result`, empty ones too; `root` as for get_path(). Does
    /// nothing on a thread that doesn't own the bins.
    virtual void get_path_names(std::vector<std::string> *result, GEN_PROFILE_BIN const *root) const = 0;

    /// Writes the report of this bin and of all bins below it. If this bin is open, or the file can't be opened, a
    /// debug message reports it and nothing is written. If the file can't be written to its end, it contains the
    /// beginning, and an information message names it with the reason.
    ///
    /// @param file          name of the file; null writes the report as debug messages
    /// @param collect_tags  whether to collect the bins with a tag for the tagged report; no effect if `file` is null
    virtual void dump(char const *file, bool collect_tags) = 0;

    /// CPU seconds of the last interval; same as get_metric(GEN_PB_METRIC_CPU, false).
    double get_last_cpu_sec() const;
    /// Wall-clock seconds of the last interval; same as get_metric(GEN_PB_METRIC_WC, false).
    double get_last_wc_sec() const;

protected:
    virtual ~GEN_PROFILE_BIN();
};

/// The bins of the process.
///
/// Opens and closes without GEN_PB_FLAG_ANNOUNCE and GEN_PB_FLAG_IMMEDIATE are stored in a buffer of ten events and
/// processed later. The texts that are given to an open or a close are not copied into the buffer: they must
/// stay valid until ten more events have followed, and the name of an open with flags 0 until its close. Literals are
/// best.
class GEN_PROFILE_BINS
{
public:
    /// Binds the bins to the calling thread, reads the configuration and opens the root.
    ///
    /// @param name            name of the root; the built-in ratio rules apply if it is "Fitter"
    /// @param primary         whether this is the main process of the flow, which writes the report if the
    ///                        configuration requests it
    /// @param debug_messages  whether to calibrate the cost of an open and a close even if no report is requested
    ///
    /// A second call without finalize() between is the internal error "GEN_PB_IMPL::get_root_bin() == 0LL".
    GEN_API static void initialize(char const *name, bool primary, bool debug_messages);

    /// Opens a bin inside the innermost open one.
    ///
    /// @param code_prefix  the sender of the bin's messages
    /// @param name         name of the bin; not null. "::" in it is replaced by "->". An empty name makes a new bin at
    ///                     each open, which appears in no path and no report
    /// @param flags        bits of GEN_PB_FLAGS; 0 ignores all opens and closes up to the matching close
    ///
    /// @return the bin if GEN_PB_FLAG_IMMEDIATE is set. Null without that flag, since the bin may not exist yet, and
    ///         null if the open has no effect (ignored, or on a thread that doesn't own the bins)
    ///
    /// An open with the name of the innermost open bin makes no new bin: it is counted, and needs its own close.
    GEN_API static GEN_PROFILE_BIN const *open(char const *code_prefix, char const *name, unsigned flags);

    /// open() with a tag: the subject to which the tagged report adds the cost of the bin. Null means no tag. The first
    /// open of a bin sets its tag.
    GEN_API static GEN_PROFILE_BIN const *open_with_tag(char const *code_prefix, char const *name, unsigned flags,
                                                        char const *tag);

    /// open_with_tag() with a step label; null means no label. A bin with a label is a numbered step of the flow. With
    /// GEN_PB_FLAG_ANNOUNCE its start and end are reported to the user as information messages.
    GEN_API static GEN_PROFILE_BIN const *open_with_user_tag(char const *code_prefix, char const *name, unsigned flags,
                                                             char const *tag, char const *user_tag);

    /// Closes the innermost open bin.
    ///
    /// @param name  the name of that bin, or null for no check. Another name is the internal error "Can't close bin",
    ///              and a close without an open bin is "bin != 0LL". A buffered close reports them when the buffer is
    ///              processed
    GEN_API static void close(char const *name);

    /// Closes the innermost open bins, up to and including `bin`, which must be open. All of them must have been opened
    /// with GEN_PB_FLAG_IMMEDIATE.
    GEN_API static void close_recursively(GEN_PROFILE_BIN const *bin);

    /// Writes the reports, if they are requested, and deletes all bins.
    ///
    /// @param name        the name in "profile_bins_<name>.log", which is written to the current directory
    /// @param close_root  whether to close the root first. A bin that is still open is the internal error
    ///                    "GEN_PB_IMPL::get_current_bin() == 0LL"
    ///
    /// A call on any other thread than that of initialize(), or without initialize(), is the internal error
    /// "l_gen_pb_thread == thr_thread_self()". After finalize() the bins can be initialised again.
    GEN_API static void finalize(char const *name, bool close_root);

    /// Closes all open bins, then calls finalize(name, false).
    GEN_API static void force_finalize(char const *name);

    /// Makes finalize() write no report. The call must follow initialize(), which sets this anew. Any thread may call
    /// it.
    GEN_API static void disable_process_log();

    /// Sets a text for the file names of the reports: it follows the name after an underscore. Empty means none. One
    /// thread at a time may call it.
    GEN_API static void set_process_log_suffix(std::string const &suffix);

    /// Adds a rule for the estimate of wall-clock time: bins whose path matches the pattern are assumed to use `ratio`
    /// CPU seconds in a second of wall-clock time. The rule applies to bins that are created later.
    ///
    /// @param pattern  names from the root down, separated by "/"; "*" matches any number of names, also none. Not null
    /// @param ratio    CPU seconds per wall-clock second, greater than 0; not checked
    ///
    /// If a bin matches more than one rule, its estimate is about 0 and debug messages list the rules. Any thread may
    /// call it while no other thread uses the bins.
    ///
    ///     "Fitter/*/Annealing" matches Fitter/Annealing and Fitter/Place/Annealing
    GEN_API static void set_cpu_to_wc_estimated_ratio(char const *pattern, double ratio);

    /// Always reports the internal error "Recompile zel/gen with USE_TRACQ=1 ...", since this system has no hooks that
    /// pause and resume an external profiler when bins open and close.
    GEN_API static void check_make_tracq_equal_1_performed();

    /// The text last given to set_process_log_suffix().
    GEN_API static std::string s_log_file_suffix;
};

/// The innermost open bin after all events that have been processed; events in the buffer don't count. Null if there is
/// none, as before the first open and after finalize(). In a customer build it stays the same after a fault.
///
/// Any thread may call it, and gets the bin of the moment. The bin itself may be used on the thread that owns the bins
/// alone, which may delete it at any time.
GEN_API GEN_PROFILE_BIN const *gen_profile_bin_get_current_bin();

/// Reports the sizes of the suite's libraries and the memory of the process as debug messages. Each configuration key
/// enables a part, and all are off by default:
///
///     profile_dll_usage    the bytes on disk of the libraries in the module's directory: those that are loaded in this
///                          process, and those that are not
///     list_dll_details     if profile_dll_usage is on, one line for each loaded library
///     report_modules_flow  the memory of the process in bytes: allocated, resident now, largest resident so far
///
/// @param tool   label of the process; its first ten characters are printed. Not null
/// @param point  label of the moment in the flow; null means "start"
///
/// Any thread may call it.
GEN_API void gen_meminfo_report_dll_usage(char const *tool, char const *point);

/// Opens a bin in its constructor and closes it in its destructor.
class GEN_PROFILER
{
public:
    /// Opens a bin; see GEN_PROFILE_BINS::open_with_user_tag(). The texts must stay valid until ten more events have
    /// followed the end of the guard.
    GEN_PROFILER(char const *code_prefix, char const *name, unsigned flags, char const *tag = nullptr,
                 char const *user_tag = nullptr)
        : m_is_orig(true), m_name(name),
          m_bin(user_tag == nullptr ? GEN_PROFILE_BINS::open_with_tag(code_prefix, name, flags, tag)
                                    : GEN_PROFILE_BINS::open_with_user_tag(code_prefix, name, flags, tag, user_tag))
    {
    }

    /// Takes over the duty to close the bin; the destructor of `other` then does nothing. A second copy of `other` is
    /// the internal error "other.m_is_orig". The name is not copied: this guard closes the innermost open bin without
    /// a check.
    GEN_PROFILER(GEN_PROFILER const &other) : m_is_orig(take_over(other)), m_name(nullptr), m_bin(other.m_bin) {}

    GEN_PROFILER &operator=(GEN_PROFILER const &) = delete;

    /// Closes the bin, unless a copy has taken over. An exception of the close, such as a lack of memory, ends here.
    ~GEN_PROFILER()
    {
        try {
            if (m_is_orig)
                GEN_PROFILE_BINS::close(m_name);
        } catch (...) { // a destructor that lets it out would end the process
        }
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

    mutable bool m_is_orig; // whether the destructor closes the bin; a copy sets it to false in its original
    char const *m_name;
    GEN_PROFILE_BIN const *m_bin;
};

#endif
