// The road of an open or a close from the caller into the tree.
//
// The level flags are those of the last open. While consecutive opens have equal flags without the immediate bit, their
// events and those of the closes between them wait in the buffer; its tenth event flushes it. Another open's flags
// flush first, and the immediate bit leads straight into the tree. A close takes the level flags, so the close after an
// immediate open is immediate too, and the processed close sets the level back to the parent's flags.
//
//     open A 1, close, open B 1, close, ...   five pairs wait, the tenth event takes all of them into the tree
//     open A 1, open B ALL                    A is processed, then B at once: the call returns B
//     open A 0, open B 1, close, close        nothing: ignored until the close of A
#include "gen/profile/gen_profile_bins_impl.h"

#include "err_sys.h"
#include "gen/base/gen_message.h"
#include "gen_time_sys.h"
#include "mem_sys.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::int64_t NO_MEMORY = -1; // no value yet

// Bins that were opened when no bin was open, although there was a root: nothing else leads to them. Owned.
std::vector<GEN_PB_IMPL *> l_stray_bins;

// A name as the tree has it: "::" reads as "->". Most names have none and are not copied; then `copy` stays empty.
// Names are short: one pass for the separator and the length beats two library calls.
std::string_view normal_name(char const *name, std::string &copy)
{
    std::size_t length = 0;
    while (name[length] != '\0' && (name[length] != ':' || name[length + 1] != ':'))
        ++length;
    if (name[length] == '\0')
        return std::string_view(name, length);
    copy = name;
    for (std::size_t at = length; at != std::string::npos; at = copy.find("::", at + 2))
        copy.replace(at, 2, "->");
    return copy;
}

// The figures of messages are in single precision, widened for printing.
double mib_of_message(std::size_t bytes)
{
    constexpr float PER_STEP = 1.0F / 1024;
    float const mib = static_cast<float>(bytes) * PER_STEP * PER_STEP;
    return static_cast<double>(mib);
}

// Null texts are not allowed; they count as empty ones.
char const *text_or_empty(char const *text)
{
    return text == nullptr ? "" : text;
}

int trace_indentation()
{
    return 3 * std::max(s_gen_pb.m_debug_depth, 0);
}

// The nearest bin above `bin` that has a step label; null if there is none.
GEN_PB_IMPL *labelled_ancestor(GEN_PB_IMPL const &bin)
{
    GEN_PB_IMPL *above = bin.m_parent;
    while (above != nullptr && above->m_user_tag.empty())
        above = above->m_parent;
    return above;
}

void number_step(GEN_PB_IMPL &bin)
{
    if (GEN_PB_IMPL *const above = labelled_ancestor(bin))
        bin.m_step = above->m_step + '.' + std::to_string(++above->m_child_steps);
    else
        bin.m_step = std::to_string(++s_gen_pb.m_root->m_child_steps);
}

// Few runs select any bin; then no name is looked at.
bool is_selected_for_logs(GEN_PB_EVENT const &event)
{
    return s_gen_pb.m_checks_names && event.m_name != nullptr && gen_pb_is_selected_for_logs(event.m_name);
}

GEN_PB_IMPL *create_bin(GEN_PB_EVENT const &event, std::string_view name)
{
    auto bin = std::make_unique<GEN_PB_IMPL>();
    bin->m_parent = s_gen_pb.m_current;
    bin->m_name = name;
    bin->m_code_prefix = text_or_empty(event.m_code_prefix);
    if (event.m_tag != nullptr)
        bin->m_tag = event.m_tag;
    if (event.m_user_tag != nullptr)
        bin->m_user_tag = event.m_user_tag;
    bin->m_total.m_values[GEN_PB_START_MEM] = NO_MEMORY;
    bin->m_total.m_values[GEN_PB_PEAK_MEM] = NO_MEMORY;
    gen_pb_apply_ratio_rules(*bin);
    if (bin->m_parent != nullptr)
        bin->m_parent->add_child(bin.get());
    else if (s_gen_pb.m_root == nullptr)
        s_gen_pb.m_root = bin.get();
    else
        l_stray_bins.push_back(bin.get());
    if (!bin->m_user_tag.empty())
        number_step(*bin);
    return bin.release();
}

