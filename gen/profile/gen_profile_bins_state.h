// The state of the profile bins, all of it in one structure, and what every file needs to use it: whether a call may go
// on, and how a fault ends. A group belongs to the file that its comment names: only that file writes its members,
// unless the comment of a member names another one.
//
// The files of the profile bins lie on floors; each one includes and calls only files further down in this list:
//
//     gen_profile_bins             initialize, open, close, finalize; the public operations of a bin
//     _mem, gen_cookie             listeners: the logs that are written as bins open and close, and at the end
//     _report                      the reports of a run
//     _tagged                      the tree of the tagged report
//     _events                      from the call of an open or a close to the tree
//     _tree                        the effect of an open or a close in the tree
//     _messages                    the lines of announced bins and of the trace
//     _estimate                    calibration, report values and estimates
//     _ratios                      the ratio rules and the bins that match them
//     _bin                         one bin: its children and its path
//     _listener                    the register of the listeners
//     _state, _metrics             the state and the figures
#ifndef GEN_PROFILE_BINS_STATE_H
#define GEN_PROFILE_BINS_STATE_H

#include "gen/profile/gen_profile_bins_metrics.h"
#include "gen_profile_bins_sys.h"
#include "sys/os/sys_os_thread.h"
#include "sys/sys_process.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

class GEN_PB_IMPL;
class GEN_PB_LISTENER;

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

/// CPU seconds in a second of wall-clock time, known for the bins whose path matches.
struct GEN_PB_RATIO_RULE
{
    std::string m_pattern;
    std::vector<std::string> m_segments; ///< the pattern, split at each "/"
    double m_ratio;
    std::size_t m_first_place; ///< number of the place before the first segment; see GEN_PB_RATIO_STATE
};

/// How far the names of a path, from the top of the tree on, lead into each pattern. A pattern has a place before each
/// segment and one at its end; the places of all patterns are numbered in order. Bins share equal states.
struct GEN_PB_RATIO_STATE
{
    std::size_t m_rule_count; ///< the rules that existed
    std::vector<bool> m_places;
    std::vector<std::size_t> m_matches; ///< the rules whose end is among the places, in order

    bool operator<(GEN_PB_RATIO_STATE const &other) const
    {
        return m_rule_count != other.m_rule_count ? m_rule_count < other.m_rule_count : m_places < other.m_places;
    }
};

constexpr std::int64_t GEN_PB_NO_THREAD = 0;
constexpr std::int64_t GEN_PB_DISABLED = -1;

/// All of it belongs to the thread that owns the bins, except the atomics.
struct GEN_PB_STATE
{
    /// One run, from initialize to finalize: gen_profile_bins.
    struct Run
    {
        std::atomic<std::int64_t> thread{GEN_PB_NO_THREAD}; ///< the thread that owns the bins; faults write it too
        std::atomic<bool> print_log{false};                 ///< write the report files at finalize
        bool debug = false;                                 ///< trace to the standard error stream
        bool show_ignored = false;                          ///< warn about each dropped open
        bool checks_names = false;                          ///< a bin's own close() passes its name
        bool busy = false;                                  ///< a GEN_PB_BUSY exists, which writes it
    } run;

    /// Events on their way to the tree: _events.
    struct Intake
    {
        std::uint32_t level_flags = GEN_PB_FLAG_ALL; ///< of the last open; 0 while ignoring; _tree sets it at a close
        std::int32_t ignored_depth = 0;
        char const *ignored_name = nullptr; ///< the open that started ignoring
        std::int32_t debug_depth = 0;
        std::uint32_t full_count = 0;      ///< how often the buffer became full
        std::uint32_t ignored_count = 0;   ///< opens with flags that were dropped while ignoring
        std::uint32_t immediate_count = 0; ///< opens with GEN_PB_FLAG_IMMEDIATE
        std::size_t event_count = 0;
        std::array<GEN_PB_EVENT, GEN_PB_EVENT_LIMIT> events{};
    } intake;

    /// The bins: _tree, which owns them from their creation to finalize.
    struct Tree
    {
        GEN_PB_IMPL *root = nullptr;
        /// The innermost bin that the processed events left open. Any thread may read the pointer.
        std::atomic<GEN_PB_IMPL *> current{nullptr};
        /// Bins that were opened when no bin was open, although there was a root. Nothing else leads to them.
        std::vector<GEN_PB_IMPL *> strays;
        /// Makes an empty bin. gen_profile_bins sets it: the public operations of a bin use all files, so that only
        /// the topmost one can define the class of the bins.
        std::unique_ptr<GEN_PB_IMPL> (*make_bin)() = nullptr;
    } tree;

