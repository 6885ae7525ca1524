// Two operations at the same time, for the thread sanitizer: it reports accesses that nothing orders, also if they
// don't meet in that run.
#ifndef TESTS_SUPPORT_OPERATION_PAIRS_H
#define TESTS_SUPPORT_OPERATION_PAIRS_H

#include "tests/support/operations.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

/// Runs each operation of `own` on the calling thread beside each one of `others` on another thread.
inline void run_in_pairs(Operations const &own, Operations const &others, int repeats)
{
    std::atomic<std::size_t> arrivals{0};
    // Relaxed, so that the sanitizer takes it for no order between the threads: only the operations' own locks count.
    auto const meet = [&arrivals](std::size_t pair) {
        arrivals.fetch_add(1, std::memory_order_relaxed);
        while (arrivals.load(std::memory_order_relaxed) < 2 * (pair + 1))
            std::this_thread::yield();
    };
    auto const run_all = [&](bool is_own) {
        std::size_t pair = 0;
        for (Operation const &first : own) {
            for (Operation const &second : others) {
                meet(pair++);
                for (int i = 0; i < repeats; ++i)
                    (is_own ? first : second).run();
            }
        }
    };
    std::thread other([&] { run_all(false); });
    run_all(true);
    other.join();
}

/// Runs actions on threads of their own, which all start before the first action begins.
inline void run_at_once(std::vector<std::function<void()>> const &actions)
{
    std::atomic<std::size_t> waiting{actions.size()};
    std::vector<std::thread> threads;
    threads.reserve(actions.size());
    for (auto const &action : actions)
        threads.emplace_back([&waiting, &action] {
            waiting.fetch_sub(1, std::memory_order_relaxed);
            while (waiting.load(std::memory_order_relaxed) != 0)
                std::this_thread::yield();
            action();
        });
    for (std::thread &thread : threads)
        thread.join();
}

#endif
