// The hash table against a map, with keys that collide.
#include "mem/base/mem_hash_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>

namespace {

struct Entry
{
    std::uint64_t key;
    std::uint64_t value;
};

std::uint64_t next(std::uint64_t &state)
{
    state = state * 6364136223846793005U + 1442695040888963407U;
    return state >> 33;
}

void expect_same(MEM_HASH_TABLE<Entry> const &table, std::map<std::uint64_t, std::uint64_t> const &map,
                 std::uint64_t highest_key)
{
    for (std::uint64_t key = 1; key <= highest_key; ++key) {
        Entry const *const entry = table.find(key);
        auto const found = map.find(key);
        ASSERT_EQ(entry != nullptr, found != map.end()) << key;
        if (entry != nullptr) {
            ASSERT_EQ(entry->value, found->second) << key;
        }
    }
}

} // namespace

TEST(MemHashTable, AnEmptyOneHasNothing)
{
    MEM_HASH_TABLE<Entry> table;
    EXPECT_EQ(table.find(1), nullptr);
    table.clear();
    EXPECT_EQ(table.find(1), nullptr);
}

TEST(MemHashTable, AddingAndRemovingKeepsTheOthers)
{
    // Few keys: long runs and many removals inside of them. Many: the table grows.
    for (std::uint64_t const highest_key : {std::uint64_t{5}, std::uint64_t{900}, std::uint64_t{20000}}) {
        MEM_HASH_TABLE<Entry> table;
        std::map<std::uint64_t, std::uint64_t> map;
        std::uint64_t state = highest_key;
        for (int round = 0; round < 20; ++round) {
            for (int i = 0; i < 3000; ++i) {
                std::uint64_t const key = next(state) % highest_key + 1;
                if (Entry *const entry = next(state) % 2 == 0 ? table.find(key) : nullptr) {
                    table.remove(entry);
                    map.erase(key);
                } else {
                    table.find_or_add(key)->value = map[key] = next(state);
                }
            }
            expect_same(table, map, highest_key);
        }
        table.clear();
        expect_same(table, {}, highest_key);
    }
}

TEST(MemHashTable, AnEntryBeginsWithZeros)
{
    MEM_HASH_TABLE<Entry> table;
    table.find_or_add(7)->value = 5;
    table.remove(table.find(7));
    EXPECT_EQ(table.find_or_add(7)->value, 0U);
    EXPECT_EQ(table.find_or_add(7)->key, 7U);
    table.clear();
}
