#include "gen/path/gen_path_search_cache.h"

#include <gtest/gtest.h>

namespace {

std::string find(GEN_FIND_FILE_CACHE const &cache, std::string const &name)
{
    FIO_PATH const *const path = cache.find(name);
    return path == nullptr ? "not there" : path->fullpath();
}

} // namespace

TEST(GenFindFileCacheTable, HashesTheBytesBeforeAZero)
{
    struct HashCase
    {
        std::string name;
        std::uint64_t hash;
    };
    HashCase const CASES[] = {
        {"", 0},
        {"a", 97},
        {"ab", 97 * 17 + 98},
        {"a.v", (97 * 17 + 46) * 17 + 118},
        {"\xff", 0xffffffffffffffff}, // a byte is signed
        {"\x80z", 0xffffffffffffffff - 128 * 17 + 122 + 1},
        {std::string("ab\0c", 4), 97 * 17 + 98},
        {std::string("\0c", 2), 0},
        {std::string(20, 'z'), 0x7f9b94e848141a48}, // modulo 2^64
    };
    for (HashCase const &c : CASES)
        EXPECT_EQ(GEN_FIND_FILE_CACHE::hash_of(c.name), c.hash) << '"' << c.name << '"';
}

TEST(GenFindFileCacheTable, HoldsEachNameWithItsPath)
{
    GEN_FIND_FILE_CACHE cache;
    std::string const alike[] = {"a", std::string("a\0", 2), std::string("a\0b", 3), "A", "P"}; // P: 97 - 17
    for (std::string const &name : alike)
        EXPECT_EQ(find(cache, name), "not there") << '"' << name << '"';
    for (std::size_t i = 0; i < std::size(alike); ++i)
        cache.add(alike[i], FIO_PATH(std::to_string(i)));
    cache.add("", FIO_PATH("empty name"));
    cache.add("empty path", FIO_PATH());
    for (std::size_t i = 0; i < std::size(alike); ++i)
        EXPECT_EQ(find(cache, alike[i]), std::to_string(i)) << '"' << alike[i] << '"';
    EXPECT_EQ(find(cache, ""), "empty name");
    EXPECT_EQ(find(cache, "empty path"), "");
    EXPECT_EQ(find(cache, "b"), "not there");
}

TEST(GenFindFileCacheTable, HasABucketForEachNameFromEightOn)
{
    GEN_FIND_FILE_CACHE cache;
    FIO_PATH const *first = nullptr;
    for (std::size_t count = 0; count < 5000; ++count) {
        std::size_t buckets = 8;
        while (buckets < count)
            buckets *= 2;
        ASSERT_EQ(cache.bucket_count(), buckets) << count << " names";
        cache.add("name_" + std::to_string(count), FIO_PATH(std::to_string(count)));
        if (count == 0)
            first = cache.find("name_0");
    }
    for (std::size_t i = 0; i < 5000; ++i)
        EXPECT_EQ(find(cache, "name_" + std::to_string(i)), std::to_string(i));
    EXPECT_EQ(find(cache, "name_5000"), "not there");
    EXPECT_EQ(cache.find("name_0"), first) << "paths keep their addresses";
}
