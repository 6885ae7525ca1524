// The caches of a package, over results of CPUID that are made up for each case.
#include "gen_machine_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/played_machine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAreArray;
using testing::ExitedWithCode;
using testing::IsEmpty;

namespace {

// A cache as "2d 512/64": level and kind, size, bytes of a line.
std::string cache_text(GEN_CACHE const &cache)
{
    return std::to_string(cache.m_level) + (cache.m_type == GEN_CACHE_DATA ? "d " : "i ") +
           std::to_string(cache.m_size) + '/' + std::to_string(cache.m_line_size);
}

// The caches that a machine's first package is found to have.
std::vector<std::string> captured_caches(MachineDump const &dump)
{
    PlayedMachine machine(dump);
    EXPECT_TRUE(GEN_MACHINE_INFO::recapture_cpu_info());
    std::vector<std::string> texts;
    for (GEN_CACHE const &cache : machine.state().m_packages.begin()->m_caches)
        texts.push_back(cache_text(cache));
    return texts;
}

// A processor of one vendor that has leaf 2.
MachineDump machine_with_descriptors(std::vector<GEN_CPUID> const &answers, std::uint32_t leaf_1_eax = 0x673)
{
    MachineDump dump = load_machine_dump("intel_leaf_2_three_times");
    dump.processors[0][1].front()->m_eax = leaf_1_eax;
    dump.processors[0][2].assign(answers.begin(), answers.end());
    return dump;
}

struct Answer
{
    bool result;
    unsigned size;
    unsigned line_size;

    bool operator==(Answer const &other) const
    {
        return result == other.result && size == other.size && line_size == other.line_size;
    }
};
std::ostream &operator<<(std::ostream &out, Answer const &answer)
{
    return out << answer.result << ' ' << answer.size << '/' << answer.line_size;
}

Answer ask(int level, unsigned char type)
{
    Answer answer{false, 4711, 4711};
    answer.result = GEN_MACHINE_INFO::get_cache_size(level, &answer.size, &answer.line_size, type);
    return answer;
}

} // namespace

// Descriptors.

TEST(GenCacheDescriptors, AreThoseOfTheTableAndNoOther)
{
    struct Row
    {
        unsigned descriptor;
        unsigned size;
    };
    struct Group
    {
        char const *level_and_type;
        unsigned line_size;
        std::vector<Row> rows;
    };
    Group const groups[] = {
        {"1i ", 32, {{0x06, 8}, {0x08, 16}}},
        {"1i ", 64, {{0x30, 32}}},
        {"1i ", 0, {{0x70, 12}, {0x71, 16}, {0x72, 32}, {0x73, 64}}},
        {"1d ", 32, {{0x0A, 8}, {0x0C, 16}}},
        {"1d ", 64, {{0x2C, 32}, {0x60, 16}, {0x66, 8}, {0x67, 16}, {0x68, 32}}},
        {"2d ",
         32,
         {{0x41, 128},
          {0x42, 256},
          {0x43, 512},
          {0x44, 1024},
          {0x45, 2048},
          {0x82, 256},
          {0x83, 512},
          {0x84, 1024},
          {0x85, 2048}}},
        {"2d ",
         64,
         {{0x39, 128},
          {0x3A, 192},
          {0x3B, 128},
          {0x3C, 256},
          {0x3D, 384},
          {0x3E, 512},
          {0x49, 4096},
          {0x78, 1024},
          {0x79, 128},
          {0x7A, 256},
          {0x7B, 512},
          {0x7C, 1024},
          {0x7D, 2048},
          {0x7F, 512},
          {0x86, 512},
          {0x87, 1024}}},
        {"3d ",
         64,
         {{0x22, 512},
          {0x23, 1024},
          {0x25, 2048},
          {0x29, 4096},
          {0x46, 4096},
          {0x47, 8192},
          {0x4A, 6144},
          {0x4B, 8192},
          {0x4C, 12288},
          {0x4D, 16384}}},
    };
    std::map<unsigned, std::string> caches;
    for (Group const &group : groups)
        for (Row const &row : group.rows)
            caches[row.descriptor] =
                group.level_and_type + std::to_string(row.size) + '/' + std::to_string(group.line_size);
    ASSERT_EQ(caches.size(), 49U);
    for (unsigned descriptor = 0; descriptor < 256; ++descriptor) {
        std::vector<std::string> const expected =
            caches.count(descriptor) != 0 ? std::vector<std::string>{caches[descriptor]} : std::vector<std::string>();
        EXPECT_THAT(captured_caches(machine_with_descriptors({{1, descriptor, 0, 0}})), ElementsAreArray(expected))
            << std::hex << descriptor;
    }
}

