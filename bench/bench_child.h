// Work that can be done only once in a process, or that leaves a large state: each run has its own process.
#ifndef BENCH_CHILD_H
#define BENCH_CHILD_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

/// Runs `work` in a copy of this process, whose current directory is a new, empty one that is removed afterwards. No
/// other thread may run meanwhile.
///
/// @param result      receives the result of `work`, a plain object
/// @param peak_bytes  receives the largest resident memory of the copy
///
/// False if the process fails.
template <typename Result, typename Work>
bool run_in_child(Work work, Result *result, std::size_t *peak_bytes)
{
    std::string directory = (std::filesystem::temp_directory_path() / "zel_bench_XXXXXX").string();
    int ends[2];
    if (mkdtemp(directory.data()) == nullptr || pipe(ends) != 0)
        return false;
    pid_t const child = fork();
    if (child == 0) {
        std::filesystem::current_path(directory);
        Result const result_of_child = work();
        _exit(write(ends[1], &result_of_child, sizeof(Result)) == sizeof(Result) ? 0 : 1);
    }
    close(ends[1]);
    bool const is_read = read(ends[0], result, sizeof(Result)) == sizeof(Result);
    close(ends[0]);
    rusage usage{};
    if (child > 0)
        wait4(child, nullptr, 0, &usage);
    *peak_bytes = static_cast<std::size_t>(usage.ru_maxrss) * 1024;
    std::filesystem::remove_all(directory);
    return is_read;
}

/// The same for a result in seconds; negative if the process fails.
template <typename Work>
double seconds_in_child(Work work)
{
    double seconds;
    std::size_t peak_bytes;
    return run_in_child(work, &seconds, &peak_bytes) ? seconds : -1;
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
