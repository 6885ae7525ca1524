// The capture on the machine that runs the tests, compared with the system's own figures. Each test is a process of its
// own.
#include "gen_machine_sys.h"

#include "mem_sys.h"
#include "tests/support/message_recorder.h"
#include "tests/support/processors.h"

#include <gtest/gtest.h>

#include <array>
#include <condition_variable>
#include <thread>

namespace {

constexpr std::uint64_t VISITED = 0xffffffff; // processors in reach of the walk

std::uint64_t lowest_bit(std::uint64_t mask)
{
    return mask & -mask;
}

// The captured facts of the machine: packages, cores and the mask.
std::array<std::uint64_t, 3> topology()
{
    int packages = -1;
    int cores = -1;
    unsigned long mask = 0;
    std::uint64_t mask_qword = 0;
    EXPECT_EQ(GEN_MACHINE_INFO::get_physical_cpu_count(&packages), HAVE_CPUID);
    EXPECT_EQ(GEN_MACHINE_INFO::get_core_cpu_count(&cores), HAVE_CPUID);
    EXPECT_EQ(GEN_MACHINE_INFO::get_non_smt_affinity_mask(&mask, &mask_qword), HAVE_CPUID);
    EXPECT_EQ(mask, mask_qword);
    return {static_cast<std::uint64_t>(packages), static_cast<std::uint64_t>(cores), mask_qword};
}

bool is_supported(bool (*get)(int, bool *), int level)
{
    bool supported = false;
    EXPECT_EQ(get(level, &supported), HAVE_CPUID);
    return supported;
}

bool is_supported(bool (*get)(bool *))
{
    bool supported = false;
    EXPECT_EQ(get(&supported), HAVE_CPUID);
    return supported;
}

} // namespace

TEST(GenMachineLive, CountsLogicalProcessorsLikeTheSystem)
{
    int count = 0;
    EXPECT_TRUE(GEN_MACHINE_INFO::get_logical_cpu_count(&count));
    EXPECT_EQ(count, processors_online());
    int smt_count = 0;
    EXPECT_TRUE(GEN_MACHINE_INFO::get_smt_cpu_count(&smt_count));
    EXPECT_EQ(smt_count, count);
}

TEST(GenMachineLive, FindsTheFeaturesThatTheSystemReports)
{
    using MachineInfo = GEN_MACHINE_INFO;
    std::map<std::string, bool> const found{
        {"sse", is_supported(MachineInfo::sse_is_supported, 1)},
        {"sse2", is_supported(MachineInfo::sse_is_supported, 2)},
        {"sse3", is_supported(MachineInfo::sse_is_supported, 3)},
        {"ssse3", is_supported(MachineInfo::sse_is_supported, 4)},
        {"sse4_1", is_supported(MachineInfo::sse_is_supported, 5)},
        {"sse4_2", is_supported(MachineInfo::sse_is_supported, 6)},
        {"popcnt", is_supported(MachineInfo::popcnt_is_supported)},
        {"avx", is_supported(MachineInfo::avx_is_supported, 1)},
        {"avx2", is_supported(MachineInfo::avx_is_supported, 2)},
        {"bmi1", is_supported(MachineInfo::bmi_is_supported, 1)},
        {"bmi2", is_supported(MachineInfo::bmi_is_supported, 2)},
        {"lzcnt", is_supported(MachineInfo::lzcnt_is_supported)},
    };
    std::map<std::string, bool> const reported = processors_features();
    EXPECT_GE(reported.size(), 3U);
    for (auto const &[name, is_there] : reported)
        EXPECT_EQ(found.at(name), HAVE_CPUID && is_there) << name;
}

TEST(GenMachineLive, FindsCoresWhereTheProcessMayRun)
{
    auto const [packages, cores, mask] = topology();
    std::uint64_t const visited = processors_of_process() & VISITED;
    EXPECT_GE(packages, 1U);
    EXPECT_GE(cores, packages);
    EXPECT_EQ(static_cast<int>(cores), __builtin_popcountll(mask));
    EXPECT_EQ(mask & ~visited, 0U);
    EXPECT_EQ(mask & lowest_bit(visited), lowest_bit(visited));
    if (!HAVE_CPUID) {
        EXPECT_EQ(mask, visited);
        EXPECT_EQ(packages, cores);
    }
}

TEST(GenMachineLive, FindsTheSameAgain)
{
    std::array<std::uint64_t, 3> const first = topology();
    EXPECT_EQ(GEN_MACHINE_INFO::recapture_cpu_info(), HAVE_CPUID);
    EXPECT_EQ(topology(), first);
}

