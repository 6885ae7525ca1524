// The insides of the profile bins: the one implementation of a bin, the events of the buffer and the state that all
// sources of the profile bins share.
//
// A call of open or close makes an event with two clock readings and puts it into a buffer of ten; the tenth event, or
// an open with other flags than the last, flushes the buffer into the tree. An open with GEN_PB_FLAG_IMMEDIATE, and the
// close after it, are processed at once.
#ifndef GEN_PROFILE_BINS_IMPL_H
#define GEN_PROFILE_BINS_IMPL_H

#include "gen/time/gen_clocks.h"
#include "gen/os/gen_os_thread.h"
#include "gen_profile_bins_sys.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Indices into GEN_PB_METRICS. The clocks come first.
enum GEN_PB_METRIC_INDEX : std::size_t
{
    GEN_PB_WC,        ///< ticks of gen_get_hires_ticks()
    GEN_PB_CPU,       ///< nanoseconds
    GEN_PB_WC_EST,    ///< nanoseconds, measured from the CPU clock
    GEN_PB_START_MEM, ///< bytes
    GEN_PB_END_MEM,   ///< bytes
    GEN_PB_PEAK_MEM,  ///< bytes
    GEN_PB_METRIC_COUNT
};
constexpr std::size_t GEN_PB_CLOCK_COUNT = 3;

/// One reading of each metric, in the size of a cache line.
struct GEN_PB_METRICS
{
    std::array<std::int64_t, GEN_PB_METRIC_COUNT> m_values{};
    std::array<std::uint32_t, GEN_PB_CLOCK_COUNT> m_errors{}; ///< how often each clock went backward

    /// Adds the clocks of `other`, values `factor` times and errors once.
    void add_clocks(GEN_PB_METRICS const &other, std::int64_t factor = 1);
    /// Subtracts the values of the clocks of `other`; the errors add up all the same.
    void subtract_clocks(GEN_PB_METRICS const &other);
    /// Negative clocks become 0.
    void clamp_clocks();
};

/// The one implementation of a bin. It owns its children.
class GEN_PB_IMPL final : public GEN_PROFILE_BIN
{
public:
    GEN_PB_IMPL() = default;
    ~GEN_PB_IMPL() override;
    GEN_PB_IMPL(GEN_PB_IMPL const &) = delete;
    GEN_PB_IMPL &operator=(GEN_PB_IMPL const &) = delete;

    void close() override;
    double get_metric(unsigned metric, bool cumulative) const override;
    std::string get_path(GEN_PROFILE_BIN const *root) const override;
    std::string get_path(char const *separator, GEN_PROFILE_BIN const *root) const override;
    void get_path_names(std::vector<std::string> *result, GEN_PROFILE_BIN const *root) const override;
    void dump(char const *file, bool collect_tags) override;

    static GEN_PB_IMPL *get_root_bin();
    static GEN_PB_IMPL *get_current_bin();

    /// The child of that name, which is not empty; null if there is none.
    GEN_PB_IMPL *find_child(std::string_view name) const;
    void add_child(GEN_PB_IMPL *child);
    /// Drops the children whose parent is another bin by now; that bin owns them.
    void drop_moved_children();

    /// The bins from `root` (null: the root bin) down to this one; empty, after an internal error, if `root` does not
    /// stand above this bin.
    std::vector<GEN_PB_IMPL const *> bins_down_from(GEN_PROFILE_BIN const *root) const;

    /// Brings m_report, m_report_overhead and m_self up to date, here and below. False if that can't be done since a
    /// bin is open, which is an internal error.
    bool compute_report() const;

    // What an open and a close touch stands together.
    std::string m_name;
    GEN_PB_IMPL *m_parent = nullptr;
    std::uint32_t m_count = 0;
    std::uint32_t m_open_count = 0;
    std::uint32_t m_flags = 0;
    mutable bool m_computed = false; ///< the cache below is valid
    GEN_CLOCKS m_start;              ///< of the last open
    GEN_PB_METRICS m_last;           ///< interval of the last close
    GEN_PB_METRICS m_total;          ///< all intervals

