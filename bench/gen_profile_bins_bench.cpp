// Opens and closes of profile bins with the real clocks. One iteration is five pairs, which fill the buffer of ten
// events. A buffered iteration therefore reads both clocks twelve times: ten times for the events and twice for the
// flush. One iteration of "levels" is one pair: of 100,000 new bins inside each other, or of as many under one parent.
#include "gen_profile_bins_sys.h"
#include "gen_time_sys.h"

#include "bench/bench.h"
#include "bench/bench_child.h"

#include <algorithm>
#include <chrono>
#include <map>

#include <time.h>

namespace {

constexpr int PAIRS = 5;
constexpr int FOREIGN_ITERATIONS = 1000;

// The bins belong to the main thread for the whole run.
void use_bins()
{
    static bool is_ready = false;
    if (!is_ready)
        GEN_PROFILE_BINS::initialize("Bench", /*primary=*/false, /*debug_messages=*/false);
    is_ready = true;
}

std::uint64_t read_both_clocks()
{
    timespec cpu, now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpu);
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(cpu.tv_nsec ^ now.tv_nsec);
}

// The first argument is the number of readings, the second the number of sleeping threads.
void clock_readings(benchmark::State &state)
{
    SleepingThreads const threads(state.range(1));
    for (auto _ : state)
        for (std::int64_t i = 0; i < state.range(0); ++i)
            benchmark::DoNotOptimize(read_both_clocks());
}

void five_pairs(unsigned flags)
{
    for (int i = 0; i < PAIRS; ++i) {
        GEN_PROFILE_BINS::open("BENCH", "Stage", flags);
        GEN_PROFILE_BINS::close("Stage");
    }
}

template <unsigned FLAGS>
void pairs(benchmark::State &state)
{
    use_bins();
    SleepingThreads const threads(state.range(0));
    // The level of the pairs is set before the first one.
    GEN_PROFILER const parent("BENCH", "Parent", FLAGS);
    for (auto _ : state)
        five_pairs(FLAGS);
}

void ignored_pairs(benchmark::State &state)
{
    use_bins();
    GEN_PROFILER const ignored("BENCH", "Ignored", 0);
    for (auto _ : state)
        five_pairs(GEN_PB_FLAG_RECORD);
}

// The pairs on a thread that doesn't own the bins; the time is measured on that thread.
void foreign_pairs(benchmark::State &state)
{
    use_bins();
    for (auto _ : state) {
        double seconds = 0;
        std::thread([&seconds] {
            auto const start = std::chrono::steady_clock::now();
            for (int i = 0; i < FOREIGN_ITERATIONS; ++i)
                five_pairs(GEN_PB_FLAG_RECORD);
            seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        }).join();
        state.SetIterationTime(seconds / FOREIGN_ITERATIONS);
    }
}

// The names of a parent's children, and after them the name of the parent. They are static, since events refer to the
// texts of the caller.
std::vector<std::string> const &child_names(std::int64_t count)
{
    static std::map<std::int64_t, std::vector<std::string>> all;
    std::vector<std::string> &names = all[count];
    for (std::int64_t i = static_cast<std::int64_t>(names.size()); i < count; ++i)
        names.push_back("entity_" + std::to_string(i) + "_elaboration");
    if (names.size() == static_cast<std::size_t>(count))
        names.push_back("Parent of " + std::to_string(count));
    return names;
}

// Opens and closes the children of one parent in turn, all of which exist already. The floor reads the clocks for the
// same number of events.
template <bool OPENS>
void walk(benchmark::State &state)
{
    use_bins();
    std::vector<std::string> const &names = child_names(state.range(0));
    std::size_t const count = names.size() - 1;
    GEN_PROFILER const parent("BENCH", names[count].c_str(), GEN_PB_FLAG_RECORD);
    auto const open_and_close = [](std::string const &name) {
        GEN_PROFILE_BINS::open("BENCH", name.c_str(), GEN_PB_FLAG_RECORD);
        GEN_PROFILE_BINS::close(name.c_str());
    };
    for (std::size_t i = 0; i < count; ++i)
        open_and_close(names[i]);
    std::size_t next = 0;
    for (auto _ : state) {
        for (int i = 0; i < PAIRS; ++i) {
            std::string const &name = names[next];
            next = next + 1 == count ? 0 : next + 1;
            if constexpr (OPENS)
                open_and_close(name);
            else {
                benchmark::DoNotOptimize(name.data());
                benchmark::DoNotOptimize(read_both_clocks());
                benchmark::DoNotOptimize(read_both_clocks());
            }
        }
        if constexpr (!OPENS) {
            benchmark::DoNotOptimize(read_both_clocks());
            benchmark::DoNotOptimize(read_both_clocks());
        }
    }
}

