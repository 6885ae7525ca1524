// Every operation of the library beside every other one. The thread sanitizer reports what no lock orders; the results
// show what is lost.
#include "err_sys.h"
#include "fio_sys.h"
#include "mem_sys.h"
#include "thr_sys.h"
#include "ver_sys.h"

#include "tests/support/captured_output.h"
#include "tests/support/operation_pairs.h"
#include "tests/support/operations.h"
#include "tests/support/real_block.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

class MemThreads : public testing::Test
{
protected:
    MemThreads() { std::filesystem::current_path(m_dir.path()); }
    ~MemThreads() override { std::filesystem::current_path(m_former); }

    std::filesystem::path m_former = std::filesystem::current_path();
    TempDir m_dir;
    CapturedOutput m_output{StandardStream::OUTPUT};
};

// As many keys as take some milliseconds to read.
std::string long_configuration(std::string const &end_of_keys)
{
    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += "key" + std::to_string(i) + end_of_keys + " = value\n";
    return text;
}

std::atomic<int> l_calls_of_root{0};

// The function may query the configuration. The first call returns during the others, which go on querying while the
// first caller reads the file there.
std::string root_after_queries()
{
    if (l_calls_of_root.fetch_add(1, std::memory_order_relaxed) == 0) {
        while (l_calls_of_root.load(std::memory_order_relaxed) < 2)
            std::this_thread::yield();
        return "root";
    }
    for (int i = 0; i < 5000; ++i)
        mem_cfg_get_value("key17");
    return "root";
}

std::atomic<bool> l_is_root_asked{false};

// The first caller queries until it finds the value in the file there, which the second one reads.
std::string root_after_its_value()
{
    if (!l_is_root_asked.exchange(true, std::memory_order_relaxed))
        while (mem_cfg_get_value("last") != "value")
            ;
    return "root";
}

void query_first()
{
    for (int i = 0; i < 20; ++i)
        mem_cfg_get_value("key17");
}

} // namespace

TEST_F(MemThreads, AnyTwoOperations)
{
    run_in_pairs(operations_of_mem(), operations_of_mem(), 2);
}

TEST_F(MemThreads, TheBinsBesideAnyOperation)
{
    run_in_pairs(operations_of_bins_thread(), operations_of_mem(), 5);
}

// Threads are entered into the list of those that count, and leave it, while others walk it.
TEST_F(MemThreads, TheStartAndTheEndOfThreadsBesideSwitchesAndTotals)
{
    Operations const threads = {{"thread", [] {
                                     std::thread([] {
                                         for (int i = 0; i < 50; ++i)
                                             give(take(1000));
                                     }).join();
                                 }}};
    // Many, since a walk is much shorter than the life of a thread.
    Operations const walks = {{"switch",
                               [] {
                                   for (int i = 0; i < 100; ++i) {
                                       mem_enable_tracking(MEM_TRACKING_SOURCES);
                                       mem_disable_tracking(MEM_TRACKING_SOURCES);
                                   }
                               }},
                              {"total", [] {
                                   for (int i = 0; i < 100; ++i)
                                       MEM_MANAGER::current_total_memory();
                               }}};
    run_in_pairs(threads, walks, 300);
}

// The calls lie in modules that were not seen before.
TEST_F(MemThreads, NewModulesBesideTheTableOfModules)
{
    void const *const calls[] = {
        reinterpret_cast<void const *>(&thr_thread_self),
        reinterpret_cast<void const *>(&ver_get_version_string),
        reinterpret_cast<void const *>(&err_is_in_abnormal_exit),
        reinterpret_cast<void const *>(&fio_get_default_extension_string),
        reinterpret_cast<void const *>(&mem_cfg_get_value),
        reinterpret_cast<void const *>(static_cast<double (*)(double)>(&std::cos)),
        reinterpret_cast<void const *>(&std::getenv),
        reinterpret_cast<void const *>(&std::set_terminate),
    };
    mem_enable_tracking(MEM_TRACKING_SOURCES);
    std::atomic<bool> is_done{false};
    run_at_once({[&] {
                     for (void const *const call : calls) {
                         void *const block = take(100);
                         mem_count_allocation(block, 100, call, nullptr);
                         mem_count_release(block, 100);
                         give(block);
                         thr_sleep(2);
                     }
                     is_done.store(true, std::memory_order_relaxed);
                 },
                 [&] {
                     while (!is_done.load(std::memory_order_relaxed)) {
                         std::ostringstream out;
                         mem_dump_tbb_subsystem_tracking(out);
                     }
                 }});
    std::ostringstream out;
    EXPECT_TRUE(mem_dump_tbb_subsystem_tracking(out));
    for (char const *const name : {"zel_thr", "zel_ver", "zel_err", "zel_fio", "zel_mem"})
        EXPECT_NE(out.str().find(name), std::string::npos) << name;
}

