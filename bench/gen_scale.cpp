// The largest runs that are promised: 10,000,000 bins, and 16 threads with 1,000,000 cookies each. Each run has a
// process of its own. Prints the seconds of the work, those of finalize(), and the largest memory of the process. It
// takes minutes and gigabytes, so that bench/run doesn't start it.
//
// usage: gen_scale [run ...]     the names of the runs; all of them if there is none
#include "bench/bench_child.h"
#include "gen_cookie_sys.h"
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::int64_t BIN_COUNT = 10000000;
constexpr std::int64_t PARENT_COUNT = 1000;
constexpr int THREAD_COUNT = 16;
constexpr std::int64_t COOKIES_PER_THREAD = 1000000;

double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

struct Seconds
{
    double work;
    double finalize;
};

// Runs work in the bins of a process. With a key it is set to "on".
template <typename Work>
Seconds measure(Work work, char const *key)
{
    if (key != nullptr)
        mem_cfg_set(key, "on");
    GEN_PROFILE_BINS::initialize("Bench", /*primary=*/true, /*debug_messages=*/false);
    auto const start = std::chrono::steady_clock::now();
    work();
    Seconds seconds{seconds_since(start), 0};
    auto const end = std::chrono::steady_clock::now();
    GEN_PROFILE_BINS::finalize("bench", /*close_root=*/true);
    seconds.finalize = seconds_since(end);
    return seconds;
}

// The name of a bin. An event refers to the text of its name until ten more events have followed, so that the texts of
// the last sixteen names are kept.
char const *name_of(char const *stem, std::int64_t number)
{
    static std::array<std::string, 16> names;
    static std::size_t next = 0;
    std::string &name = names[next++ % names.size()];
    name = stem + std::to_string(number);
    return name.c_str();
}

// Opens and closes so many new bins below the current one.
void run_bins(std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i) {
        char const *const name = name_of("entity_", i);
        GEN_PROFILE_BINS::open("BENCH", name, GEN_PB_FLAG_RECORD);
        GEN_PROFILE_BINS::close(name);
    }
}

void run_bins_of_one_parent()
{
    run_bins(BIN_COUNT);
}

void run_bins_of_many_parents()
{
    for (std::int64_t i = 0; i < PARENT_COUNT; ++i) {
        GEN_PROFILE_BINS::open("BENCH", name_of("stage_", i), GEN_PB_FLAG_IMMEDIATE);
        run_bins(BIN_COUNT / PARENT_COUNT - 1);
        GEN_PROFILE_BINS::close(nullptr);
    }
}

// Bins inside each other.
void run_deep_bins()
{
    for (std::int64_t i = 0; i < BIN_COUNT; ++i)
        GEN_PROFILE_BINS::open("BENCH", name_of("entity_", i), GEN_PB_FLAG_RECORD);
    for (std::int64_t i = 0; i < BIN_COUNT; ++i)
        GEN_PROFILE_BINS::close(nullptr);
}

void log_cookies()
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREAD_COUNT; ++thread)
        threads.emplace_back([thread] {
            for (std::int64_t i = 0; i < COOKIES_PER_THREAD; ++i)
                gen_log_cookie("hash of net", static_cast<std::uint64_t>(i * THREAD_COUNT + thread));
        });
    for (std::thread &thread : threads)
        thread.join();
}

struct Run
{
    char const *name;
    void (*work)();
    std::int64_t count;
    char const *key; // null: all keys are off
};

constexpr Run RUNS[] = {
    {"bins_of_one_parent", run_bins_of_one_parent, BIN_COUNT, nullptr},
    {"bins_of_1000_parents", run_bins_of_many_parents, BIN_COUNT, nullptr},
    {"bins_of_1000_parents_with_report", run_bins_of_many_parents, BIN_COUNT, "gen_print_profile_bins"},
    {"nested_bins", run_deep_bins, BIN_COUNT, nullptr},
    {"cookies_of_16_threads", log_cookies, THREAD_COUNT *COOKIES_PER_THREAD, nullptr},
    {"cookies_of_16_threads_with_file", log_cookies, THREAD_COUNT *COOKIES_PER_THREAD, "gen_print_cookie_log"},
};

bool show(Run const &run)
{
    Seconds seconds{};
    std::size_t peak_bytes = 0;
    if (!run_in_child([&run] { return measure(run.work, run.key); }, &seconds, &peak_bytes)) {
        std::printf("%-34s failed\n", run.name);
        return false;
    }
    auto const count = static_cast<double>(run.count);
    std::printf("%-34s %12.0f %8.1f %10.1f %10.0f %10.0f\n", run.name, count, seconds.work, seconds.finalize,
                static_cast<double>(peak_bytes) / (1024 * 1024), static_cast<double>(peak_bytes) / count);
    std::fflush(stdout);
    return true;
}

bool is_wanted(Run const &run, std::vector<std::string> const &names)
{
    return names.empty() || std::find(names.begin(), names.end(), run.name) != names.end();
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<std::string> const names(argv + 1, argv + argc);
    std::printf("%-34s %12s %8s %10s %10s %10s\n", "run", "count", "work s", "finalize s", "peak MiB", "bytes each");
    bool is_good = true;
    for (Run const &run : RUNS)
        if (is_wanted(run, names))
            is_good = show(run) && is_good;
    return is_good ? 0 : 1;
}