void announce_open(GEN_PB_IMPL const &bin)
{
    if (!bin.m_user_tag.empty()) {
        std::string const now = gen_get_iso_style_date_and_time(gen_get_current_time_seconds());
        GEN_ARGUMENT_SLOTS arguments(s_gen_pb.m_root->m_name, bin.m_step, bin.m_user_tag, now,
                                     mib_of_message(mem_info_get_process_peak_virtual_used()));
        mem_msg_local_vinfo(bin.m_code_prefix.c_str(), "Starting %s Step %s %s at %s (peak virtual memory %.3f MB)",
                            arguments.cursor());
    }
    if (!bin.m_name.empty()) {
        GEN_ARGUMENT_SLOTS arguments(bin.m_name, bin.m_count);
        mem_msg_local_vdebug(bin.m_code_prefix.c_str(), "### Opened profile bin '%s' (%d) ###", arguments.cursor());
    }
}

// Bytes that the memory tracker reports for one interval.
struct Memory
{
    std::size_t m_open = 0;
    std::size_t m_close = 0;
    std::size_t m_peak = 0;
};

void announce_close(GEN_PB_IMPL const &bin, Memory const &memory)
{
    if (!bin.m_name.empty()) {
        // The count of wall-clock errors in this line is always told as 1.
        GEN_ARGUMENT_SLOTS arguments(
            bin.m_name, bin.m_count, bin.get_last_cpu_sec(), bin.get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/true),
            static_cast<int>(bin.get_metric(GEN_PB_METRIC_CPU_ERRORS, /*cumulative=*/true)), bin.get_last_wc_sec(),
            bin.get_metric(GEN_PB_METRIC_WC, /*cumulative=*/true), 1,
            bin.get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/false), mib_of_message(memory.m_open),
            mib_of_message(memory.m_peak), mib_of_message(memory.m_close));
        mem_msg_local_vdebug(bin.m_code_prefix.c_str(),
                             "### Closed profile bin '%s' (%d) -- CPU time %.2fs (%.2fs total, %d errors); WC time "
                             "%.2fs (%.2fs total, %d errors); WCest time %.2fs total; Open %.2f MiB, Peak %.2f MiB, "
                             "Close %.2f MiB",
                             arguments.cursor());
    }
    if (!bin.m_user_tag.empty()) {
        std::string const now = gen_get_iso_style_date_and_time(gen_get_current_time_seconds());
        std::string const elapsed = gen_format_elapsed_sec(bin.get_last_wc_sec());
        GEN_ARGUMENT_SLOTS arguments(s_gen_pb.m_root->m_name, bin.m_step, bin.m_user_tag, now,
                                     mib_of_message(mem_info_get_process_peak_virtual_used()), elapsed);
        mem_msg_local_vinfo(bin.m_code_prefix.c_str(),
                            "  Ending %s Step %s %s at %s (peak virtual memory %.3f MB elapsed time: %s)",
                            arguments.cursor());
    }
}

// The root, or the stray bin that stands above.
GEN_PB_IMPL const &top_of(GEN_PB_IMPL const &bin)
{
    GEN_PB_IMPL const *top = &bin;
    while (top->m_parent != nullptr)
        top = top->m_parent;
    return *top;
}

void process_open(GEN_PB_EVENT const &event)
{
    std::string copy;
    std::string_view const name = normal_name(text_or_empty(event.m_name), copy);
    GEN_PB_IMPL *const current = s_gen_pb.m_current;
    GEN_PB_IMPL *bin = nullptr;
    if (current != nullptr && !name.empty()) {
        if (current->m_name == name) {
            ++current->m_open_count;
            return;
        }
        bin = current->find_child(name);
        if (bin != nullptr && bin->m_open_count != 0) {
            gen_say("Error: bin already open: %s", bin->get_path("/", nullptr));
            gen_pb_fail("Can't reopen bin", __FILE__, __LINE__);
            return;
        }
    }
    if (bin == nullptr)
        bin = create_bin(event, name);

    bin->m_start = event.m_clocks;
    ++bin->m_count;
    bin->m_open_count = 1;
    bin->m_flags = event.m_flags;
    bin->m_computed = false;
    if (!bin->m_name.empty()) {
        mem_open_profile_bin(bin->m_name, bin->m_tag);
        if (gen_pb_mem_profile_enabled())
            gen_pb_check_flow_stage(bin->get_path("::", &top_of(*bin)));
    }
    if (is_selected_for_logs(event))
        gen_pb_start_detailed_tracking(event.m_name);
    s_gen_pb.m_current = bin;
    if ((bin->m_flags & GEN_PB_FLAG_ANNOUNCE) != 0)
        announce_open(*bin);
}

