// Opens and closes of profile bins over clocks that cost nothing. One iteration is five pairs, a full buffer. The
// program is built twice: with counted allocations, and without, so that each open and close of a bin asks the system
// for the memory of the process.
#include "gen_profile_bins_sys.h"

#include "bench/bench.h"
#include "mem_sys.h"

namespace {

// The bins belong to the main thread for the whole run.
void use_bins()
{
    static bool is_ready = false;
    if (!is_ready)
        GEN_PROFILE_BINS::initialize("Bench", /*primary=*/false, /*debug_messages=*/false);
    is_ready = true;
}

template <unsigned FLAGS>
void pairs(benchmark::State &state)
{
    use_bins();
    GEN_PROFILER const parent("BENCH", "Parent", FLAGS);
    for (auto _ : state)
        for (int i = 0; i < 5; ++i) {
            GEN_PROFILE_BINS::open("BENCH", "Stage", FLAGS);
            GEN_PROFILE_BINS::close("Stage");
        }
}

// With statistics of the memory of each bin and tag.
void tracked_pairs(benchmark::State &state)
{
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    pairs<GEN_PB_FLAG_RECORD>(state);
    mem_disable_tracking(MEM_TRACKING_STATISTICS);
}

BENCHMARK(pairs<GEN_PB_FLAG_RECORD>)->Name("still/buffered");
BENCHMARK(tracked_pairs)->Name("still/buffered_with_memory_statistics");
BENCHMARK(pairs<GEN_PB_FLAG_IMMEDIATE>)->Name("still/immediate");

BenchGoals const GOALS{
    {"five buffered pairs without clocks, ns", "still/buffered", "", 300},
    {"buffered pair without clocks / LLVM TimeTraceScope", "still/buffered", "peer/llvm_time_trace_scope", 0.6},
};

} // namespace
