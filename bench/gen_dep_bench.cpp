// Dependencies on memory. The argument is the number of addresses. One iteration is
//
//     create_remove   creating a dependency on each address, and then removing all of them
//     exported        the same through the functions that tools call
//     invalidate      a pass over each address, which has one dependency
//     one_address     one pass over one address, which has that number of dependencies
//
// Each run except "exported" has its own registry: since the ids of an address are stored until the process ends, a
// shared registry would measure appending to longer and longer lists.
//
// The first floor of create_remove is insertion and erasure of the same records in one std::unordered_map. The second
// floor adds the list of ids of each address: a lookup by address and an append. The floor of the passes is a lookup of
// the record in a std::unordered_map, its copy into a vector, since callbacks run from copies, and the call; a pass
// itself looks into two tables. The peer is one boost::signals2::signal: making and cutting connections, and one
// emission to all.
#include "gen/object/gen_dep_registry.h"

#include "bench/bench.h"

#include <boost/signals2.hpp>

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace {

using Callback = GEN_DEP_REGISTRY::Callback;

// Objects on the heap, as in a tool.
struct Object
{
    char bytes[64];
};
using Objects = std::vector<Object>;

struct Record
{
    void const *memory;
    Callback callback;
    unsigned uid;
};

std::uint64_t l_calls = 0;

Callback callback()
{
    return [calls = &l_calls](unsigned uid) { *calls += uid; };
}

std::size_t count_of(benchmark::State const &state)
{
    return static_cast<std::size_t>(state.range(0));
}

void create_remove(benchmark::State &state)
{
    Objects objects(count_of(state));
    std::vector<unsigned> uids(objects.size());
    Callback const noted = callback();
    GEN_DEP_REGISTRY registry;
    for (auto _ : state) {
        for (std::size_t i = 0; i < objects.size(); ++i)
            uids[i] = registry.create_dependency(&objects[i], noted);
        for (unsigned const uid : uids)
            registry.remove_dependency(uid);
    }
}

void exported(benchmark::State &state)
{
    Object const object{};
    Callback const noted = callback();
    for (auto _ : state)
        GEN_DEP::remove_dependency(GEN_DEP::create_dependency(&object, noted));
}

template <bool KEEPS_IDS>
void insert_erase(benchmark::State &state)
{
    Objects objects(count_of(state));
    std::vector<unsigned> uids(objects.size());
    Callback const noted = callback();
    std::unordered_map<unsigned, Record> records;
    std::unordered_map<void const *, std::vector<unsigned>> uids_of_memory;
    unsigned next_uid = 1;
    for (auto _ : state) {
        for (std::size_t i = 0; i < objects.size(); ++i) {
            uids[i] = next_uid++;
            if constexpr (KEEPS_IDS)
                uids_of_memory[&objects[i]].push_back(uids[i]);
            records.emplace(uids[i], Record{&objects[i], noted, uids[i]});
        }
        for (unsigned const uid : uids)
            records.erase(uid);
    }
}

void connect_disconnect(benchmark::State &state)
{
    boost::signals2::signal<void(unsigned)> signal;
    std::vector<boost::signals2::connection> connections(count_of(state));
    Callback const noted = callback();
    for (auto _ : state) {
        for (boost::signals2::connection &connection : connections)
            connection = signal.connect(noted);
        for (boost::signals2::connection const &connection : connections)
            connection.disconnect();
    }
}

void invalidate(benchmark::State &state)
{
    Objects objects(count_of(state));
    GEN_DEP_REGISTRY registry;
    for (Object const &object : objects)
        registry.create_dependency(&object, callback());
    for (auto _ : state)
        for (Object const &object : objects)
            registry.memory_is_being_invalidated(&object);
}

void find_copy_call(benchmark::State &state)
{
    Objects objects(count_of(state));
    std::unordered_map<void const *, Record> records;
    for (Object const &object : objects)
        records.emplace(&object, Record{&object, callback(), 1});
    for (auto _ : state)
        for (Object const &object : objects) {
            std::vector<Record> copies;
            if (auto const record = records.find(&object); record != records.end())
                copies.push_back(record->second);
            for (Record const &copy : copies)
                copy.callback(copy.uid);
        }
}

void one_address(benchmark::State &state)
{
    GEN_DEP_REGISTRY registry;
    for (std::size_t i = 0; i < count_of(state); ++i)
        registry.create_dependency(nullptr, callback());
    for (auto _ : state)
        registry.memory_is_being_invalidated(nullptr);
}

void emit(benchmark::State &state)
{
    boost::signals2::signal<void(unsigned)> signal;
    for (std::size_t i = 0; i < count_of(state); ++i)
        signal.connect(callback());
    for (auto _ : state)
        signal(1);
}

void counts(benchmark::internal::Benchmark *benchmark)
{
    for (int const count : {1, 100, 10000, 1000000})
        benchmark->Arg(count);
}

BENCHMARK(insert_erase<false>)->Name("floor/insert_erase")->Apply(counts);
BENCHMARK(insert_erase<true>)->Name("floor/insert_erase_ids")->Apply(counts);
BENCHMARK(connect_disconnect)->Name("peer/connect_disconnect")->Apply(counts);
BENCHMARK(create_remove)->Name("create_remove")->Apply(counts);
BENCHMARK(exported)->Name("exported");
BENCHMARK(find_copy_call)->Name("floor/find_copy_call")->Apply(counts);
BENCHMARK(invalidate)->Name("invalidate")->Apply(counts);
BENCHMARK(emit)->Name("peer/emit")->Apply(counts);
BENCHMARK(one_address)->Name("one_address")->Apply(counts);

bool const l_has_goals = [] {
    std::vector<BenchRatio> &rows = bench_ratios();
    rows.push_back({"exported functions / insert + erase", "exported", "floor/insert_erase/1", 1.5});
    for (char const *count : {"/1", "/100", "/10000", "/1000000"}) {
        std::string const n = count;
        rows.push_back({"create + remove / insert + erase, " + n, "create_remove" + n, "floor/insert_erase" + n, 1.5});
        rows.push_back(
            {"  the same with the ids of addresses kept", "create_remove" + n, "floor/insert_erase_ids" + n, 1.15});
        rows.push_back({"  / connect + disconnect", "create_remove" + n, "peer/connect_disconnect" + n, 0.5});
        rows.push_back(
            {"pass over each address / find + copy + call", "invalidate" + n, "floor/find_copy_call" + n, 2.0});
        rows.push_back({"pass over one address / emission", "one_address" + n, "peer/emit" + n, 1.0});
    }
    return true;
}();

} // namespace
