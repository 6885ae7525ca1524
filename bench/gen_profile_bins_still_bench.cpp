// Opens and closes of profile bins with the clocks taken out. One iteration is five pairs, a full buffer.
#include "gen_profile_bins_sys.h"

#include "bench/bench.h"

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

BENCHMARK(pairs<1>)->Name("still/buffered");
BENCHMARK(pairs<GEN_PB_FLAG_IMMEDIATE>)->Name("still/immediate");

BenchGoals const GOALS{
    {"five buffered pairs without clocks, ns", "still/buffered", "", 300},
    {"buffered pair without clocks / LLVM TimeTraceScope", "still/buffered", "peer/llvm_time_trace_scope", 0.6},
};

} // namespace
