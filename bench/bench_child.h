// Work that can be done only once in a process, or that leaves a large state: each run has its own process.
#ifndef BENCH_CHILD_H
#define BENCH_CHILD_H

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

/// Runs `work` in a copy of this process and returns its result, in seconds; negative if the process fails. The current
/// directory of the copy is a new, empty one that is removed afterwards. No other thread may run meanwhile.
template <typename Work>
double seconds_in_child(Work work)
{
    std::string directory = (std::filesystem::temp_directory_path() / "zel_bench_XXXXXX").string();
    int ends[2];
    if (mkdtemp(directory.data()) == nullptr || pipe(ends) != 0)
        return -1;
    pid_t const child = fork();
    if (child == 0) {
        std::filesystem::current_path(directory);
        double const seconds = work();
        _exit(write(ends[1], &seconds, sizeof seconds) == sizeof seconds ? 0 : 1);
    }
    close(ends[1]);
    double seconds;
    if (read(ends[0], &seconds, sizeof seconds) != sizeof seconds)
        seconds = -1;
    close(ends[0]);
    if (child > 0)
        waitpid(child, nullptr, 0);
    std::filesystem::remove_all(directory);
    return seconds;
}

/// One iteration is a run divided by `count`.
template <typename Work>
void run_in_children(benchmark::State &state, std::int64_t count, Work work)
{
    for (auto _ : state) {
        double const seconds = seconds_in_child(work);
        if (seconds < 0)
            state.SkipWithError("the process failed");
        state.SetIterationTime(seconds / static_cast<double>(count));
    }
}

#endif
