// Parts that the benchmarks share: ratios to print after the run, and threads that sleep during it.
#ifndef BENCH_H
#define BENCH_H

#include <benchmark/benchmark.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A row of the table after the run: the quiet time of one benchmark divided by that of another in the same run, and
/// the goal for this ratio. If the denominator is "", the row shows nanoseconds. Rows of a benchmark that didn't run
/// are left out.
struct BenchRatio
{
    std::string what;
    std::string numerator;
    std::string denominator;
    double goal;
};
std::vector<BenchRatio> &bench_ratios();

/// Adds rows at static construction.
struct BenchGoals
{
    BenchGoals(std::initializer_list<BenchRatio> rows) { bench_ratios().insert(bench_ratios().end(), rows); }
};

/// Threads that do nothing until the end of the scope.
class SleepingThreads
{
public:
    explicit SleepingThreads(std::int64_t count)
    {
        for (std::int64_t i = 0; i < count; ++i)
            m_threads.emplace_back([this] {
                std::unique_lock<std::mutex> lock(m_mutex);
                m_wake.wait(lock, [this] { return m_ends; });
            });
    }
    ~SleepingThreads()
    {
        {
            std::lock_guard<std::mutex> const lock(m_mutex);
            m_ends = true;
        }
        m_wake.notify_all();
        for (std::thread &thread : m_threads)
            thread.join();
    }
    SleepingThreads(SleepingThreads const &) = delete;
    SleepingThreads &operator=(SleepingThreads const &) = delete;

private:
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_ends = false;
    std::vector<std::thread> m_threads;
};

#endif