// Sets a clock of m_last to its interval and adds it to m_total. A clock that went backward counts as an error, and its
// interval as 0.
void add_interval(GEN_PB_IMPL &bin, std::size_t clock, std::int64_t interval)
{
    bin.m_last.m_values[clock] = interval < 0 ? 0 : interval;
    bin.m_last.m_errors[clock] = interval < 0 ? 1 : 0;
    bin.m_total.m_values[clock] += bin.m_last.m_values[clock];
    bin.m_total.m_errors[clock] += bin.m_last.m_errors[clock];
}

void add_intervals(GEN_PB_IMPL &bin, GEN_PB_EVENT const &event)
{
    GEN_CLOCKS const passed = event.m_clocks - bin.m_start;
    add_interval(bin, GEN_PB_WC, passed.m_ticks);
    add_interval(bin, GEN_PB_CPU, passed.m_cpu_nsec);
    add_interval(bin, GEN_PB_WC_EST, passed.m_cpu_nsec);
}

Memory take_memory(GEN_PB_IMPL &bin)
{
    Memory memory;
    mem_close_profile_bin(bin.m_tag, &memory.m_open, &memory.m_close, &memory.m_peak);
    std::int64_t &start = bin.m_total.m_values[GEN_PB_START_MEM];
    std::int64_t &peak = bin.m_total.m_values[GEN_PB_PEAK_MEM];
    if (start == NO_MEMORY)
        start = static_cast<std::int64_t>(memory.m_open);
    bin.m_total.m_values[GEN_PB_END_MEM] = static_cast<std::int64_t>(memory.m_close);
    auto const interval_peak = static_cast<std::int64_t>(memory.m_peak);
    peak = peak == NO_MEMORY ? interval_peak : std::max(peak, interval_peak);
    return memory;
}

// Whether a name as the caller gave it is, letter by letter, the bin's; names are too short for a library call.
bool equals(char const *name, std::string const &bin_name)
{
    char const *at = bin_name.c_str();
    while (*at != '\0' && *at == *name) {
        ++at;
        ++name;
    }
    return *at == *name;
}

// Whether the event may close that bin: its name, if it has one, must be the bin's.
bool names_bin(GEN_PB_EVENT const &event, GEN_PB_IMPL const &bin)
{
    if (event.m_name == nullptr || equals(event.m_name, bin.m_name))
        return true;
    std::string copy;
    std::string_view const name = normal_name(event.m_name, copy);
    if (name == bin.m_name)
        return true;
    gen_say("Error: trying to close %s but open bin is %s", std::string(name), bin.get_path("/", nullptr));
    gen_pb_fail("Can't close bin", __FILE__, __LINE__);
    return false;
}

void process_close(GEN_PB_EVENT const &event)
{
    GEN_PB_IMPL *const bin = s_gen_pb.m_current;
    if (!GEN_PB_CHECK(bin != nullptr, "bin != 0LL") || !GEN_PB_CHECK(bin->m_open_count != 0, "bin->m_open_count") ||
        !names_bin(event, *bin))
        return;
    if (s_gen_pb.m_debug)
        std::fprintf(stderr, "%*son_close: open bin is '%s', asked to close '%s' with flags %x\n", trace_indentation(),
                     "", bin->m_name.c_str(), event.m_name == nullptr ? "NULL" : event.m_name, bin->m_flags);
    if (--bin->m_open_count != 0)
        return;

    bin->m_computed = false;
    add_intervals(*bin, event);
    Memory memory;
    if (!bin->m_name.empty())
        memory = take_memory(*bin);
    if (is_selected_for_logs(event))
        gen_pb_dump_detailed_logs(*bin);
    if ((bin->m_flags & GEN_PB_FLAG_ANNOUNCE) != 0)
        announce_close(*bin, memory);
    s_gen_pb.m_current = bin->m_parent;
    s_gen_pb.m_level_flags = bin->m_parent == nullptr ? std::uint32_t{GEN_PB_FLAG_ALL} : bin->m_parent->m_flags;
}

void process(GEN_PB_EVENT const &event)
{
    // A fault in a customer build silences what follows it.
    if (err_is_in_abnormal_exit() || s_gen_pb.m_thread.load(std::memory_order_relaxed) == GEN_PB_DISABLED)
        return;
    switch (event.m_type) {
    case GEN_PB_EVENT_OPEN:
        process_open(event);
        break;
    case GEN_PB_EVENT_CLOSE:
        process_close(event);
        break;
    default:
        gen_pb_fail("Unknown event type", __FILE__, __LINE__);
    }
}

void process_buffer()
{
    GEN_PB_BUSY const busy;
    for (std::size_t i = 0; i < s_gen_pb.m_event_count; ++i)
        process(s_gen_pb.m_events[i]);
    s_gen_pb.m_event_count = 0;
}

