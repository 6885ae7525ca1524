// The cost of counting and tracking allocations. One iteration is
//
// - for a pair, the allocation and release of a block of 64 bytes;
// - for a mixed heap, the release of one of 1000 blocks and the allocation of another one of 1 to 4096 bytes.
//
// Both run below ten nested calls, since tracking walks the stack.
//
// The floor is malloc() and free() in functions like the plain operators new and delete. The peer is heaptrack, if it
// is installed, which records each allocation with its stack. It needs its own process: the benchmark starts this
// program under heaptrack, runs the floor there and reads its time.
#include "bench/bench.h"
#include "mem_sys.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include <unistd.h>

namespace {

// Functions like the operators new and delete of the compiler's runtime.
[[gnu::noinline]] void *plain_new(std::size_t bytes)
{
    void *const block = std::malloc(bytes);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

[[gnu::noinline]] void plain_delete(void *block)
{
    std::free(block);
}

struct Heap
{
    void *(*allocate)(std::size_t bytes);
    void (*release)(void *block);
    std::array<void *, 1000> blocks; // blocks of the mixed heap
};
Heap l_plain = {[](std::size_t bytes) { return plain_new(bytes); }, [](void *block) { plain_delete(block); }, {}};
Heap l_counted = {
    [](std::size_t bytes) { return ::operator new(bytes); }, [](void *block) { ::operator delete(block); }, {}};

void *volatile l_block = nullptr;

void run_pairs(Heap &heap, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        l_block = heap.allocate(64);
        heap.release(l_block);
    }
}

void run_mixed(Heap &heap, std::size_t count)
{
    static std::uint32_t state = 1;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525 + 1013904223;
        void *&block = heap.blocks[(state >> 8) % heap.blocks.size()];
        heap.release(block);
        block = heap.allocate((state >> 20) + 1);
    }
}

using Work = void (*)(Heap &heap, std::size_t count);

[[gnu::noinline]] void run_deep(int depth, Work work, Heap &heap, std::size_t count)
{
    if (depth == 0)
        work(heap, count);
    else
        run_deep(depth - 1, work, heap, count);
    benchmark::ClobberMemory(); // prevents a tail call, which would leave out a stack frame
}

constexpr int DEPTH = 10;
constexpr std::size_t BATCH = 1000;

void run(benchmark::State &state, Work work, Heap &heap)
{
    while (state.KeepRunningBatch(BATCH))
        run_deep(DEPTH, work, heap, BATCH);
}

void run_tracked(benchmark::State &state, Work work)
{
    mem_enable_tracking(MEM_TRACKING_SOURCES);
    run(state, work, l_counted);
    mem_disable_tracking(MEM_TRACKING_SOURCES);
    mem_reset_tracking_entries();
}

// The child process: this program under heaptrack.

constexpr char CHILD[] = "MEM_COUNT_BENCH_CHILD";
constexpr std::size_t CHILD_COUNT = 200000;

struct Child
{
    Child()
    {
        char const *const name = std::getenv(CHILD);
        if (name == nullptr)
            return;
        Work const work = std::strcmp(name, "mixed") == 0 ? run_mixed : run_pairs;
        auto const begin = std::chrono::steady_clock::now();
        run_deep(DEPTH, work, l_plain, CHILD_COUNT);
        std::chrono::duration<double> const passed = std::chrono::steady_clock::now() - begin;
        std::printf("seconds %.9f\n", passed.count() / static_cast<double>(CHILD_COUNT));
        std::exit(0);
    }
} const l_child;

// Seconds of one iteration; 0 if heaptrack isn't installed.
double seconds_under_heaptrack(char const *work)
{
    std::string const command = std::string(CHILD) + '=' + work +
                                " taskset ffffffff heaptrack -o \"${TMPDIR:-/tmp}/mem_count_bench.$$\" /proc/" +
                                std::to_string(getpid()) +
                                "/exe 2>/dev/null; rm -f \"${TMPDIR:-/tmp}/mem_count_bench.$$\"*";
    double seconds = 0;
    if (std::FILE *const pipe = popen(command.c_str(), "r")) {
        char line[1024];
        while (std::fgets(line, sizeof line, pipe) != nullptr)
            std::sscanf(line, "seconds %lf", &seconds);
        pclose(pipe);
    }
    return seconds;
}

void run_under_heaptrack(benchmark::State &state, char const *work)
{
    for (auto _ : state) {
        double const seconds = seconds_under_heaptrack(work);
        if (seconds == 0)
            state.SkipWithError("no heaptrack");
        state.SetIterationTime(seconds);
    }
}

BENCHMARK_CAPTURE(run, pair, run_pairs, l_plain)->Name("floor/pair");
BENCHMARK_CAPTURE(run, pair, run_pairs, l_counted)->Name("counted/pair");
BENCHMARK_CAPTURE(run_tracked, pair, run_pairs)->Name("by_source_line/pair");
BENCHMARK_CAPTURE(run_under_heaptrack, pair, "pair")->Name("peer/heaptrack/pair")->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(run, mixed, run_mixed, l_plain)->Name("floor/mixed");
BENCHMARK_CAPTURE(run, mixed, run_mixed, l_counted)->Name("counted/mixed");
BENCHMARK_CAPTURE(run_tracked, mixed, run_mixed)->Name("by_source_line/mixed");
BENCHMARK_CAPTURE(run_under_heaptrack, mixed, "mixed")->Name("peer/heaptrack/mixed")->UseManualTime()->Iterations(1);

BenchGoals const l_goals{
    {"counted pair / malloc + free", "counted/pair", "floor/pair", 1.35},
    {"counted mixed heap / malloc + free", "counted/mixed", "floor/mixed", 1.25},
    {"counted pair / heaptrack", "counted/pair", "peer/heaptrack/pair/iterations:1/manual_time", 0.1},
    {"counted mixed heap / heaptrack", "counted/mixed", "peer/heaptrack/mixed/iterations:1/manual_time", 0.1},
    {"pair by source line / heaptrack", "by_source_line/pair", "peer/heaptrack/pair/iterations:1/manual_time", 1},
    {"mixed heap by source line / heaptrack", "by_source_line/mixed", "peer/heaptrack/mixed/iterations:1/manual_time",
     1},
};

} // namespace