TEST(GenMachineLive, ReportsWhatIsMissingWithoutCpuid)
{
    MessageRecorder const recorder;
    bool supported = true;
    unsigned size = 1;
    EXPECT_EQ(GEN_MACHINE_INFO::sse_is_supported(1, &supported), HAVE_CPUID);
    EXPECT_EQ(GEN_MACHINE_INFO::get_cache_size(1, &size, nullptr, GEN_CACHE_DATA), HAVE_CPUID);
    for (char const *const message : {"cpuid function is not supported", "cpuid extended function is not supported",
                                      "Unable to query cache info from unsupported vendor"})
        EXPECT_EQ(recorder.has(message), !HAVE_CPUID) << message;
    if (!HAVE_CPUID) {
        EXPECT_FALSE(supported);
        EXPECT_EQ(size, 0U);
    }
}

TEST(GenMachineLive, FrequencyIsANumberOfMegahertzIfTheSystemReportsIt)
{
    bool const is_told = processors_have_frequency();
    for (int i = 0; i < 2; ++i) {
        int mhz = -1;
        EXPECT_EQ(GEN_MACHINE_INFO::get_cpu_frequency(&mhz), is_told);
        EXPECT_EQ(mhz > 0, is_told) << mhz;
        EXPECT_LT(mhz, 100000);
    }
}

// Affinity.

TEST(GenMachineLiveAffinity, APinnedThreadEndsWithThatOfTheProcess)
{
    std::uint64_t const process = processors_of_process();
    std::thread([process] {
        processors_pin_thread(lowest_bit(process));
        ASSERT_EQ(processors_of_thread(), lowest_bit(process));
        topology();
        EXPECT_EQ(processors_of_thread(), process);
        // Later calls leave it alone.
        processors_pin_thread(lowest_bit(process));
        topology();
        EXPECT_EQ(processors_of_thread(), lowest_bit(process));
    }).join();
    EXPECT_EQ(processors_of_process(), process);
}

TEST(GenMachineLiveAffinity, TheMainThreadEndsWithItsOwn)
{
    std::uint64_t const process = processors_of_process();
    topology();
    EXPECT_EQ(processors_of_thread(), process);
    EXPECT_EQ(processors_of_process(), process);
}

TEST(GenMachineLiveAffinity, OtherThreadsKeepTheirs)
{
    std::mutex mutex;
    std::condition_variable changed;
    int stage = 0;
    auto const reach = [&](int reached) {
        std::lock_guard<std::mutex> const lock(mutex);
        stage = reached;
        changed.notify_all();
    };
    auto const wait_for = [&](int awaited) {
        std::unique_lock<std::mutex> lock(mutex);
        changed.wait(lock, [&] { return stage >= awaited; });
    };
    std::uint64_t const own = lowest_bit(processors_of_process());
    std::thread other([&] {
        processors_pin_thread(own);
        reach(1);
        wait_for(2);
        EXPECT_EQ(processors_of_thread(), own);
        topology(); // known by now
        EXPECT_EQ(processors_of_thread(), own);
    });
    wait_for(1);
    topology();
    reach(2);
    other.join();
}

TEST(GenMachineLiveAffinity, TheKeyLeavesItAloneForCoresAlone)
{
    mem_cfg_set("cpu_core_count_using_sysconf", "on");
    std::uint64_t const process = processors_of_process();
    std::thread([process] {
        processors_pin_thread(lowest_bit(process));
        int count = 0;
        EXPECT_TRUE(GEN_MACHINE_INFO::get_core_cpu_count(&count));
        EXPECT_EQ(count, processors_online());
        EXPECT_EQ(processors_of_thread(), lowest_bit(process));
        count = 0;
        EXPECT_TRUE(GEN_MACHINE_INFO::get_physical_cpu_count(&count));
        EXPECT_EQ(count, processors_online());
        EXPECT_EQ(processors_of_thread(), process);
    }).join();
}

TEST(GenMachineLiveAffinity, OfARestrictedProcessHidesTheOtherProcessors)
{
    std::uint64_t const whole = processors_of_process();
    std::uint64_t const one = lowest_bit(whole);
    processors_restrict_process(one);
    ASSERT_EQ(processors_of_process(), one);
    MessageRecorder const recorder;
    std::thread([one] {
        std::array<std::uint64_t, 3> const found = topology();
        EXPECT_EQ(found, (std::array<std::uint64_t, 3>{1, 1, one}));
        EXPECT_EQ(processors_of_thread(), one);
    }).join();
    EXPECT_EQ(recorder.has("This process can not utilize all logical processors"), processors_online() > 1);
    processors_restrict_process(whole);
}

// Threads.

TEST(GenMachineLiveThreads, ThatAskFirstTogetherGetTheSame)
{
    std::array<std::uint64_t, 3> found[4];
    std::vector<std::thread> threads;
    for (std::array<std::uint64_t, 3> &own : found)
        threads.emplace_back([&own] { own = topology(); });
    for (std::thread &thread : threads)
        thread.join();
    for (std::array<std::uint64_t, 3> const &own : found)
        EXPECT_EQ(own, found[0]);
    EXPECT_GE(found[0][0], 1U);
}
