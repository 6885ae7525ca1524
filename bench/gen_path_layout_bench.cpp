// Three layout getters; one iteration is one call. The floor is a copy of the result.
#include "gen_path_sys.h"

#include "bench/bench.h"

namespace {

std::string library_path()
{
    return gen_get_library_path(GEN_LIB_VHDL);
}

template <auto GET>
void getter(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(GET());
}

void copy_of_root(benchmark::State &state)
{
    std::string const root = gen_get_kalvern_path();
    for (auto _ : state)
        benchmark::DoNotOptimize(std::string(root));
}

BENCHMARK(copy_of_root)->Name("floor/copy_of_root");
BENCHMARK(getter<gen_get_module_path>)->Name("module_path");
BENCHMARK(getter<gen_get_kalvern_path>)->Name("kalvern_path");
BENCHMARK(getter<library_path>)->Name("library_path");

} // namespace
