// finalize() with its reports, with clocks that never advance. The flow has 100 stages, each with one bin for each tag:
// a tag is on the bins of one name in all stages. One iteration is one bin of that flow. The floor of the tagged report
// is the same flow without tags.
#include "gen_profile_bins_sys.h"

#include "bench/bench.h"
#include "bench/bench_child.h"
#include "mem_sys.h"

#include <chrono>
#include <string>

namespace {

constexpr std::int64_t STAGES = 100;

double finalize_flow(std::int64_t tags, bool is_tagged)
{
    mem_cfg_set("gen_print_profile_bins", "on");
    GEN_PROFILE_BINS::initialize("Bench", /*primary=*/true, /*debug_messages=*/false);
    for (std::int64_t i = 0; i < STAGES; ++i) {
        GEN_PROFILE_BINS::open("BENCH", ("stage " + std::to_string(i)).c_str(), GEN_PB_FLAG_IMMEDIATE);
        for (std::int64_t k = 0; k < tags; ++k) {
            std::string const name = "part " + std::to_string(k);
            std::string const tag = "tag " + std::to_string(k);
            GEN_PROFILE_BINS::open_with_tag("BENCH", name.c_str(), GEN_PB_FLAG_IMMEDIATE,
                                            is_tagged ? tag.c_str() : nullptr);
            GEN_PROFILE_BINS::close(nullptr);
        }
        GEN_PROFILE_BINS::close(nullptr);
    }
    auto const start = std::chrono::steady_clock::now();
    GEN_PROFILE_BINS::finalize("bench", /*close_root=*/true);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <bool IS_TAGGED>
void finalize(benchmark::State &state)
{
    std::int64_t const tags = state.range(0);
    run_in_children(state, STAGES * tags, [tags] { return finalize_flow(tags, IS_TAGGED); });
}

BENCHMARK(finalize<false>)->Name("untagged")->Arg(100)->Arg(1000)->UseManualTime()->Iterations(1);
BENCHMARK(finalize<true>)->Name("tagged")->Arg(100)->Arg(1000)->UseManualTime()->Iterations(1);

BenchGoals const GOALS{
    {"bin of 100,000 with tags / bin of 10,000", "tagged/1000/iterations:1/manual_time",
     "tagged/100/iterations:1/manual_time", 1.2},
    // Each bin has one row in the first report, and three in the tagged report: its own, that of its stage, and that of
    // the rest of the stage.
    {"bin of 100,000 with tags / without", "tagged/1000/iterations:1/manual_time",
     "untagged/1000/iterations:1/manual_time", 6},
};

} // namespace