// Each round is a process of its own, in which nothing was read before.
TEST_F(MemThreads, TheFirstQueriesOfTheConfiguration)
{
    GTEST_FLAG_SET(death_test_style, "fast");
    m_dir.write("kalvern.ini", long_configuration(""));
    m_dir.write("root/kalvern.ini", long_configuration("_of_root") + "last = value\n");
    for (int round = 0; round < 5; ++round)
        EXPECT_EXIT(
            {
                mem_set_gen_get_kalvern_path_callback(root_after_queries);
                run_at_once({query_first, query_first, query_first});
                std::exit(mem_cfg_get_value("last") == "value" ? 0 : 1);
            },
            testing::ExitedWithCode(0), "");
}

// The reader reports the unreadable lines after it has added the values and before it looks its own key up, so that for
// a while no lock but that of the addition orders the addition before the query of the other thread.
TEST_F(MemThreads, AQueryBesideTheReadingOfTheConfiguration)
{
    GTEST_FLAG_SET(death_test_style, "fast");
    std::string text = "last = value\n";
    for (int i = 0; i < 100; ++i)
        text += "unreadable\n";
    m_dir.write("root/kalvern.ini", text);
    for (int round = 0; round < 5; ++round)
        EXPECT_EXIT(
            {
                mem_set_gen_get_kalvern_path_callback(root_after_its_value);
                run_at_once({query_first, query_first});
                std::exit(mem_cfg_get_value("last") == "value" ? 0 : 1);
            },
            testing::ExitedWithCode(0), "");
}

// Warnings and messages go to one file through two streams. A message is longer than the buffer of a stream.
TEST_F(MemThreads, AWarningTearsNoMessage)
{
    constexpr int ROUNDS = 500;
    std::string const long_text(9000, 'm');
    ASSERT_NE(std::freopen("log.txt", "a", stderr), nullptr);
    ASSERT_TRUE(mem_msg_redirect_to_file("log.txt"));
    run_at_once({[&long_text] {
                     std::int64_t slots[] = {reinterpret_cast<std::intptr_t>(long_text.c_str())};
                     for (int i = 0; i < ROUNDS; ++i)
                         EXPECT_TRUE(mem_msg_local_vinfo("", "%s", reinterpret_cast<char *>(slots)));
                 },
                 [] {
                     for (int i = 0; i < ROUNDS; ++i) {
                         mem_cfg_set("number", "unreadable");
                         mem_cfg_get_int_value("number", 0);
                     }
                 }});
    mem_msg_redirect(nullptr, nullptr);
    int messages = 0;
    int warnings = 0;
    std::ifstream log(m_dir.path() / "log.txt");
    for (std::string line; std::getline(log, line);) {
        messages += line == "Info: " + long_text ? 1 : 0;
        warnings += line.rfind("Warning: mem_cfg_set", 0) == 0 ? 1 : 0;
    }
    EXPECT_EQ(messages, ROUNDS);
    EXPECT_EQ(warnings, ROUNDS);
}

TEST_F(MemThreads, ThreadsThatChangeDifferentSwitchesLoseNoChange)
{
    auto const change = [](MEM_TRACKING_GRANULARITY granularity) {
        for (int i = 0; i < 300000; ++i) {
            mem_enable_tracking(granularity);
            ASSERT_TRUE(mem_tracking_is_enabled(granularity)) << granularity << " in round " << i;
            mem_disable_tracking(granularity);
            ASSERT_FALSE(mem_tracking_is_enabled(granularity)) << granularity << " in round " << i;
        }
    };
    run_at_once({[&] { change(MEM_TRACKING_STATISTICS); }, [&] { change(MEM_TRACKING_SOURCES); }});
}

// A thread folds its count into the total, and so does each thread that asks for the total.
TEST_F(MemThreads, FoldsOfOneThreadByOthersKeepTheBalance)
{
    constexpr int ROUNDS = 20000;
    auto const before = static_cast<std::int64_t>(MEM_MANAGER::current_total_memory());
    auto const ask = [] {
        for (int i = 0; i < ROUNDS; ++i)
            MEM_MANAGER::current_total_memory();
    };
    run_at_once({[] {
                     for (int i = 0; i < ROUNDS; ++i)
                         give(take(40000));
                 },
                 ask, ask});
    auto const after = static_cast<std::int64_t>(MEM_MANAGER::current_total_memory());
    EXPECT_LE(std::abs(after - before), 8 * 1024); // what the runtime keeps for threads
}