void open_level(std::string const &name)
{
    GEN_PROFILE_BINS::open("BENCH", name.c_str(), GEN_PB_FLAG_RECORD);
}

void close_level(std::string const &name)
{
    GEN_PROFILE_BINS::close(name.c_str());
}

template <bool IS_DEEP>
double open_and_close_levels(std::vector<std::string> const &names)
{
    auto const start = std::chrono::steady_clock::now();
    for (std::string const &name : names) {
        open_level(name);
        if (!IS_DEEP)
            close_level(name);
    }
    if (IS_DEEP)
        std::for_each(names.rbegin(), names.rend(), close_level);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <bool IS_DEEP>
void levels(benchmark::State &state)
{
    use_bins();
    std::vector<std::string> const &names = child_names(state.range(0));
    run_in_children(state, static_cast<std::int64_t>(names.size()),
                    [&names] { return open_and_close_levels<IS_DEEP>(names); });
}

BENCHMARK(clock_readings)
    ->Name("floor/clocks")
    ->Args({12, 0})
    ->Args({12, 1})
    ->Args({12, 8})
    ->Args({12, 64})
    ->Args({10, 0});
BENCHMARK(pairs<GEN_PB_FLAG_RECORD>)->Name("buffered")->Arg(0)->Arg(1)->Arg(8)->Arg(64);
BENCHMARK(pairs<GEN_PB_FLAG_IMMEDIATE>)->Name("immediate")->Arg(0);
BENCHMARK(ignored_pairs)->Name("ignored");
BENCHMARK(foreign_pairs)->Name("foreign")->UseManualTime()->Iterations(20);
BENCHMARK(walk<false>)->Name("floor/walk")->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK(walk<true>)->Name("walk")->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK(levels<false>)->Name("levels/flat")->Arg(100000)->UseManualTime()->Iterations(1);
BENCHMARK(levels<true>)->Name("levels/deep")->Arg(100000)->UseManualTime()->Iterations(1);

BenchGoals const GOALS{
    {"buffered bin / 2.4 readings of both clocks", "buffered/0", "floor/clocks/12/0", 1.06},
    {"  with 1 sleeping thread", "buffered/1", "floor/clocks/12/1", 1.06},
    {"  with 8 sleeping threads", "buffered/8", "floor/clocks/12/8", 1.06},
    {"  with 64 sleeping threads", "buffered/64", "floor/clocks/12/64", 1.06},
    {"buffered bin / LLVM TimeRegion", "buffered/0", "peer/llvm_time_region", 0.95},
    {"five pairs on a foreign thread, ns", "foreign/iterations:20/manual_time", "", 25},
    {"five pairs while ignoring, ns", "ignored", "", 25},
    {"foreign thread / LLVM disabled scope", "foreign/iterations:20/manual_time", "peer/llvm_disabled_scope", 0.5},
    {"one of 10 children / the walk's clocks", "walk/10", "floor/walk/10", 1.06},
    {"one of 1,000 children / the walk's clocks", "walk/1000", "floor/walk/1000", 1.15},
    {"one of 100,000 children / the walk's clocks", "walk/100000", "floor/walk/100000", 1.80},
    {"one of 100,000 levels / one of 100,000 children", "levels/deep/100000/iterations:1/manual_time",
     "levels/flat/100000/iterations:1/manual_time", 2},
    {"one of 1,000 children / LLVM named timers", "walk/1000", "peer/llvm_named_timers/1000", 0.75},
    {"one of 100,000 children / LLVM named timers", "walk/100000", "peer/llvm_named_timers/100000", 0.80},
};

} // namespace