    std::vector<GEN_PB_IMPL *> m_children; ///< owned, in order of first opening
    GEN_PB_METRICS m_overhead;
    std::string m_code_prefix;
    std::string m_tag;
    std::string m_user_tag;
    std::string m_step;
    std::uint32_t m_child_steps = 0;
    double m_wc_est_factor = 0.0; ///< 0.0: no ratio rule applies

    // A cache of what follows from m_total, m_overhead and the children.
    mutable GEN_PB_METRICS m_report;
    mutable GEN_PB_METRICS m_report_overhead;
    mutable GEN_PB_METRICS m_self;

private:
    double selected_metric(unsigned metric, GEN_PB_METRICS const &metrics) const;
    void write_file_report(char const *file, bool collect_tags);
    void write_debug_report();

    /// Children by name, once there are too many to look through; the keys point into the children.
    std::unique_ptr<std::unordered_map<std::string_view, GEN_PB_IMPL *>> m_child_index;
};

/// The names of bins from the top down, joined; an empty name shows nothing, not even a separator.
std::string gen_pb_join_names(std::vector<GEN_PB_IMPL const *> const &bins, char const *separator);

enum GEN_PB_EVENT_TYPE : std::uint32_t
{
    GEN_PB_EVENT_OPEN,
    GEN_PB_EVENT_CLOSE
};

/// One open or close. The texts are the caller's own.
struct GEN_PB_EVENT
{
    GEN_CLOCKS m_clocks;
    char const *m_code_prefix; ///< null for a close
    char const *m_name;        ///< as the caller gave it; null for a close without a name
    char const *m_user_tag;
    char const *m_tag;
    GEN_PB_EVENT_TYPE m_type;
    std::uint32_t m_flags; ///< of a close: the level flags at that moment
};
constexpr std::size_t GEN_PB_EVENT_LIMIT = 10;

constexpr std::int64_t GEN_PB_NO_THREAD = 0;
constexpr std::int64_t GEN_PB_DISABLED = -1;

/// What the sources of the profile bins share. All of it belongs to the bound thread but the atomics.
struct GEN_PB_STATE
{
    std::atomic<std::int64_t> m_thread{GEN_PB_NO_THREAD}; ///< the thread that owns the bins
    std::atomic<bool> m_print_log{false};                 ///< write the report files at finalize
    bool m_debug = false;                                 ///< trace to the standard error stream
    bool m_show_ignored = false;                          ///< warn about each dropped open
    bool m_checks_names = false;                          ///< a bin's own close() passes its name
    bool m_busy = false;                                  ///< a GEN_PB_BUSY lives
    std::uint32_t m_level_flags = GEN_PB_FLAG_ALL;        ///< of the last open; 0 while ignoring
    std::int32_t m_ignored_depth = 0;
    char const *m_ignored_name = nullptr; ///< the open that started ignoring
    std::int32_t m_debug_depth = 0;
    std::uint32_t m_full_count = 0;      ///< how often the buffer became full
    std::uint32_t m_ignored_count = 0;   ///< opens with flags that were dropped while ignoring
    std::uint32_t m_immediate_count = 0; ///< opens with GEN_PB_FLAG_IMMEDIATE
    std::size_t m_event_count = 0;
    std::array<GEN_PB_EVENT, GEN_PB_EVENT_LIMIT> m_events{};
    GEN_PB_IMPL *m_root = nullptr;    ///< owned; from initialize to finalize
    GEN_PB_IMPL *m_current = nullptr; ///< the innermost bin that the processed events left open
    std::int64_t m_wc_frequency = 1;  ///< ticks per second, set by the calibration
};
extern GEN_PB_STATE s_gen_pb;

/// Whether the calling thread owns the bins.
inline bool gen_pb_is_own_thread()
{
    return s_gen_pb.m_thread.load(std::memory_order_relaxed) == gen_os_thread_self();
}

