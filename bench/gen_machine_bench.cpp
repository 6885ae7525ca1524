// The capture of the processors of the machine on which this runs. The library's sources are compiled into this
// program, so that each iteration is a first capture with an empty state. One iteration visits every processor, or is
// one query afterwards.
//
// The program uses all processors, although bench/run limits it to one. On a processor that is busy with something else
// the thread has to wait, so that the figures are meaningful on an idle machine only.
#include "gen_machine_sys.h"

#include "bench/bench.h"
#include "gen/machine/gen_machine_capture.h"
#include "gen/machine/gen_machine_cpuid.h"
#include "gen/os/gen_os_machine.h"

#include <algorithm>

#ifdef BENCH_HAS_HWLOC
#include <hwloc.h>
#endif

#include <sched.h>

namespace {

// Constructed before main(), since the capture reads the affinity mask of the process.
struct AllProcessors
{
    AllProcessors()
    {
        cpu_set_t all;
        for (int i = 0; i < CPU_SETSIZE; ++i)
            CPU_SET(i, &all);
        sched_setaffinity(0, sizeof all, &all);
    }
} const l_all_processors;

// The CPUID leaves that a capture executes: on each processor, and once more for each package. Leaf 4 and the leaves of
// the caches depend on the vendor.
struct NeededLeaves
{
    std::vector<std::uint32_t> of_processor{0, 0x80000000, 1};
    std::vector<std::uint32_t> of_package{7, 0x80000001};
};

NeededLeaves needed_leaves()
{
    NeededLeaves needed;
    GEN_MACHINE_STATE const state;
    GEN_MACHINE_INFO::recapture_cpu_info();
    GEN_PKG const *const package = gen_first_package();
    if (package == nullptr)
        return needed;
    bool const is_multi_threading = (gen_read_cpuid(1).m_edx & 1U << 28) != 0;
    if (package->m_vendor == GEN_VENDOR_GENUINE) {
        if (is_multi_threading)
            needed.of_processor.push_back(4);
        needed.of_package.insert(needed.of_package.end(), std::max(1U, gen_read_cpuid(2).m_eax & 0xff), 2);
    } else if (package->m_vendor == GEN_VENDOR_AUTHENTIC_AMD)
        needed.of_package.insert(needed.of_package.end(), {0x80000005, 0x80000006});
    return needed;
}

void execute(std::vector<std::uint32_t> const &leaves)
{
    for (std::uint32_t const leaf : leaves) {
        GEN_CPUID query;
        query.m_eax = leaf;
        gen_os_cpuid(query);
        benchmark::DoNotOptimize(query);
    }
}

// Visits those of the first 32 processors on which the process may run, and calls a function on each.
template <typename Function>
void walk(std::uint64_t process_mask, Function const &function)
{
    for (std::uint64_t rest = process_mask & 0xffffffff; rest != 0; rest &= rest - 1) {
        gen_os_move_thread(static_cast<std::uint32_t>(rest & -rest));
        thr_sleep(0);
        function();
    }
    gen_os_release_thread(process_mask);
    thr_sleep(0);
}

void moves_alone(benchmark::State &state)
{
    for (auto _ : state) {
        std::uint64_t process_mask = 0;
        std::uint64_t system_mask = 0;
        gen_os_read_affinity(process_mask, system_mask);
        walk(process_mask, [] {});
    }
}

// The floor: the moves between processors and the CPUID instructions, without use of their results.
void moves_and_cpuid(benchmark::State &state)
{
    NeededLeaves const needed = needed_leaves();
    for (auto _ : state) {
        std::uint64_t process_mask = 0;
        std::uint64_t system_mask = 0;
        gen_os_read_affinity(process_mask, system_mask);
        walk(process_mask, [&needed] { execute(needed.of_processor); });
        execute(needed.of_package); // once, for one package
    }
}

void one_cpuid(benchmark::State &state)
{
    for (auto _ : state)
        execute({0});
}

void capture(benchmark::State &state)
{
    for (auto _ : state) {
        GEN_MACHINE_STATE const machine;
        benchmark::DoNotOptimize(GEN_MACHINE_INFO::recapture_cpu_info());
    }
}

// A second capture, which finds only known processors.
void recapture(benchmark::State &state)
{
    GEN_MACHINE_STATE const machine;
    GEN_MACHINE_INFO::recapture_cpu_info();
    for (auto _ : state)
        benchmark::DoNotOptimize(GEN_MACHINE_INFO::recapture_cpu_info());
}

// Queries after the capture.

void plain_load(benchmark::State &state)
{
    bool const volatile supported = true;
    for (auto _ : state) {
        bool const loaded = supported;
        benchmark::DoNotOptimize(loaded);
    }
}

void sse_is_supported(benchmark::State &state)
{
    GEN_MACHINE_STATE const machine;
    bool supported = false;
    GEN_MACHINE_INFO::recapture_cpu_info();
    for (auto _ : state) {
        GEN_MACHINE_INFO::sse_is_supported(6, &supported);
        benchmark::DoNotOptimize(supported);
    }
}

void get_cache_size(benchmark::State &state)
{
    GEN_MACHINE_STATE const machine;
    unsigned size;
    GEN_MACHINE_INFO::recapture_cpu_info();
    for (auto _ : state) {
        GEN_MACHINE_INFO::get_cache_size(2, &size, nullptr, GEN_CACHE_DATA);
        benchmark::DoNotOptimize(size);
    }
}

// The cost of copying the list, which is part of the query.
void copy_of_caches(benchmark::State &state)
{
    GEN_MACHINE_STATE const machine;
    GEN_MACHINE_INFO::recapture_cpu_info();
    GEN_PKG const *const package = gen_first_package();
    if (package == nullptr)
        return state.SkipWithError("no processor was visited");
    for (auto _ : state) {
        std::list<GEN_CACHE> const caches = package->m_caches;
        benchmark::DoNotOptimize(caches.size());
    }
}

BENCHMARK(one_cpuid)->Name("floor/cpuid");
BENCHMARK(moves_alone)->Name("floor/masks_and_moves");
BENCHMARK(moves_and_cpuid)->Name("floor/masks_moves_and_cpuid");
BENCHMARK(capture)->Name("capture");
BENCHMARK(recapture)->Name("recapture");
BENCHMARK(plain_load)->Name("floor/load");
BENCHMARK(sse_is_supported)->Name("sse_is_supported");
BENCHMARK(copy_of_caches)->Name("floor/copy_of_caches");
BENCHMARK(get_cache_size)->Name("get_cache_size");

#ifdef BENCH_HAS_HWLOC
void hwloc(benchmark::State &state)
{
    for (auto _ : state) {
        hwloc_topology_t topology;
        hwloc_topology_init(&topology);
        hwloc_topology_load(topology);
        hwloc_topology_destroy(topology);
    }
}
BENCHMARK(hwloc)->Name("peer/hwloc");
#endif

BenchGoals const GOALS{
    {"capture / masks, moves and CPUID that it needs", "capture", "floor/masks_moves_and_cpuid", 1.30},
    {"capture / loading hwloc", "capture", "peer/hwloc", 0.05},
    {"a feature afterwards, ns", "sse_is_supported", "", 5},
    {"a cache's size / the copy of its list", "get_cache_size", "floor/copy_of_caches", 1.30},
};

} // namespace