// Fills an event; the clocks come last.
inline void make_event(GEN_PB_EVENT &event, GEN_PB_EVENT_TYPE type, char const *code_prefix, char const *name,
                       std::uint32_t flags, char const *tag, char const *user_tag)
{
    event.m_code_prefix = code_prefix;
    event.m_name = name;
    event.m_user_tag = user_tag;
    event.m_tag = tag;
    event.m_type = type;
    event.m_flags = flags;
    event.m_clocks = gen_read_clocks();
}

[[gnu::noinline]] void flush_full()
{
    ++s_gen_pb.m_full_count;
    gen_pb_flush();
}

// An event of a plain bin is made where it waits. Null, as an open of such a bin returns; so the roads of the others
// stay free of what a call across the clock readings has to save.
[[gnu::noinline]] GEN_PROFILE_BIN const *push(GEN_PB_EVENT_TYPE type, char const *code_prefix, char const *name,
                                              std::uint32_t flags, char const *tag, char const *user_tag)
{
    make_event(s_gen_pb.m_events[s_gen_pb.m_event_count], type, code_prefix, name, flags, tag, user_tag);
    if (++s_gen_pb.m_event_count == GEN_PB_EVENT_LIMIT)
        flush_full();
    return nullptr;
}

// An immediate one goes into the tree behind whatever is buffered. The bin that is current then.
GEN_PROFILE_BIN const *push_immediate(GEN_PB_EVENT_TYPE type, char const *code_prefix, char const *name,
                                      std::uint32_t flags, char const *tag, char const *user_tag)
{
    GEN_PB_EVENT event;
    make_event(event, type, code_prefix, name, flags, tag, user_tag);
    gen_pb_flush();
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    GEN_PB_BUSY const busy;
    process(event);
    return s_gen_pb.m_current;
}

// Whether an open or a close at these flags asks for no more than to be buffered.
inline bool is_plain(std::uint32_t flags)
{
    return (flags & GEN_PB_FLAG_IMMEDIATE) == 0 && !s_gen_pb.m_debug;
}

[[gnu::noinline, gnu::cold]] GEN_PROFILE_BIN const *show_ignored_open(char const *name)
{
    {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
        GEN_PB_BUSY const busy;
        gen_say("Tried to open bin '%s' during ignored bin '%s'", text_or_empty(name), s_gen_pb.m_ignored_name);
    }
    ++s_gen_pb.m_ignored_depth;
    return nullptr;
}

inline GEN_PROFILE_BIN const *ignore_open(char const *name, std::uint32_t flags)
{
    if (flags != 0) {
        ++s_gen_pb.m_ignored_count;
        if (s_gen_pb.m_show_ignored)
            return show_ignored_open(name);
    }
    ++s_gen_pb.m_ignored_depth;
    return nullptr;
}

[[gnu::noinline, gnu::cold]] void stop_ignoring()
{
    s_gen_pb.m_level_flags =
        s_gen_pb.m_current == nullptr ? std::uint32_t{GEN_PB_FLAG_ALL} : s_gen_pb.m_current->m_flags;
    s_gen_pb.m_ignored_name = nullptr;
    --s_gen_pb.m_debug_depth;
}

// The open that changes the level, is immediate or is traced.
[[gnu::noinline]] GEN_PROFILE_BIN const *open_apart(char const *code_prefix, char const *name, std::uint32_t flags,
                                                    char const *tag, char const *user_tag)
{
    if (s_gen_pb.m_debug)
        std::fprintf(stderr, "%*sOpening bin '%s:%s' with flags %x\n", trace_indentation(), "",
                     text_or_empty(code_prefix), text_or_empty(name), flags);
    ++s_gen_pb.m_debug_depth;
    if (flags != s_gen_pb.m_level_flags) {
        gen_pb_flush();
        s_gen_pb.m_ignored_depth = 0;
        s_gen_pb.m_level_flags = flags;
    }
    if (flags == 0) {
        s_gen_pb.m_ignored_name = text_or_empty(name);
        s_gen_pb.m_ignored_depth = 1;
        return nullptr;
    }
    if ((flags & GEN_PB_FLAG_IMMEDIATE) == 0)
        return push(GEN_PB_EVENT_OPEN, code_prefix, name, flags, tag, user_tag);
    GEN_PROFILE_BIN const *const bin = push_immediate(GEN_PB_EVENT_OPEN, code_prefix, name, flags, tag, user_tag);
    ++s_gen_pb.m_immediate_count;
    return bin;
}