/// Whether an open, a close or a finalize may go on: on the own thread, and not from inside a message of the bins,
/// whose receiver must not change the tree.
inline bool gen_pb_takes_calls()
{
    return gen_pb_is_own_thread() && !s_gen_pb.m_busy;
}

/// While one lives, the tree is being worked on, or a message of the bins is being told.
class GEN_PB_BUSY
{
public:
    GEN_PB_BUSY() : m_former(s_gen_pb.m_busy) { s_gen_pb.m_busy = true; }
    ~GEN_PB_BUSY() { s_gen_pb.m_busy = m_former; }
    GEN_PB_BUSY(GEN_PB_BUSY const &) = delete;
    GEN_PB_BUSY &operator=(GEN_PB_BUSY const &) = delete;

private:
    bool m_former;
};

/// The bins fall silent for the rest of the process.
void gen_pb_disable();
/// Whether the configuration selects bins of that name, as the caller gave it, for detailed memory logs.
bool gen_pb_is_selected_for_logs(char const *name);
/// An internal error; in a customer build the bins are disabled instead, without a word, and the call returns.
void gen_pb_fail(char const *text, char const *file, int line);
/// Whether a condition holds; if not, gen_pb_fail().
#define GEN_PB_CHECK(condition, text) ((condition) || (gen_pb_fail((text), __FILE__, __LINE__), false))

// gen_profile_bins_bin.cpp

/// The names from the top of the tree down to the current bin; empty without one, and on a thread that doesn't own the
/// bins.
std::vector<std::string> gen_pb_current_path();

// gen_profile_bins_events.cpp

/// Processes the buffered events and charges the cost to the bin that is current afterwards.
void gen_pb_flush();
/// Deletes every bin. False, after an internal error, if one is open.
bool gen_pb_delete_bins();

// gen_profile_bins_estimate.cpp

/// Reads the tick frequency; with `run` measures what an open and a close cost.
void gen_pb_calibrate(bool run);
/// Appends the ratio rules that are known for the suite's flows.
void gen_pb_add_builtin_ratio_rules();
/// Sets m_wc_est_factor of a new bin, whose place in the tree and name are set.
void gen_pb_apply_ratio_rules(GEN_PB_IMPL &bin);

// gen_profile_bins_report.cpp

/// Writes the report files of finalize().
void gen_pb_write_reports(char const *name);

// gen_profile_bins_tagged.cpp

/// Notes a bin with a tag for the tagged report; children come before their parents.
void gen_pb_note_tagged_bin(GEN_PB_IMPL &bin);
/// Moves the noted bins into a subtree for each tag. False if there is none; the tree is as it was then.
bool gen_pb_build_tag_tree();
/// Forgets the noted bins, as the bins are about to be deleted.
void gen_pb_forget_tagged_bins();

// gen_profile_bins_mem.cpp

/// The key of the stage logs, read at the first question and kept.
bool gen_pb_mem_profile_enabled();
/// Builds the table of the flow's stages.
void gen_pb_init_flow_stages();
/// Looks whether a bin of that path, joined by "::", begins the next stage, and if so writes the logs of the one
/// before.
void gen_pb_check_flow_stage(std::string const &path);
/// Writes the logs of the present stage.
void gen_pb_dump_stage_logs();
/// Starts the detailed tracking of a selected bin.
void gen_pb_start_detailed_tracking(char const *name);
/// Ends it and writes the bin's logs.
void gen_pb_dump_detailed_logs(GEN_PB_IMPL const &bin);

/// Readings of the clocks in seconds.
inline double gen_pb_seconds_of_ticks(std::int64_t ticks)
{
    return static_cast<double>(ticks) / static_cast<double>(s_gen_pb.m_wc_frequency);
}
inline double gen_pb_seconds_of_nsec(std::int64_t nsec)
{
    return static_cast<double>(nsec) / 1e9;
}

/// Bytes in MiB by double precision.
inline double gen_pb_mib(std::int64_t bytes)
{
    return static_cast<double>(bytes) * (1.0 / 1024) * (1.0 / 1024);
}

#endif
