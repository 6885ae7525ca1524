// Forks beside threads, on platforms that have them: the child, whose only thread is the one that forked, finds no lock
// of the libraries held.
#include "gen_exe_sys.h"
#include "gen_machine_sys.h"
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"

#include "tests/support/captured_output.h"
#include "tests/support/operations.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

// A child that waits for a lock is killed by its alarm. All others end within milliseconds.
constexpr unsigned HANG_SECONDS = 20;

// Whether a child of a fork runs an action to its end.
bool child_runs(std::function<void()> const &action)
{
    pid_t const child = fork();
    if (child == 0) {
        alarm(HANG_SECONDS);
        action();
        std::_Exit(0);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Threads that each repeat an action until the end of the scope.
class BusyThreads
{
public:
    explicit BusyThreads(std::vector<std::function<void()>> const &actions)
    {
        for (auto const &action : actions)
            m_threads.emplace_back([this, action] {
                while (!m_ends)
                    action();
            });
    }
    ~BusyThreads()
    {
        m_ends = true;
        for (std::thread &thread : m_threads)
            thread.join();
    }
    BusyThreads(BusyThreads const &) = delete;
    BusyThreads &operator=(BusyThreads const &) = delete;

private:
    std::atomic<bool> m_ends{false};
    std::vector<std::thread> m_threads;
};

class GenForks : public testing::Test
{
protected:
    GenForks() { std::filesystem::current_path(m_dir.path()); }
    ~GenForks() override { std::filesystem::current_path(m_former); }

    std::filesystem::path m_former = std::filesystem::current_path();
    TempDir m_dir;
};

// Operations that take a lock of another library, which a fork leaves as it is: that of the C library for its time
// zone.
constexpr char const *FOREIGN_LOCKS[] = {"dates"};

Operations without_foreign_locks(Operations operations)
{
    auto const is_foreign = [](Operation const &operation) {
        return std::find(std::begin(FOREIGN_LOCKS), std::end(FOREIGN_LOCKS), std::string(operation.name)) !=
               std::end(FOREIGN_LOCKS);
    };
    operations.erase(std::remove_if(operations.begin(), operations.end(), is_foreign), operations.end());
    return operations;
}

// A warning, which is written beside the messages.
void warn()
{
    mem_cfg_set("number", "unreadable");
    mem_cfg_get_int_value("number", 0);
}

// The operations that don't end in a child while another thread repeats them.
std::string operations_that_hang(Operations const &all)
{
    constexpr int ROUNDS = 50;
    CapturedOutput const output(StandardStream::OUTPUT);
    CapturedOutput const errors(StandardStream::ERROR_OUTPUT);
    std::string names;
    for (Operation const &operation : without_foreign_locks(all)) {
        BusyThreads const threads({operation.run});
        int round = 0;
        while (round < ROUNDS && child_runs(operation.run))
            ++round;
        if (round < ROUNDS)
            names += std::string(operation.name) + '\n';
    }
    return names;
}

// The rounds in which a child runs all operations to their end while threads repeat all of them.
int rounds_beside_all(int rounds)
{
    CapturedOutput const output(StandardStream::OUTPUT);
    Operations all;
    for (Operations const &some : {operations_of_siblings(), operations_of_mem(), operations_of_gen()})
        all.insert(all.end(), some.begin(), some.end());
    all = without_foreign_locks(all);
    auto const run_all = [&all] {
        for (Operation const &operation : all)
            operation.run();
    };
    auto const run_all_backwards = [&all] {
        for (auto operation = all.rbegin(); operation != all.rend(); ++operation)
            operation->run();
    };
    BusyThreads const threads({run_all, run_all_backwards});
    int round = 0;
    while (round < rounds && child_runs(run_all))
        ++round;
    return round;
}

} // namespace

TEST_F(GenForks, TheChildRunsTheOperationOfTheSiblingsThatAnotherThreadRuns)
{
    EXPECT_EQ(operations_that_hang(operations_of_siblings()), "");
}

TEST_F(GenForks, TheChildRunsTheOperationOfMemThatAnotherThreadRuns)
{
    EXPECT_EQ(operations_that_hang(operations_of_mem()), "");
}

TEST_F(GenForks, TheChildWarnsWhileAnotherThreadWarns)
{
    EXPECT_EQ(operations_that_hang({{"warning", warn}}), "");
}

TEST_F(GenForks, TheChildRunsTheOperationOfGenThatAnotherThreadRuns)
{
    gen_exe_init(0, nullptr);
    EXPECT_EQ(operations_that_hang(operations_of_gen()), "");
}

TEST_F(GenForks, TheChildRunsEveryOperationBesideAllOthers)
{
    gen_exe_init(0, nullptr);
    EXPECT_EQ(rounds_beside_all(40), 40);
}

// In a child, so that each round begins before the first query of the process. Its own child queries too.
TEST_F(GenForks, TheChildReadsTheConfigurationThatAnotherThreadWasReading)
{
    std::string text;
    for (int i = 0; i < 20000; ++i)
        text += "key" + std::to_string(i) + " = value\n";
    m_dir.write("kalvern.ini", text);
    for (int round = 0; round < 20; ++round)
        ASSERT_TRUE(child_runs([round] {
            std::atomic<bool> is_reading{false};
            std::thread reader([&is_reading] {
                is_reading = true;
                mem_cfg_get_value("key19999");
            });
            while (!is_reading)
                std::this_thread::yield();
            usleep(static_cast<useconds_t>(100 * round));
            bool const is_read = child_runs([] { std::_Exit(mem_cfg_get_value("key19999") == "value" ? 0 : 1); });
            reader.join();
            std::_Exit(is_read ? 0 : 1);
        })) << round;
}

TEST_F(GenForks, TheChildCapturesTheProcessorsThatAnotherThreadWasCapturing)
{
    for (int round = 0; round < 50; ++round)
        ASSERT_TRUE(child_runs([] {
            std::atomic<bool> is_capturing{false};
            int captured = 0;
            std::thread other([&] {
                is_capturing = true;
                GEN_MACHINE_INFO::get_core_cpu_count(&captured);
            });
            while (!is_capturing)
                std::this_thread::yield();
            int own = 0;
            bool const is_captured = child_runs([&own] {
                GEN_MACHINE_INFO::get_core_cpu_count(&own);
                std::_Exit(own > 0 ? 0 : 1);
            });
            other.join();
            std::_Exit(is_captured && captured > 0 ? 0 : 1);
        })) << round;
}

namespace {

// Counts the forks whose child ends, in the functions that receive a message of the capture.
void fork_in_message(MEM_MSG_KIND, char const *, char const *, void *context)
{
    int cores = 0;
    if (child_runs([&cores] { GEN_MACHINE_INFO::get_core_cpu_count(&cores); }))
        ++*static_cast<int *>(context);
}

} // namespace

// The thread that captures holds the mutex while the message is received.
TEST_F(GenForks, TheReceiverOfAMessageOfTheCaptureMayFork)
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    if (std::thread::hardware_concurrency() < 2 || sched_setaffinity(0, sizeof one, &one) != 0)
        GTEST_SKIP() << "the capture emits no message here";
    int forks = 0;
    mem_msg_redirect(fork_in_message, &forks);
    int cores = 0;
    GEN_MACHINE_INFO::get_core_cpu_count(&cores);
    mem_msg_redirect(nullptr, nullptr);
    EXPECT_EQ(forks, 1);
}