// The close that is immediate or is traced.
[[gnu::noinline]] void close_apart(char const *name, std::uint32_t flags)
{
    if (s_gen_pb.m_debug)
        std::fprintf(stderr, "%*sClosing bin '%s'\n", trace_indentation(), "", name == nullptr ? "NULL" : name);
    auto *const push_event = (flags & GEN_PB_FLAG_IMMEDIATE) != 0 ? push_immediate : push;
    push_event(GEN_PB_EVENT_CLOSE, /*code_prefix=*/nullptr, name, flags, /*tag=*/nullptr, /*user_tag=*/nullptr);
}

// Says a line while bins are being closed.
void say_busy(char const *text)
{
    GEN_PB_BUSY const busy;
    gen_say(text);
}

// All opens. The quick questions come first; whatever takes more is out of line.
inline GEN_PROFILE_BIN const *open_bin(char const *code_prefix, char const *name, std::uint32_t flags, char const *tag,
                                       char const *user_tag)
{
    if (!gen_pb_takes_calls())
        return nullptr;
    if (s_gen_pb.m_level_flags == 0)
        return ignore_open(name, flags);
    if (flags != s_gen_pb.m_level_flags || !is_plain(flags))
        return open_apart(code_prefix, name, flags, tag, user_tag);
    ++s_gen_pb.m_debug_depth;
    return push(GEN_PB_EVENT_OPEN, code_prefix, name, flags, tag, user_tag);
}

} // namespace

void gen_pb_flush()
{
    if (s_gen_pb.m_event_count == 0)
        return;
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    GEN_CLOCKS const before = gen_read_clocks();
    process_buffer();
    GEN_CLOCKS const spent = gen_read_clocks() - before;
    if (GEN_PB_IMPL *const bin = s_gen_pb.m_current) {
        bin->m_overhead.m_values[GEN_PB_WC] += spent.m_ticks;
        bin->m_overhead.m_values[GEN_PB_CPU] += spent.m_cpu_nsec;
        bin->m_overhead.m_values[GEN_PB_WC_EST] += spent.m_cpu_nsec;
    }
}

bool gen_pb_delete_bins()
{
    if (!GEN_PB_CHECK(s_gen_pb.m_current == nullptr, "s_current_bin == 0LL"))
        return false;
    // They were made untracked.
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    gen_pb_forget_tagged_bins();
    delete s_gen_pb.m_root;
    s_gen_pb.m_root = nullptr;
    for (GEN_PB_IMPL *bin : l_stray_bins)
        delete bin;
    l_stray_bins.clear();
    gen_say("Deleted all bins; buffer was full %d times", s_gen_pb.m_full_count);
    return true;
}

GEN_PROFILE_BIN const *GEN_PROFILE_BINS::open(char const *code_prefix, char const *name, unsigned flags)
{
    return open_bin(code_prefix, name, flags, /*tag=*/nullptr, /*user_tag=*/nullptr);
}

GEN_PROFILE_BIN const *GEN_PROFILE_BINS::open_with_tag(char const *code_prefix, char const *name, unsigned flags,
                                                       char const *tag)
{
    return open_bin(code_prefix, name, flags, tag, /*user_tag=*/nullptr);
}

GEN_PROFILE_BIN const *GEN_PROFILE_BINS::open_with_user_tag(char const *code_prefix, char const *name, unsigned flags,
                                                            char const *tag, char const *user_tag)
{
    return open_bin(code_prefix, name, flags, tag, user_tag);
}

void GEN_PROFILE_BINS::close(char const *name)
{
    if (!gen_pb_takes_calls())
        return;
    std::uint32_t const flags = s_gen_pb.m_level_flags;
    if (flags == 0) {
        if (--s_gen_pb.m_ignored_depth == 0)
            stop_ignoring();
        return;
    }
    --s_gen_pb.m_debug_depth;
    if (!is_plain(flags))
        return close_apart(name, flags);
    push(GEN_PB_EVENT_CLOSE, /*code_prefix=*/nullptr, name, flags, /*tag=*/nullptr, /*user_tag=*/nullptr);
}

void GEN_PROFILE_BINS::close_recursively(GEN_PROFILE_BIN const *bin)
{
    if (!gen_pb_takes_calls())
        return;
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    gen_pb_flush();
    say_busy("Closing bins recursively...");
    // While the process goes down, or once a fault has disabled the bins, closes have no effect.
    while (s_gen_pb.m_current != bin && gen_pb_is_own_thread() && !err_is_in_abnormal_exit())
        close(nullptr);
    close(nullptr);
    say_busy("Finished closing bins recursively");
}
