// The cookie log. One iteration is one cookie of a run in its own process. The runs:
//
// - 100,000 cookies under an unchanged path of three bins;
// - 100,000 cookies on one or 16 threads that don't own the bins;
// - a million cookies under one path or under 10,000 paths (each change of path sorts the cookies of the former path);
// - a million cookies written at finalize().
//
// The floor of a logged cookie is locking and unlocking a mutex and appending a record, whose path is copied twice. The
// floor of a written cookie is writing a prepared line of the same length to a stream.
#include "gen_cookie_sys.h"

#include "bench/bench.h"
#include "bench/bench_child.h"
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"
#include "thr_sys.h"

#include <chrono>
#include <cstdint>
#include <fstream>
#include <thread>

namespace {

constexpr char DESCRIPTION[] = "hash of the packed netlist";
constexpr std::int64_t MILLION = 1000000;
constexpr std::int64_t COUNT = 100000;

void open_bin(char const *name)
{
    GEN_PROFILE_BINS::open("BENCH", name, GEN_PB_FLAG_IMMEDIATE);
}

// Leaves Bench/Placer/Moves open.
void start_bins()
{
    mem_cfg_set("gen_print_cookie_log", "on");
    GEN_PROFILE_BINS::initialize("Bench", /*primary=*/true, /*debug_messages=*/false);
    open_bin("Placer");
    open_bin("Moves");
}

struct Record
{
    std::vector<std::string> path;
    std::string description;
    std::uint64_t hash;
};
std::vector<Record> l_records;
std::vector<std::string> l_last_path;
THR_MUTEX_OBJ l_mutex = thr_mutex_create();

void append_records(std::int64_t count, std::vector<std::string> const &path)
{
    for (std::int64_t i = 0; i < count; ++i) {
        THR_SCOPED_MUTEX const lock(l_mutex);
        l_records.push_back({path, DESCRIPTION, static_cast<std::uint64_t>(i)});
        l_last_path = path;
    }
}

void log_cookies(std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        gen_log_cookie(DESCRIPTION, static_cast<std::uint64_t>(i));
}

double seconds_since(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Descriptions like those of a tool that numbers its items. They are not in sorted order.
void log_numbered(std::int64_t first, std::int64_t count)
{
    char description[] = "net 0000000";
    for (std::int64_t i = first; i < first + count; ++i) {
        std::int64_t number = i * 7919 % MILLION;
        for (std::size_t digit = sizeof description - 2; number != 0; number /= 10)
            description[digit--] = static_cast<char>('0' + number % 10);
        gen_log_cookie(description, static_cast<std::uint64_t>(i));
    }
}

double append_in_bin()
{
    auto const start = std::chrono::steady_clock::now();
    append_records(COUNT, {"Bench", "Placer", "Moves"});
    return seconds_since(start);
}

double log_in_bin()
{
    start_bins();
    auto const start = std::chrono::steady_clock::now();
    log_cookies(COUNT);
    return seconds_since(start);
}

template <int THREADS, typename Work>
double seconds_on_threads(Work work)
{
    std::vector<std::thread> threads;
    auto const start = std::chrono::steady_clock::now();
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
    return seconds_since(start);
}

template <int THREADS>
double append_on_threads()
{
    return seconds_on_threads<THREADS>([] { append_records(COUNT / THREADS, {}); });
}

template <int THREADS>
double log_on_threads()
{
    start_bins();
    return seconds_on_threads<THREADS>([] { log_cookies(COUNT / THREADS); });
}

double log_million_in_one_bin()
{
    start_bins();
    auto const start = std::chrono::steady_clock::now();
    log_numbered(0, MILLION);
    return seconds_since(start);
}

// Opens and closes are not timed.
double log_million_in_many_bins()
{
    constexpr std::int64_t BINS = 10000;
    start_bins();
    double seconds = 0;
    for (std::int64_t bin = 0; bin < BINS; ++bin) {
        open_bin(("part " + std::to_string(bin)).c_str());
        auto const start = std::chrono::steady_clock::now();
        log_numbered(bin * (MILLION / BINS), MILLION / BINS);
        seconds += seconds_since(start);
        GEN_PROFILE_BINS::close(nullptr);
    }
    return seconds;
}

double write_million()
{
    log_million_in_many_bins();
    open_bin("last"); // nothing is left to be sorted
    gen_log_cookie(DESCRIPTION, 0);
    GEN_PROFILE_BINS::close(nullptr);
    GEN_PROFILE_BINS::close(nullptr);
    GEN_PROFILE_BINS::close(nullptr);
    auto const start = std::chrono::steady_clock::now();
    GEN_PROFILE_BINS::finalize("bench", /*close_root=*/true);
    return seconds_since(start);
}

double write_million_lines()
{
    std::string line = "net 0000000";
    line.resize(60, ' ');
    line += "|123456";
    line.resize(86, ' ');
    line += "|Bench::Placer::Moves::part 1234";
    auto const start = std::chrono::steady_clock::now();
    std::ofstream out("lines");
    for (std::int64_t i = 0; i < MILLION; ++i)
        out << line << '\n';
    out.close();
    return seconds_since(start);
}

template <std::int64_t TIMES, double (*WORK)()>
void run(benchmark::State &state)
{
    run_in_children(state, TIMES, WORK);
}

void show(char const *name, void (*benchmark)(benchmark::State &state))
{
    benchmark::RegisterBenchmark(name, benchmark)->UseManualTime()->Iterations(1);
}

bool const l_is_shown = [] {
    show("floor/append_in_bin", run<COUNT, append_in_bin>);
    show("log_in_bin", run<COUNT, log_in_bin>);
    show("floor/append_on_1_thread", run<COUNT, append_on_threads<1>>);
    show("log_on_1_thread", run<COUNT, log_on_threads<1>>);
    show("floor/append_on_16_threads", run<COUNT, append_on_threads<16>>);
    show("log_on_16_threads", run<COUNT, log_on_threads<16>>);
    show("million/one_path", run<MILLION, log_million_in_one_bin>);
    show("million/10000_paths", run<MILLION, log_million_in_many_bins>);
    show("million/write", run<MILLION, write_million>);
    show("floor/write", run<MILLION, write_million_lines>);
    return true;
}();

std::string shown(std::string const &name)
{
    return name + "/iterations:1/manual_time";
}

BenchGoals const GOALS{
    {"cookie under an unchanged path / lock and record", shown("log_in_bin"), shown("floor/append_in_bin"), 2},
    {"  on 1 thread that doesn't own the bins", shown("log_on_1_thread"), shown("floor/append_on_1_thread"), 2},
    {"  on 16 such threads", shown("log_on_16_threads"), shown("floor/append_on_16_threads"), 2},
    {"one of a million under 10,000 paths / under one", shown("million/10000_paths"), shown("million/one_path"), 2},
    {"cookie written / line written", shown("million/write"), shown("floor/write"), 2},
};

} // namespace
