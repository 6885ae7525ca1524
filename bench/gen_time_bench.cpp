// Clocks and stopwatches. For a clock, one iteration is one reading, and the floor is a reading of the system's clock.
// For a stopwatch, one iteration is a start and a stop, and the floor is the clock readings of both.
#include "gen_time_sys.h"

#include "bench/bench.h"

#include <chrono>

#include <sys/resource.h>
#include <time.h>

namespace {

template <clockid_t CLOCK>
std::uint64_t read_system_clock()
{
    timespec now;
    clock_gettime(CLOCK, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000000000 + static_cast<std::uint64_t>(now.tv_nsec);
}

std::uint64_t read_getrusage()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::uint64_t>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

std::uint64_t read_split()
{
    std::uint64_t user, kernel;
    gen_get_usec_user_and_kernel(&user, &kernel);
    return user + kernel;
}

std::uint64_t read_steady_clock()
{
    return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

template <auto READ>
void reading(benchmark::State &state)
{
    SleepingThreads const threads(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(READ());
}

template <unsigned TYPES>
void start_stop(benchmark::State &state)
{
    GEN_STOPWATCH watch(/*accumulate=*/true, TYPES);
    for (auto _ : state) {
        watch.start();
        watch.stop();
    }
    benchmark::DoNotOptimize(watch.lap_sec(GEN_STOPWATCH_WALLCLOCK));
}

void start_stop_process(benchmark::State &state)
{
    GEN_PROCESS_STOPWATCH watch("bench");
    for (auto _ : state) {
        watch.start();
        watch.stop();
    }
    benchmark::DoNotOptimize(watch.get_elapsed_cpu_time());
}

template <unsigned TYPES>
void two_readings(benchmark::State &state)
{
    for (auto _ : state)
        for (int i = 0; i < 2; ++i) {
            if ((TYPES & GEN_STOPWATCH_WALLCLOCK) != 0)
                benchmark::DoNotOptimize(gen_get_usec_wallclock());
            if ((TYPES & (GEN_STOPWATCH_KERNEL | GEN_STOPWATCH_USER)) != 0)
                benchmark::DoNotOptimize(read_split());
        }
}

// The argument is the number of sleeping threads, without the thread that reads.
BENCHMARK(reading<read_system_clock<CLOCK_MONOTONIC>>)->Name("floor/monotonic")->Arg(0);
BENCHMARK(reading<read_system_clock<CLOCK_PROCESS_CPUTIME_ID>>)->Name("floor/process_cpu")->Arg(0)->Arg(8)->Arg(64);
BENCHMARK(reading<read_getrusage>)->Name("floor/getrusage")->Arg(0)->Arg(8)->Arg(64);
BENCHMARK(reading<read_steady_clock>)->Name("peer/steady_clock")->Arg(0);
BENCHMARK(reading<gen_get_hires_ticks>)->Name("hires_ticks")->Arg(0);
BENCHMARK(reading<gen_get_hires_tick_frequency>)->Name("hires_tick_frequency")->Arg(0);
BENCHMARK(reading<gen_get_usec_wallclock>)->Name("usec_wallclock")->Arg(0);
BENCHMARK(reading<gen_get_sec_wallclock>)->Name("sec_wallclock")->Arg(0);
BENCHMARK(reading<gen_get_usec_cpu>)->Name("usec_cpu")->Arg(0)->Arg(8)->Arg(64);
BENCHMARK(reading<gen_get_sec_cpu>)->Name("sec_cpu")->Arg(0);
BENCHMARK(reading<gen_get_tick_count>)->Name("tick_count")->Arg(0);
BENCHMARK(reading<read_split>)->Name("usec_user_and_kernel")->Arg(0);
BENCHMARK(reading<gen_get_current_time_milliseconds>)->Name("current_time_milliseconds")->Arg(0);

constexpr unsigned WALL = GEN_STOPWATCH_WALLCLOCK;
constexpr unsigned CPU = GEN_STOPWATCH_KERNEL | GEN_STOPWATCH_USER;
BENCHMARK(two_readings<WALL>)->Name("floor/two_readings_wall");
BENCHMARK(two_readings<CPU>)->Name("floor/two_readings_cpu");
BENCHMARK(two_readings<WALL | CPU>)->Name("floor/two_readings_all");
BENCHMARK(start_stop<WALL>)->Name("stopwatch_wall");
BENCHMARK(start_stop<CPU>)->Name("stopwatch_cpu");
BENCHMARK(start_stop<WALL | CPU>)->Name("stopwatch_all");
BENCHMARK(start_stop_process)->Name("process_stopwatch");

BenchGoals const GOALS{
    {"tick clock / CLOCK_MONOTONIC", "hires_ticks/0", "floor/monotonic/0", 1.15},
    {"tick clock / steady_clock", "hires_ticks/0", "peer/steady_clock/0", 1.15},
    {"CPU clock / CLOCK_PROCESS_CPUTIME_ID", "usec_cpu/0", "floor/process_cpu/0", 1.05},
    {"  with 8 sleeping threads", "usec_cpu/8", "floor/process_cpu/8", 1.05},
    {"  with 64 sleeping threads", "usec_cpu/64", "floor/process_cpu/64", 1.05},
    {"CPU clock / getrusage", "usec_cpu/0", "floor/getrusage/0", 0.80},
    {"stopwatch of the wall clock / its readings", "stopwatch_wall", "floor/two_readings_wall", 1.20},
    {"stopwatch of CPU time / its readings", "stopwatch_cpu", "floor/two_readings_cpu", 1.05},
    {"stopwatch of all clocks / its readings", "stopwatch_all", "floor/two_readings_all", 1.10},
    {"process stopwatch / its readings", "process_stopwatch", "floor/two_readings_cpu", 1.05},
};

} // namespace