TEST(GenCacheDescriptors, FillTheTableOnceForAllPackages)
{
    PlayedMachine machine("intel_two_packages_smt");
    EXPECT_TRUE(machine.state().m_cache_lookup_table.empty());
    GEN_MACHINE_INFO::recapture_cpu_info();
    EXPECT_EQ(machine.state().m_cache_lookup_table.size(), 49U);
    for (GEN_PKG const &package : machine.state().m_packages)
        EXPECT_EQ(package.m_caches.size(), 1U);
}

TEST(GenCacheDescriptors, AreLookedUpInATableThatIsFilledAlready)
{
    PlayedMachine machine(machine_with_descriptors({{1, 0x220a4000, 0, 0}}));
    auto &table = machine.state().m_cache_lookup_table;
    table[0x0a] = {1, GEN_CACHE_INST, 7, 77};
    table[0x00] = table[0x40] = {2, GEN_CACHE_DATA, 8, 88}; // which mean no cache, even if the table has an entry
    GEN_MACHINE_INFO::recapture_cpu_info();
    EXPECT_EQ(table.size(), 3U);
    std::list<GEN_CACHE> const &caches = machine.state().m_packages.begin()->m_caches;
    ASSERT_EQ(caches.size(), 1U);
    EXPECT_EQ(cache_text(caches.front()), "1i 77/7");
}

TEST(GenCacheDescriptors, AreNotLookedUpForOthers)
{
    for (char const *const dump : {"amd_smt", "other_vendor", "no_cpuid", "masks_zero"}) {
        PlayedMachine machine(dump);
        GEN_MACHINE_INFO::recapture_cpu_info();
        EXPECT_TRUE(machine.state().m_cache_lookup_table.empty()) << dump;
    }
}

TEST(GenCacheDescriptors, AreTakenRegisterByRegisterFromTheLowestByteUp)
{
    struct RegisterCase
    {
        std::vector<GEN_CPUID> answers;
        std::vector<std::string> caches;
    };
    RegisterCase const cases[] = {
        {{{0x0c0a0801, 0x25232206, 0x45444341, 0x4c4b4a29}},
         {"1i 16/32", "1d 8/32", "1d 16/32", "1i 8/32", "3d 512/64", "3d 1024/64", "3d 2048/64", "2d 128/32",
          "2d 512/32", "2d 1024/32", "2d 2048/32", "3d 4096/64", "3d 6144/64", "3d 8192/64", "3d 12288/64"}},
        // The low byte of EAX is a count, also if there is a cache of that number.
        {{{0x00000001, 0, 0, 0}}, {}},
        {{{0x00000000, 0x0a, 0, 0}}, {"1d 8/32"}},                                   // 0 means once
        {{{0x00000002, 0x0a, 0, 0}, {0x00000a22, 0, 0, 0}}, {"1d 8/32", "1d 8/32"}}, // the count of the first run alone
        {{{0x00000006, 0, 0, 0x0a}}, {"1d 8/32", "1d 8/32", "1d 8/32", "1d 8/32", "1d 8/32", "1d 8/32"}},
        // Registers without descriptors.
        {{{0x80000a01, 0x8000000a, 0x8a0a0a0a, 0xffffffff}}, {}},
        {{{0x00000001, 0x7000000a, 0x80000006, 0x00000000}}, {"1d 8/32", "1i 12/0"}},
        // 00 and 40 are no caches, and don't end a register.
        {{{0x00400001, 0x0a004000, 0x0c400000, 0x22000006}}, {"1d 8/32", "1d 16/32", "1i 8/32", "3d 512/64"}},
        // Repeated ones are kept.
        {{{1, 0x0a0a0a0a, 0, 0x0a}}, {"1d 8/32", "1d 8/32", "1d 8/32", "1d 8/32", "1d 8/32"}},
        // TLBs, prefetching and the reference to leaf 4.
        {{{0x76036301, 0x00f0b5ff, 0, 0x00c30000}}, {}},
    };
    int row = 0;
    for (RegisterCase const &c : cases)
        EXPECT_THAT(captured_caches(machine_with_descriptors(c.answers)), ElementsAreArray(c.caches))
            << "row " << row++;
}