    /// The objects that are called: _listener.
    struct Listeners
    {
        std::vector<GEN_PB_LISTENER *> at_bins; ///< at opens, closes and steps
        std::vector<GEN_PB_LISTENER *> at_end;  ///< at the end of a run, before and after the bins are deleted
    } listeners;

    /// The results of the calibration: _estimate.
    struct Estimate
    {
        std::int64_t wc_frequency = 1; ///< ticks per second
        /// The cost of an open and a close, in the units of each metric: the part inside the bin, and the whole as the
        /// enclosing bin sees it. Zero until they are calibrated.
        GEN_PB_METRICS internal_overhead;
        GEN_PB_METRICS external_overhead;
    } estimate;

    /// The ratio rules, and how far the bins match them: _ratios.
    struct Ratios
    {
        std::vector<GEN_PB_RATIO_RULE> rules; ///< in order of addition; never emptied
        std::set<GEN_PB_RATIO_STATE> states;  ///< those of the bins, which refer to them
    } ratios;

    /// The dumps that are running: _report. A dump within one of its own kind is a fault.
    struct Report
    {
        bool writes_file = false;
        bool writes_debug = false;
    } report;
};

/// Holds an object that no exit destroys, since other libraries may open bins and log cookies after the release of this
/// library's statics. An unload destroys it.
template <typename Object>
union GEN_PB_KEPT
{
    Object object;

    GEN_PB_KEPT() : object() {}
    ~GEN_PB_KEPT()
    {
        if (sys_is_unloading())
            object.~Object();
    }
    GEN_PB_KEPT(GEN_PB_KEPT const &) = delete;
    GEN_PB_KEPT &operator=(GEN_PB_KEPT const &) = delete;
};
extern GEN_PB_KEPT<GEN_PB_STATE> gen_pb_kept_state;

/// The state.
inline GEN_PB_STATE &gen_pb()
{
    return gen_pb_kept_state.object;
}

/// Whether the calling thread owns the bins.
inline bool gen_pb_is_own_thread()
{
    return gen_pb().run.thread.load(std::memory_order_relaxed) == sys_thread_self();
}

/// Whether an open, a close or a finalize may go on: on the thread that owns the bins, and not from inside a message of
/// the bins, whose receiver must not change the tree.
inline bool gen_pb_may_change_tree()
{
    return gen_pb_is_own_thread() && !gen_pb().run.busy;
}

/// Sets a flag, and puts the former value back at the end of the scope.
class GEN_PB_SCOPED_FLAG
{
public:
    explicit GEN_PB_SCOPED_FLAG(bool &flag) : m_flag(flag), m_former(flag) { flag = true; }
    ~GEN_PB_SCOPED_FLAG() { m_flag = m_former; }
    GEN_PB_SCOPED_FLAG(GEN_PB_SCOPED_FLAG const &) = delete;
    GEN_PB_SCOPED_FLAG &operator=(GEN_PB_SCOPED_FLAG const &) = delete;

private:
    bool &m_flag;
    bool m_former;
};

/// While one exists, the tree is being changed, or a message of the bins is being sent.
class GEN_PB_BUSY : public GEN_PB_SCOPED_FLAG
{
public:
    GEN_PB_BUSY() : GEN_PB_SCOPED_FLAG(gen_pb().run.busy) {}
};

/// Switches the bins off for the rest of the process.
void gen_pb_disable();
/// Reports an internal error. In a customer build it reports nothing, switches the bins off and returns.
void gen_pb_fail(char const *text, char const *file, int line);
/// Whether a condition holds; if not, gen_pb_fail().
#define GEN_PB_CHECK(condition, text) ((condition) || (gen_pb_fail((text), __FILE__, __LINE__), false))

/// Null texts are not allowed in an open; they count as empty ones.
inline char const *gen_pb_text_or_empty(char const *text)
{
    return text == nullptr ? "" : text;
}

inline double gen_pb_seconds_of_ticks(std::int64_t ticks)
{
    return static_cast<double>(ticks) / static_cast<double>(gen_pb().estimate.wc_frequency);
}

#endif
