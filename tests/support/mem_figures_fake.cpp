#include "tests/support/mem_figures_fake.h"

#include <array>
#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <ostream>

namespace {

using Triple = std::array<std::size_t, 3>;

struct Script
{
    std::size_t working_set = 0;
    std::size_t peak_working_set = 0;
    std::size_t peak_virtual = 0;
    std::size_t current_total = 0;
    std::deque<Triple> closes;
    std::map<std::string, std::deque<Triple>> closes_of_tag;
    bool tbb_tracking_enabled = false;
    std::map<std::string, std::string> dumps;
    int tracking = 0;
    std::vector<std::string> log;
};

std::mutex &script_mutex()
{
    static std::mutex &mutex = *new std::mutex; // stays for calls during the exit
    return mutex;
}

Script &script()
{
    static Script &state = *new Script;
    return state;
}

thread_local int l_suspensions = 0;
std::atomic<std::size_t> l_counted_allocations{0};
std::atomic<std::size_t> l_counted_releases{0};

template <class Action>
auto locked(Action action)
{
    std::lock_guard<std::mutex> const lock(script_mutex());
    return action(script());
}

void log_call(std::string const &line)
{
    locked([&](Script &s) { s.log.push_back(line); });
}

std::string suspended_mark()
{
    return l_suspensions != 0 ? " suspended" : "";
}

bool take_front(std::deque<Triple> &queue, Triple *triple)
{
    if (queue.empty())
        return false;
    *triple = queue.front();
    queue.pop_front();
    return true;
}

Triple take_close(Script &s, std::string const &tag)
{
    Triple triple{};
    auto const of_tag = s.closes_of_tag.find(tag);
    if (of_tag == s.closes_of_tag.end() || !take_front(of_tag->second, &triple))
        take_front(s.closes, &triple);
    return triple;
}

bool write_dump(std::string const &dump, std::ostream &out)
{
    std::string const text = locked([&](Script &s) { return s.dumps[dump]; });
    out << text;
    return !text.empty();
}

bool log_and_write_dump(std::string const &dump, std::ostream &out)
{
    log_call("dump " + dump);
    return write_dump(dump, out);
}

} // namespace

void mem_fake_reset()
{
    locked([](Script &s) { s = Script(); });
    l_counted_allocations = 0;
    l_counted_releases = 0;
}

void mem_fake_set_working_set(std::size_t bytes)
{
    locked([=](Script &s) { s.working_set = bytes; });
}

void mem_fake_set_peak_working_set(std::size_t bytes)
{
    locked([=](Script &s) { s.peak_working_set = bytes; });
}

void mem_fake_set_peak_virtual(std::size_t bytes)
{
    locked([=](Script &s) { s.peak_virtual = bytes; });
}

void mem_fake_set_current_total(std::size_t bytes)
{
    locked([=](Script &s) { s.current_total = bytes; });
}

void mem_fake_queue_close(std::size_t open_bytes, std::size_t close_bytes, std::size_t peak_bytes)
{
    locked([=](Script &s) { s.closes.push_back({open_bytes, close_bytes, peak_bytes}); });
}

void mem_fake_queue_close_of_tag(std::string const &tag, std::size_t open_bytes, std::size_t close_bytes,
                                 std::size_t peak_bytes)
{
    locked([&](Script &s) { s.closes_of_tag[tag].push_back({open_bytes, close_bytes, peak_bytes}); });
}

void mem_fake_set_tbb_tracking_enabled(bool enabled)
{
    locked([=](Script &s) { s.tbb_tracking_enabled = enabled; });
}

void mem_fake_set_dump(std::string const &dump, std::string const &text)
{
    locked([&](Script &s) { s.dumps[dump] = text; });
}

std::vector<std::string> mem_fake_log()
{
    return locked([](Script &s) { return s.log; });
}

void mem_fake_clear_log()
{
    locked([](Script &s) { s.log.clear(); });
}

int mem_fake_suspensions()
{
    return l_suspensions;
}

std::size_t mem_fake_counted_allocations()
{
    return l_counted_allocations;
}

std::size_t mem_fake_counted_releases()
{
    return l_counted_releases;
}

// The functions that the fake replaces.

std::size_t MEM_MANAGER::current_total_memory()
{
    return locked([](Script &s) { return s.current_total; });
}

std::size_t mem_info_get_process_current_working_set_size()
{
    return locked([](Script &s) { return s.working_set; });
}

std::size_t mem_info_get_process_peak_working_set_size()
{
    return locked([](Script &s) { return s.peak_working_set; });
}

std::size_t mem_info_get_process_peak_virtual_used()
{
    return locked([](Script &s) { return s.peak_virtual; });
}

void mem_enable_tracking(MEM_TRACKING_GRANULARITY granularity)
{
    locked([=](Script &s) { s.tracking |= granularity; });
    log_call("enable " + std::to_string(granularity));
}

void mem_disable_tracking(MEM_TRACKING_GRANULARITY granularity)
{
    locked([=](Script &s) { s.tracking &= ~granularity; });
    log_call("disable " + std::to_string(granularity));
}

bool mem_tracking_is_enabled(MEM_TRACKING_GRANULARITY granularity)
{
    log_call("enabled? " + std::to_string(granularity));
    return locked([=](Script &s) { return (s.tracking & granularity) == granularity; });
}

bool mem_get_tbb_memory_tracking_enabled()
{
    log_call("tbb enabled?");
    return locked([](Script &s) { return s.tbb_tracking_enabled; });
}

void mem_open_profile_bin(std::string const &name, std::string const &tag)
{
    log_call("open " + name + " " + tag + suspended_mark());
}

void mem_close_profile_bin(std::string const &tag, std::size_t *open_bytes, std::size_t *close_bytes,
                           std::size_t *peak_bytes)
{
    log_call("close " + tag + suspended_mark());
    Triple const figures = locked([&](Script &s) { return take_close(s, tag); });
    *open_bytes = figures[0];
    *close_bytes = figures[1];
    *peak_bytes = figures[2];
}

void mem_reset_tracking_entries()
{
    log_call("reset");
}

void mem_tbb_tracking_flush_peak()
{
    log_call("flush");
}

bool mem_dump_tbb_fileline_tracking(std::ostream &out)
{
    return log_and_write_dump("fileline", out);
}

bool mem_dump_tbb_subsystem_tracking(std::ostream &out)
{
    return log_and_write_dump("subsystem", out);
}

bool mem_dump_tbb_profile_bin_stats_tracking(std::ostream &out)
{
    return log_and_write_dump("bin stats", out);
}

bool mem_dump_tbb_profile_bin_tag_stats_tracking(std::ostream &out)
{
    return log_and_write_dump("tag stats", out);
}

bool mem_dump_tbb_module_tracking(std::ostream &timeline, std::ostream &details)
{
    bool const first = log_and_write_dump("module", timeline);
    return write_dump("module details", details) || first;
}

void mem_set_timeline_label(std::string const &label)
{
    log_call("label " + label);
}

void mem_disable_profile_bin_tag_timeline_labels()
{
    log_call("disable labels");
}

MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT::MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT()
{
    ++l_suspensions;
}

MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT::~MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT()
{
    --l_suspensions;
}

void mem_count_allocation(void const *, std::size_t bytes, void const *, void const *)
{
    l_counted_allocations += bytes;
}

void mem_count_release(void const *, std::size_t bytes)
{
    l_counted_releases += bytes;
}