TEST(GenCacheDescriptors, OfThreeRunsAreAddedUp)
{
    EXPECT_THAT(captured_caches(load_machine_dump("intel_leaf_2_three_times")),
                ElementsAreArray({"1i 8/32", "1d 8/32", "2d 128/32", "1i 12/0", "1d 16/32", "1d 8/32", "3d 512/64",
                                  "1i 8/32", "1i 8/32", "1i 8/32", "1i 8/32", "3d 16384/64"}));
}

TEST(GenCacheDescriptors, CountUpTo255Runs)
{
    EXPECT_EQ(captured_caches(machine_with_descriptors({{0xff, 0x0a, 0, 0}})).size(), 255U);
}

TEST(GenCacheDescriptors, OneHasAnotherLevelByTheSignature)
{
    struct SignatureCase
    {
        std::uint32_t leaf_1_eax;
        char const *cache;
    };
    constexpr SignatureCase CASES[] = {
        {0x00000f60, "3d 4096/64"}, {0x00000f6f, "3d 4096/64"}, {0x00000f65, "3d 4096/64"},
        {0xffffff60, "3d 4096/64"}, // neither the extended fields nor the stepping count
        {0x00010f68, "3d 4096/64"}, {0x00000f50, "2d 4096/64"}, {0x00000f70, "2d 4096/64"},
        {0x00000e60, "2d 4096/64"}, {0x000006f7, "2d 4096/64"}, {0x0000060f, "2d 4096/64"},
        {0x00000000, "2d 4096/64"},
    };
    for (SignatureCase const &c : CASES) {
        EXPECT_THAT(captured_caches(machine_with_descriptors({{1, 0x49, 0, 0}}, c.leaf_1_eax)),
                    ElementsAreArray({c.cache}))
            << std::hex << c.leaf_1_eax;
        // No other descriptor has it.
        EXPECT_THAT(captured_caches(machine_with_descriptors({{1, 0x78, 0, 0}}, c.leaf_1_eax)),
                    ElementsAreArray({"2d 1024/64"}));
    }
}

TEST(GenCacheDescriptors, TheTableItselfKeepsItsLevel)
{
    PlayedMachine machine(machine_with_descriptors({{1, 0x49, 0, 0}}, 0xf60));
    GEN_MACHINE_INFO::recapture_cpu_info();
    EXPECT_EQ(cache_text(machine.state().m_cache_lookup_table.at(0x49)), "2d 4096/64");
    EXPECT_EQ(ask(2, GEN_CACHE_DATA), (Answer{true, 0, 0}));
    EXPECT_EQ(ask(3, GEN_CACHE_DATA), (Answer{true, 4096, 64}));
}

TEST(GenCacheDescriptors, NeedLeaf2)
{
    EXPECT_THAT(captured_caches(load_machine_dump("intel_leaf_1_only")), IsEmpty());
    EXPECT_THAT(captured_caches(load_machine_dump("intel_leaf_0_only")), IsEmpty());
}

// Extended leaves.

TEST(GenExtendedCaches, AreTheFieldsOfTwoLeaves)
{
    struct ExtendedCase
    {
        std::uint32_t max_extended_leaf;
        GEN_CPUID leaf_5;
        GEN_CPUID leaf_6;
        std::vector<std::string> caches;
    };
    ExtendedCase const cases[] = {
        {0x80000006,
         {0, 0, 0x20080140, 0x40020140},
         {0, 0, 0x02006140, 0x00408140},
         {"1d 32/64", "1i 64/64", "2d 512/64", "3d 8192/64"}},
        {0x80000005, {0, 0, 0x20080140, 0x40020140}, {0, 0, 0x02006140, 0x00408140}, {"1d 32/64", "1i 64/64"}},
        {0x80000004, {0, 0, 0x20080140, 0x40020140}, {0, 0, 0x02006140, 0x00408140}, {}},
        {0, {0, 0, 0x20080140, 0x40020140}, {0, 0, 0x02006140, 0x00408140}, {}},
        {0xffffffff, {0, 0, 0x01000001, 0}, {0, 0, 0, 0}, {"1d 1/1"}},
        // Sizes of 0 make no entry, with any values of the other fields.
        {0x80000006, {~0U, ~0U, 0x00ffffff, 0x00ffffff}, {~0U, ~0U, 0x0000ffff, 0x0003ffff}, {}},
        // All bits of the fields.
        {0x80000006,
         {0, 0, 0xff0000ff, 0xff0000ff},
         {0, 0, 0xffff00ff, 0xfffc00ff},
         {"1d 255/255", "1i 255/255", "2d 65535/255", "3d 8388096/255"}},
        {0x80000006,
         {0, 0, 0x01000000, 0x01000000},
         {0, 0, 0x00010000, 0x00040000},
         {"1d 1/0", "1i 1/0", "2d 1/0", "3d 512/0"}},
        {0x80000006, {0, 0, 0, 0x40020140}, {0, 0, 0x04008140, 0}, {"1i 64/64", "2d 1024/64"}},
    };
    int row = 0;
    for (ExtendedCase const &c : cases) {
        MachineDump dump = load_machine_dump("amd_no_multithreading");
        DumpedLeaves &leaves = dump.processors[0];
        leaves[0x80000000].front()->m_eax = c.max_extended_leaf;
        leaves[0x80000005] = {c.leaf_5};
        leaves[0x80000006] = {c.leaf_6};
        EXPECT_THAT(captured_caches(dump), ElementsAreArray(c.caches)) << "row " << row++;
    }
}

