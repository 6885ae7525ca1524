#include "mem/base/mem_proc_text.h"
#include "mem_sys.h"

#include "tests/support/resident_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::uint64_t UNTOUCHED = 4711;
constexpr std::size_t MIB = 1024 * 1024;

struct StatmCase
{
    char const *text;
    bool parsed;
    std::uint64_t pages;
};
constexpr StatmCase STATM_CASES[] = {
    {"1560 427 381 5 0 90 0\n", true, 427},
    {"0 0 0 0 0 0 0\n", true, 0},
    {"1 18446744073709551615 1 1 0 1 0\n", true, 18446744073709551615U},
    // cut, or of another kind
    {"", false, UNTOUCHED},
    {"\n", false, UNTOUCHED},
    {"1560 427 381 5 0 90 0", false, UNTOUCHED},
    {"1560 427 381 5 0 90\n", false, UNTOUCHED},
    {"1560 427 381 5 0 90 0 7\n", false, UNTOUCHED},
    {"1560 427 381 5 0 90 0\n1", false, UNTOUCHED},
    {"1560 x 381 5 0 90 0\n", false, UNTOUCHED},
    {"1560 -427 381 5 0 90 0\n", false, UNTOUCHED},
    {"1560  427 381 5 0 90 0\n", false, UNTOUCHED},
    {"1 18446744073709551616 1 1 0 1 0\n", false, UNTOUCHED},
    {"VmPeak:\t    6240 kB\n", false, UNTOUCHED},
};

struct StatusCase
{
    char const *text;
    char const *key;
    bool parsed;
    std::uint64_t bytes;
};
constexpr StatusCase STATUS_CASES[] = {
    {"Name:\tcat\nVmPeak:\t    6240 kB\nVmHWM:\t    1820 kB\n", "VmPeak:", true, 6389760},
    {"Name:\tcat\nVmPeak:\t    6240 kB\nVmHWM:\t    1820 kB\n", "VmHWM:", true, 1863680},
    {"VmPeak: 0 kB\n", "VmPeak:", true, 0},
    {"VmPeak:18014398509481983 kB\n", "VmPeak:", true, 18446744073709550592U},
    // the line begins with the whole key
    {"VmPeakX:\t1 kB\nVmPeak:\t2 kB\n", "VmPeak:", true, 2048},
    {"Name:\tVmPeak:\t1 kB\nVmPeak:\t2 kB\n", "VmPeak:", true, 2048},
    {"VmPea:\t1 kB\n", "VmPeak:", false, UNTOUCHED},
    // cut, or of another kind
    {"", "VmPeak:", false, UNTOUCHED},
    {"VmPeak:\t    6240 kB", "VmPeak:", false, UNTOUCHED},
    {"VmPeak:\t    6240\n", "VmPeak:", false, UNTOUCHED},
    {"VmPeak:\t    6240 MB\n", "VmPeak:", false, UNTOUCHED},
    {"VmPeak:\t    6240 kB more\n", "VmPeak:", false, UNTOUCHED},
    {"VmPeak:\tkB\n", "VmPeak:", false, UNTOUCHED},
    {"VmPeak:\t-1 kB\n", "VmPeak:", false, UNTOUCHED},
    {"VmPeak:\t18014398509481984 kB\n", "VmPeak:", false, UNTOUCHED},
};

} // namespace

TEST(MemProcText, StatmGivesTheResidentPages)
{
    for (StatmCase const &c : STATM_CASES) {
        std::uint64_t pages = UNTOUCHED;
        EXPECT_EQ(mem_proc_statm_resident_pages(c.text, &pages), c.parsed) << '"' << c.text << '"';
        EXPECT_EQ(pages, c.pages) << '"' << c.text << '"';
    }
}

TEST(MemProcText, StatusGivesASizeInBytes)
{
    for (StatusCase const &c : STATUS_CASES) {
        std::uint64_t bytes = UNTOUCHED;
        EXPECT_EQ(mem_proc_status_bytes(c.text, c.key, &bytes), c.parsed) << '"' << c.text << '"';
        EXPECT_EQ(bytes, c.bytes) << '"' << c.text << '"';
    }
}

TEST(MemProcText, AViewEndsWhereItEnds)
{
    std::string_view const text = "1560 427 381 5 0 90 0\n1234";
    std::uint64_t pages = UNTOUCHED;
    EXPECT_TRUE(mem_proc_statm_resident_pages(text.substr(0, 22), &pages));
    EXPECT_FALSE(mem_proc_statm_resident_pages(text.substr(0, 21), &pages));
    EXPECT_EQ(pages, 427U);
}

TEST(MemInfo, TheWorkingSetGrowsWithWrittenMemory)
{
    std::size_t const before = mem_info_get_process_current_working_set_size();
    std::unique_ptr<char[]> const memory = resident_bytes(64 * MIB);
    std::size_t const after = mem_info_get_process_current_working_set_size();
    EXPECT_GT(before, 0U);
    EXPECT_GE(after, before + 48 * MIB);
    EXPECT_LT(after, before + 1024 * MIB);
}

TEST(MemInfo, ThePeakOfTheWorkingSetKeepsWhatWasReleased)
{
    std::size_t with_memory = 0;
    {
        std::unique_ptr<char[]> const memory = resident_bytes(96 * MIB);
        with_memory = mem_info_get_process_current_working_set_size();
    }
    // The system may be late with single pages of the current figure.
    EXPECT_GE(mem_info_get_process_peak_working_set_size() + MIB, with_memory);
}

TEST(MemInfo, ThePeakOfVirtualMemoryIncludesTheCurrentMemory)
{
    std::size_t const before = mem_info_get_process_peak_virtual_used();
    std::unique_ptr<char[]> const memory = resident_bytes(96 * MIB);
    // Read while the memory is allocated: some emulations of Windows give the current figure.
    std::size_t const with_memory = mem_info_get_process_peak_virtual_used();
    EXPECT_GT(before, 0U);
    EXPECT_GE(with_memory, before);
    EXPECT_GE(with_memory, 96 * MIB);
}

TEST(MemInfo, WithoutCountingTheTotalIsTheWorkingSet)
{
    std::size_t const low = mem_info_get_process_current_working_set_size();
    std::unique_ptr<char[]> const memory = resident_bytes(64 * MIB);
    std::size_t const total = MEM_MANAGER::current_total_memory();
    std::size_t const working_set = mem_info_get_process_current_working_set_size();
    EXPECT_GE(total, low + 48 * MIB);
    EXPECT_LE(total, working_set + MIB);
}

TEST(MemInfo, ThreadsMayAskAtOnce)
{
    std::vector<std::size_t> lowest(4, SIZE_MAX);
    std::vector<std::thread> threads;
    for (std::size_t &low : lowest)
        threads.emplace_back([&low] {
            for (int i = 0; i < 200; ++i)
                low = std::min(low, mem_info_get_process_current_working_set_size());
        });
    for (std::thread &thread : threads)
        thread.join();
    for (std::size_t const low : lowest)
        EXPECT_GT(low, 0U);
}
