// Dynamic flags. One iteration is
//
//     words        set, clear and test on each of 1,000 words; the floor does the same on plain integers
//     reuse        destroying and creating one of 32 flags: the scan, the copy of the name, the call of a clearer
//                  without objects. The floor is 31 calls of gen_strcmp() and a copy of the name
//     population   destroying all 32 flags and creating 32 new ones over 10 million objects, which are visited once.
//                  The floor is one visit by a plain loop
#include "gen_dyn_flag_sys.h"

#include "bench/bench.h"
#include "gen_string_sys.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr std::size_t WORD_COUNT = 1000;
constexpr std::size_t OBJECT_COUNT = 10000000;
constexpr unsigned FLAG_COUNT = 32;

class Objects : public GEN_DYN_FLAG_CLEARER
{
public:
    explicit Objects(std::size_t count) : words(count) {}
    void clear_flags(GEN_DYN_FLAG const &flag) override
    {
        for (GEN_DYN_FLAG &word : words)
            word.clear_flag(flag);
    }
    std::vector<GEN_DYN_FLAG> words;
};

// Hierarchical names, as in tools: they differ at their ends.
std::string name_of(unsigned flag)
{
    return "placer.visited_in_pass_" + std::to_string(flag);
}

void flag_words(benchmark::State &state)
{
    std::vector<GEN_DYN_FLAG> words(WORD_COUNT);
    GEN_DYN_FLAG const set(5), cleared(2), tested(4);
    for (auto _ : state) {
        std::size_t hits = 0;
        for (GEN_DYN_FLAG &word : words) {
            word.set_flag(set);
            word.clear_flag(cleared);
            hits += word.test_if_any(tested);
        }
        benchmark::DoNotOptimize(hits);
        benchmark::ClobberMemory();
    }
}

void integer_words(benchmark::State &state)
{
    std::vector<std::uint32_t> words(WORD_COUNT);
    for (auto _ : state) {
        std::size_t hits = 0;
        for (std::uint32_t &word : words) {
            word |= 5U;
            word &= ~2U;
            hits += (word & 4U) != 0;
        }
        benchmark::DoNotOptimize(hits);
        benchmark::ClobberMemory();
    }
}

void reuse(benchmark::State &state)
{
    Objects objects(0);
    GEN_DYN_FLAG_MANAGER manager(&objects);
    GEN_DYN_FLAG last;
    for (unsigned flag = 0; flag < FLAG_COUNT; ++flag)
        last = manager.create_flag(name_of(flag).c_str());
    std::string const name = name_of(FLAG_COUNT);
    for (auto _ : state) {
        manager.destroy_flag(last);
        last = manager.create_flag(name.c_str());
    }
}

void compare_and_copy(benchmark::State &state)
{
    std::vector<std::string> names;
    for (unsigned flag = 0; flag < FLAG_COUNT - 1; ++flag)
        names.push_back(name_of(flag));
    std::string const name = name_of(FLAG_COUNT);
    for (auto _ : state) {
        for (std::string const &each : names)
            benchmark::DoNotOptimize(gen_strcmp(each.c_str(), name.c_str()));
        std::unique_ptr<char[]> copy(new char[name.size() + 1]);
        std::memcpy(copy.get(), name.c_str(), name.size() + 1);
        benchmark::DoNotOptimize(copy.get());
    }
}

void population(benchmark::State &state)
{
    Objects objects(OBJECT_COUNT);
    GEN_DYN_FLAG_MANAGER manager(&objects);
    std::vector<std::string> names;
    std::vector<GEN_DYN_FLAG> flags;
    for (unsigned flag = 0; flag < FLAG_COUNT; ++flag) {
        names.push_back(name_of(flag));
        flags.push_back(manager.create_flag(names.back().c_str()));
    }
    for (auto _ : state) {
        for (GEN_DYN_FLAG const &flag : flags)
            manager.destroy_flag(flag);
        for (std::size_t i = 0; i < flags.size(); ++i)
            flags[i] = manager.create_flag(names[i].c_str());
    }
}

void one_visit(benchmark::State &state)
{
    std::vector<std::uint32_t> words(OBJECT_COUNT);
    std::uint32_t mask = 0;
    benchmark::DoNotOptimize(mask);
    for (auto _ : state) {
        for (std::uint32_t &word : words)
            word &= mask;
        benchmark::ClobberMemory();
    }
}

BENCHMARK(integer_words)->Name("floor/words");
BENCHMARK(flag_words)->Name("words");
BENCHMARK(compare_and_copy)->Name("floor/reuse");
BENCHMARK(reuse)->Name("reuse");
BENCHMARK(one_visit)->Name("floor/population");
BENCHMARK(population)->Name("population");

BenchGoals const GOALS{
    {"operations on flag words / on integers", "words", "floor/words", 1.05},
    {"destroy and create among 32 / compare and copy the names", "reuse", "floor/reuse", 1.20},
    {"32 flags replaced over 10 million objects / one visit", "population", "floor/population", 1.05},
};

} // namespace