// The question.

TEST(GenCacheSize, IsThatOfTheFirstEntry)
{
    PlayedMachine const machine("intel_leaf_2_three_times");
    EXPECT_EQ(ask(1, GEN_CACHE_INST), (Answer{true, 8, 32})); // not the trace cache after it
    EXPECT_EQ(ask(1, GEN_CACHE_DATA), (Answer{true, 8, 32}));
    EXPECT_EQ(ask(3, GEN_CACHE_DATA), (Answer{true, 512, 64}));
}

TEST(GenCacheSize, OfATraceCacheHasNoLine)
{
    struct TraceCase
    {
        unsigned descriptor;
        unsigned size;
    };
    for (TraceCase const &c : {TraceCase{0x70, 12}, {0x71, 16}, {0x72, 32}, {0x73, 64}}) {
        PlayedMachine const machine(machine_with_descriptors({{1, 0, 0, c.descriptor}}));
        EXPECT_EQ(ask(1, GEN_CACHE_INST), (Answer{true, c.size, 0}));
    }
}

TEST(GenCacheSize, IsZeroForWhatIsNotThere)
{
    struct MissCase
    {
        int level;
        unsigned char type;
    };
    constexpr MissCase CASES[] = {
        {1, 0}, {2, 0},  {3, 0},   {0, GEN_CACHE_DATA}, {4, GEN_CACHE_DATA}, {2, GEN_CACHE_INST},
        {0, 0}, {-1, 1}, {257, 1}, {-255, 1},           {3, GEN_CACHE_INST}, {0x7fffffff, GEN_CACHE_DATA},
    };
    PlayedMachine const machine("amd_smt");
    for (MissCase const &c : CASES)
        EXPECT_EQ(ask(c.level, c.type), (Answer{true, 0, 0})) << c.level << ' ' << int{c.type};
    unsigned size = 4711;
    EXPECT_TRUE(GEN_MACHINE_INFO::get_cache_size(2, &size, nullptr, 0));
    EXPECT_EQ(size, 0U);
}

TEST(GenCacheSize, NeedsNoLineSize)
{
    PlayedMachine const machine("amd_smt");
    unsigned size = 4711;
    EXPECT_TRUE(GEN_MACHINE_INFO::get_cache_size(2, &size, nullptr, GEN_CACHE_DATA));
    EXPECT_EQ(size, 512U);
}

TEST(GenCacheSize, HasTheResultOfTheCapture)
{
    for (char const *const dump : {"other_vendor", "no_cpuid", "masks_fail"}) {
        PlayedMachine const machine(dump);
        EXPECT_EQ(ask(1, GEN_CACHE_DATA), (Answer{false, 0, 0})) << dump;
    }
    PlayedMachine const machine("masks_zero");
    EXPECT_EQ(ask(1, GEN_CACHE_DATA), (Answer{true, 0, 0}));
}

TEST(GenCacheSizeDeathTest, PreconditionsAreInternalErrors)
{
    PlayedMachine machine("amd_smt");
    unsigned size;
    unsigned line_size;
    using MachineInfo = GEN_MACHINE_INFO;
    EXPECT_EXIT(MachineInfo::get_cache_size(1, nullptr, &line_size, 1), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("size != 0", "gen_machine"));
    EXPECT_EXIT(MachineInfo::get_cache_size(1, nullptr, nullptr, 3), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("size != 0", "gen_machine"));
    EXPECT_EXIT(MachineInfo::get_cache_size(1, &size, &line_size, 3), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("type <= GEN_CACHE_INST", "gen_machine"));
    EXPECT_EXIT(MachineInfo::get_cache_size(1, &size, nullptr, 255), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("type <= GEN_CACHE_INST", "gen_machine"));
    EXPECT_THAT(machine.calls(), IsEmpty());
}
