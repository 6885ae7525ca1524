// LLVM's timers, as a peer of the profile bins. One iteration is five regions, as it is five pairs for the bins.
#include "bench/bench.h"

#include <llvm/Support/TimeProfiler.h>
#include <llvm/Support/Timer.h>

namespace {

constexpr int REGIONS = 5;

void time_region(benchmark::State &state)
{
    llvm::TimerGroup group("bench", "bench");
    llvm::Timer timer("stage", "Stage", group);
    for (auto _ : state)
        for (int i = 0; i < REGIONS; ++i) {
            llvm::TimeRegion const region(timer);
            benchmark::DoNotOptimize(&region);
        }
    group.clear();
}

void named_timers(benchmark::State &state)
{
    std::vector<std::string> names;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        names.push_back("entity_" + std::to_string(i) + "_elaboration");
    std::size_t next = 0;
    for (auto _ : state)
        for (int i = 0; i < REGIONS; ++i) {
            std::string const &name = names[next];
            next = next + 1 == names.size() ? 0 : next + 1;
            llvm::NamedRegionTimer const region(name, name, "bench named", "bench named", /*Enabled=*/true);
            benchmark::DoNotOptimize(&region);
        }
    llvm::TimerGroup::clearAll();
}

void time_trace_scope(benchmark::State &state)
{
    llvm::timeTraceProfilerInitialize(/*TimeTraceGranularity=*/500, "bench");
    for (auto _ : state)
        for (int i = 0; i < REGIONS; ++i) {
            llvm::TimeTraceScope const scope("Stage");
            benchmark::DoNotOptimize(&scope);
        }
    llvm::timeTraceProfilerCleanup();
}

void disabled_scope(benchmark::State &state)
{
    for (auto _ : state)
        for (int i = 0; i < REGIONS; ++i) {
            llvm::TimeTraceScope const scope("Stage");
            benchmark::DoNotOptimize(&scope);
        }
}

BENCHMARK(time_region)->Name("peer/llvm_time_region");
BENCHMARK(named_timers)->Name("peer/llvm_named_timers")->Arg(10)->Arg(1000)->Arg(100000);
BENCHMARK(time_trace_scope)->Name("peer/llvm_time_trace_scope");
BENCHMARK(disabled_scope)->Name("peer/llvm_disabled_scope");

} // namespace
