// Merging a stream of names; one iteration is one of a million names, which are pushed in order while a consumer takes
// the final entries. The first floor is a pass over the same names that finds the indices and adds them up.
//
// A merge reads three numbers where that pass reads one, since the entry to compare with contains a range and is stored
// as text only, and it writes the text of the entry. The second floor therefore passes over the text of that entry too.
// With two or more dimensions each merged entry is also compared with the entry before it; there the second floor
// passes over both.
//
// Names that never merge are single entries, of which the queue has to keep a copy in a list. The floor of these names
// includes that copy.
#include "gen_index_compressor_queue_sys.h"

#include "bench/bench.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <list>
#include <new>
#include <string>
#include <vector>

namespace {

using Queue = GEN_INDEX_COMPRESSOR_QUEUE;

constexpr std::size_t NAME_COUNT = 1000000;

std::string index_text(std::size_t value)
{
    return "[" + std::to_string(value) + "]";
}

// The bits of one bus with the given number of dimensions, row by row.
std::vector<std::string> bus(int dimensions)
{
    double const exact = std::pow(static_cast<double>(NAME_COUNT), 1.0 / dimensions);
    std::size_t const edge = static_cast<std::size_t>(std::lround(exact));
    std::vector<std::string> names;
    for (std::size_t i = 0; i < NAME_COUNT; ++i) {
        std::string indices;
        std::size_t rest = i;
        for (int dimension = 0; dimension < dimensions; ++dimension, rest /= edge)
            indices.insert(0, index_text(rest % edge));
        names.push_back("data_bus" + indices);
    }
    return names;
}

// Every second bit, so that there is a gap before each name.
std::vector<std::string> never_merging()
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < NAME_COUNT; ++i)
        names.push_back("data_bus" + index_text(2 * i));
    return names;
}

std::vector<std::string> const &names_of(std::int64_t kind)
{
    static std::vector<std::string> const names[] = {never_merging(), bus(1), bus(2), bus(3)};
    return names[kind];
}

unsigned long sum_of_indices(std::string const &name)
{
    unsigned long sum = 0;
    for (char const *at = name.c_str(); *at != '\0'; ++at) {
        if (*at != '[')
            continue;
        unsigned long value = 0;
        while (*++at >= '0' && *at <= ':') {
            if (*at == ':') {
                sum += value;
                value = 0;
            } else {
                value = value * 10 + static_cast<unsigned long>(*at - '0');
            }
        }
        sum += value;
    }
    return sum;
}

void find_indices(benchmark::State &state)
{
    std::vector<std::string> const &names = names_of(state.range(0));
    unsigned long sum = 0;
    while (state.KeepRunningBatch(NAME_COUNT))
        for (std::string const &name : names)
            sum += sum_of_indices(name);
    benchmark::DoNotOptimize(sum);
}

// The entries with which a name of the given number of dimensions is compared: the last one, and the one before it.
struct Entries
{
    std::string own;
    std::string before;
};
Entries const ENTRIES_OF_DIMENSIONS[] = {
    {"", ""},
    {"data_bus[0:499999]", ""},
    {"data_bus[500][0:500]", "data_bus[0:499][0:999]"},
    {"data_bus[50][50][0:50]", "data_bus[50][0:49][0:99]"},
};

// The pass over a name and over the entries before it.
void find_indices_of_entries(benchmark::State &state)
{
    std::vector<std::string> const &names = names_of(state.range(0));
    Entries const &entries = ENTRIES_OF_DIMENSIONS[state.range(0)];
    unsigned long sum = 0;
    while (state.KeepRunningBatch(NAME_COUNT))
        for (std::string const &name : names) {
            sum += sum_of_indices(name) + sum_of_indices(entries.own) + sum_of_indices(entries.before);
            benchmark::ClobberMemory();
        }
    benchmark::DoNotOptimize(sum);
}

// The same pass, with each name copied into a list of at most two entries.
void find_indices_and_keep(benchmark::State &state)
{
    std::vector<std::string> const &names = names_of(state.range(0));
    unsigned long sum = 0;
    std::list<std::string> kept;
    while (state.KeepRunningBatch(NAME_COUNT))
        for (std::string const &name : names) {
            sum += sum_of_indices(name);
            kept.push_back(name);
            if (kept.size() > 1)
                kept.pop_front();
        }
    benchmark::DoNotOptimize(sum);
}

void merge(benchmark::State &state)
{
    std::vector<std::string> const &names = names_of(state.range(0));
    Queue queue;
    std::size_t taken = 0;
    while (state.KeepRunningBatch(NAME_COUNT)) {
        for (std::string const &name : names)
            for (queue.push_back(name); queue.ready(); queue.pop_front())
                ++taken;
        for (; !queue.empty(); queue.pop_front())
            ++taken;
    }
    benchmark::DoNotOptimize(taken);
}

// A bus of a million bits expanded into single names; one iteration is one name.
void expand(benchmark::State &state)
{
    Queue queue;
    std::size_t length = 0;
    while (state.KeepRunningBatch(NAME_COUNT))
        for (queue.push_back("data_bus[0:999][0:999]"); !queue.empty(); queue.pop_front())
            length += queue.expand_front().size();
    benchmark::DoNotOptimize(length);
}

// The argument is the number of dimensions; 0: names that never merge.
BENCHMARK(find_indices)->Name("floor/find_indices")->DenseRange(0, 3);
BENCHMARK(find_indices_of_entries)->Name("floor/find_indices_of_entries")->DenseRange(1, 3);
BENCHMARK(find_indices_and_keep)->Name("floor/find_indices_and_keep")->Arg(0);
BENCHMARK(merge)->Name("merge")->DenseRange(0, 3);
BENCHMARK(expand)->Name("expand");

BenchGoals const GOALS{
    {"merge a bus / a pass that only finds the index", "merge/1", "floor/find_indices/1", 3},
    {"merge a bus / the pass, its entry included", "merge/1", "floor/find_indices_of_entries/1", 3},
    {"merge two dimensions / the pass, entries included", "merge/2", "floor/find_indices_of_entries/2", 3},
    {"merge three dimensions / the pass, entries included", "merge/3", "floor/find_indices_of_entries/3", 3},
    {"names that never merge / the pass with a copy of the name kept", "merge/0", "floor/find_indices_and_keep/0", 3},
    {"merge a bus, ns a name (30 million names a second)", "merge/1", "", 33.3},
};

} // namespace
