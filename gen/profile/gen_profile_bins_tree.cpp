// The effect of an event in the tree: an open finds or creates its bin below the current one, a close adds the interval
// and makes the parent the current bin.
#include "gen/profile/gen_profile_bins_tree.h"

#include "err_sys.h"
#include "gen/base/gen_debug_message.h"
#include "gen/profile/gen_profile_bins_estimate.h"
#include "gen/profile/gen_profile_bins_listener.h"
#include "gen/profile/gen_profile_bins_messages.h"
#include "gen/profile/gen_profile_bins_ratios.h"
#include "mem_sys.h"

#include <algorithm>

namespace {

// A name as the tree has it: "::" becomes "->". Most names have none and are not copied; `copy` stays empty for them.
// Names are short: one pass for the separator and the length is faster than two calls of the standard library.
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

void set_current_bin(GEN_PB_IMPL *bin)
{
    gen_pb().tree.current.store(bin, std::memory_order_relaxed);
}

// Makes a bin the current one at the end of the scope, also if a listener throws for want of memory: the open or the
// close has happened all the same.
class CurrentAfterwards
{
public:
    explicit CurrentAfterwards(GEN_PB_IMPL *bin) : m_bin(bin) {}
    ~CurrentAfterwards() { set_current_bin(m_bin); }
    CurrentAfterwards(CurrentAfterwards const &) = delete;
    CurrentAfterwards &operator=(CurrentAfterwards const &) = delete;

private:
    GEN_PB_IMPL *m_bin;
};

// A step without a labelled bin above it is one of the root's.
void number_step(GEN_PB_IMPL &bin)
{
    GEN_PB_IMPL &above = bin.m_labelled_above == nullptr ? *gen_pb().tree.root : *bin.m_labelled_above;
    bin.m_step_number = ++above.m_child_steps;
}

// Adds a new bin below its parent; without one, as the root or as a stray. Returns it.
GEN_PB_IMPL *add_to_tree(std::unique_ptr<GEN_PB_IMPL> bin)
{
    auto &tree = gen_pb().tree;
    if (GEN_PB_IMPL *const parent = bin->m_parent)
        return parent->add_child(std::move(bin));
    if (tree.root == nullptr)
        return tree.root = bin.release();
    tree.strays.push_back(bin.get());
    return bin.release();
}

GEN_PB_IMPL *create_bin(GEN_PB_EVENT const &event, std::string_view name)
{
    std::unique_ptr<GEN_PB_IMPL> bin = gen_pb_make_bin();
    GEN_PB_IMPL *const parent = GEN_PB_IMPL::get_current_bin();
    bin->m_parent = parent;
    if (parent != nullptr)
        bin->m_labelled_above = parent->m_user_tag.empty() ? parent->m_labelled_above : parent;
    bin->m_name = name;
    bin->m_code_prefix = gen_pb_text_or_empty(event.m_code_prefix);
    if (event.m_tag != nullptr)
        bin->m_tag = event.m_tag;
    if (event.m_user_tag != nullptr)
        bin->m_user_tag = event.m_user_tag;
    bin->m_total.m_values[GEN_PB_START_MEM] = GEN_PB_NO_MEMORY;
    bin->m_total.m_values[GEN_PB_PEAK_MEM] = GEN_PB_NO_MEMORY;
    gen_pb_apply_ratio_rules(*bin);
    GEN_PB_IMPL *const created = add_to_tree(std::move(bin));
    if (!created->m_user_tag.empty())
        number_step(*created);
    return created;
}

[[gnu::noinline]] void notify_listeners(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event)
{
    for (GEN_PB_LISTENER *each : gen_pb().listeners.at_bins) {
        if (event.m_type == GEN_PB_EVENT_OPEN)
            each->on_open(bin, event);
        else
            each->on_close(bin, event);
        if (!bin.m_user_tag.empty())
            each->on_step(bin, event);
    }
}

// Most runs have no listener.
inline void notify_if_any(GEN_PB_IMPL const &bin, GEN_PB_EVENT const &event)
{
    if (!gen_pb().listeners.at_bins.empty())
        notify_listeners(bin, event);
}

// The path of an error line, from the root down.
std::string path_of(GEN_PB_IMPL const &bin)
{
    return gen_pb_path_text(gen_pb_path(bin, gen_pb().tree.root), "/");
}

void process_open(GEN_PB_EVENT const &event)
{
    std::string copy;
    std::string_view const name = normal_name(gen_pb_text_or_empty(event.m_name), copy);
    GEN_PB_IMPL *const current = GEN_PB_IMPL::get_current_bin();
    GEN_PB_IMPL *bin = nullptr;
    if (current != nullptr && !name.empty()) {
        if (current->m_name == name) {
            ++current->m_open_count;
            return;
        }
        bin = current->find_child(name);
        if (bin != nullptr && bin->m_open_count != 0) {
            gen_debug_message("Error: bin already open: %s", path_of(*bin));
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
    {
        CurrentAfterwards const becomes_current(bin);
        if (!bin->m_name.empty())
            mem_open_profile_bin(bin->m_name, bin->m_tag);
        notify_if_any(*bin, event);
    }
    if ((bin->m_flags & GEN_PB_FLAG_ANNOUNCE) != 0)
        gen_pb_announce_open(*bin);
}

// A clock that went backward counts as an error, and its interval as 0.
void add_interval(GEN_PB_IMPL &bin, GEN_CLOCKS const &interval)
{
    bin.m_last = {};
    bin.m_last.add_interval(interval);
    bin.m_last.count_backward_clocks();
    bin.m_total.add_clocks(bin.m_last);
}

GEN_PB_INTERVAL_MEMORY take_memory(GEN_PB_IMPL &bin)
{
    GEN_PB_INTERVAL_MEMORY memory;
    mem_close_profile_bin(bin.m_tag, &memory.open, &memory.close, &memory.peak);
    std::int64_t &start = bin.m_total.m_values[GEN_PB_START_MEM];
    std::int64_t &peak = bin.m_total.m_values[GEN_PB_PEAK_MEM];
    if (start == GEN_PB_NO_MEMORY)
        start = static_cast<std::int64_t>(memory.open);
    bin.m_total.m_values[GEN_PB_END_MEM] = static_cast<std::int64_t>(memory.close);
    auto const interval_peak = static_cast<std::int64_t>(memory.peak);
    peak = peak == GEN_PB_NO_MEMORY ? interval_peak : std::max(peak, interval_peak);
    return memory;
}

// Whether a name as the caller gave it is the bin's, character by character. Names are too short for a library call.
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
bool may_close(GEN_PB_EVENT const &event, GEN_PB_IMPL const &bin)
{
    if (event.m_name == nullptr || equals(event.m_name, bin.m_name))
        return true;
    std::string copy;
    std::string_view const name = normal_name(event.m_name, copy);
    if (name == bin.m_name)
        return true;
    gen_debug_message("Error: trying to close %s but open bin is %s", std::string(name), path_of(bin));
    gen_pb_fail("Can't close bin", __FILE__, __LINE__);
    return false;
}

void process_close(GEN_PB_EVENT const &event)
{
    GEN_PB_IMPL *const bin = GEN_PB_IMPL::get_current_bin();
    if (!GEN_PB_CHECK(bin != nullptr, "bin != 0LL") || !GEN_PB_CHECK(bin->m_open_count != 0, "bin->m_open_count") ||
        !may_close(event, *bin))
        return;
    if (gen_pb().run.debug)
        gen_pb_trace_close_in_tree(*bin, event.m_name);
    if (--bin->m_open_count != 0)
        return;

    CurrentAfterwards const parent_becomes_current(bin->m_parent);
    gen_pb().intake.level_flags = bin->m_parent == nullptr ? std::uint32_t{GEN_PB_FLAG_ALL} : bin->m_parent->m_flags;
    bin->m_computed = false;
    add_interval(*bin, event.m_clocks - bin->m_start);
    GEN_PB_INTERVAL_MEMORY memory;
    if (!bin->m_name.empty())
        memory = take_memory(*bin);
    notify_if_any(*bin, event);
    if ((bin->m_flags & GEN_PB_FLAG_ANNOUNCE) != 0)
        gen_pb_announce_close(*bin, memory);
}

void process(GEN_PB_EVENT const &event)
{
    // A fault in a customer build ends the processing of the events after it.
    if (err_is_in_abnormal_exit() || gen_pb().run.thread.load(std::memory_order_relaxed) == GEN_PB_DISABLED)
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

} // namespace

void gen_pb_process(GEN_PB_EVENT const *events, std::size_t count)
{
    GEN_PB_BUSY const busy;
    for (std::size_t i = 0; i < count; ++i)
        process(events[i]);
}

bool gen_pb_delete_bins()
{
    auto &tree = gen_pb().tree;
    if (!GEN_PB_CHECK(GEN_PB_IMPL::get_current_bin() == nullptr, "s_current_bin == 0LL"))
        return false;
    // The bins were allocated with tracking suspended; free them the same way.
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const untracked;
    delete tree.root;
    tree.root = nullptr;
    for (GEN_PB_IMPL *bin : tree.strays)
        delete bin;
    tree.strays.clear();
    gen_pb_forget_ratio_states();
    gen_debug_message("Deleted all bins; buffer was full %d times", gen_pb().intake.full_count);
    return true;
}
